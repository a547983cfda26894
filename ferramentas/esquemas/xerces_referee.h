#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace conferix {

/// A third opinion: the verdict of Xerces-C on documents, by the same schema file. Nothing is read from
/// the network.
class TXercesReferee {
  public:
    /// Raises std::runtime_error when it cannot load the schema.
    explicit TXercesReferee(const std::filesystem::path& schemaFile);
    ~TXercesReferee();
    TXercesReferee(const TXercesReferee&) = delete;
    TXercesReferee& operator=(const TXercesReferee&) = delete;

    /// Empty for a valid document, else the first reason against it.
    std::string Reason(const std::string& text);

  private:
    struct TParser;
    std::unique_ptr<TParser> parser_;
};

} // namespace conferix
