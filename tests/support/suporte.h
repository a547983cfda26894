#pragma once

#include "model/arquivo_tiss.h"
#include "model/arquivo_tiss_factory.h"
#include "support/esquemas_publicados.h"
#include "xml/xml_parser.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace conferix {

/// An example file of the repository.
inline std::filesystem::path Example(const std::string& name) {
    return std::filesystem::path(CONFERIX_FONTE) / "exemplos" / name;
}

inline std::string ReadTestFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream) << file;
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void WriteTestFile(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream stream(file, std::ios::binary);
    stream << bytes;
    ASSERT_TRUE(stream.flush()) << file;
}

/// A folder that is removed with its content.
class TTemporaryFolder {
  public:
    TTemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "conferix-XXXXXX").string();
        EXPECT_NE(mkdtemp(pattern.data()), nullptr);
        path_ = pattern;
    }
    ~TTemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TTemporaryFolder(const TTemporaryFolder&) = delete;
    TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;
    const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// Parses and loads a text that is expected to be a TISS file.
inline std::shared_ptr<IArquivoTiss> LoadTiss(const std::string& xml) {
    const TXmlParseResult parsed = TXmlParser::Parse(xml);
    for (const auto& message : parsed.Messages)
        ADD_FAILURE() << message->Msg() << "\n" << xml;
    return TArquivoTissFactory().GetNewArquivoTiss(parsed.Document);
}

inline void ReplaceAll(std::string& text, std::string_view what, std::string_view with) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

} // namespace conferix
