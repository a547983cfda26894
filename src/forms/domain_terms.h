#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace conferix {

/// What the codes of domain tables stand for, read from a file of lines "tabela NUMERO NOME" and "CODIGO
/// TEXTO".
class TDomainTerms {
  public:
    explicit TDomainTerms(std::string_view text);
    /// Those that come with the program. Raises EFileNotRead.
    static TDomainTerms Installed();

    /// Empty for a code that is not there.
    std::string_view Find(std::string_view table, std::string_view code) const;
    const std::map<std::pair<std::string, std::string>, std::string, std::less<>>& All() const {
        return terms_;
    }

  private:
    std::map<std::pair<std::string, std::string>, std::string, std::less<>> terms_; ///< by table and code
};

} // namespace conferix
