#include "xml/schema/schema_support.h"

#include "xml/schema/schema_messages.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace conferix {

std::string SchemaText(std::string_view declarations) {
    return "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" xmlns:t=\"urn:t\" "
           "targetNamespace=\"urn:t\" "
           "elementFormDefault=\"qualified\">\n" +
           std::string(declarations) + "\n</xs:schema>\n";
}

std::shared_ptr<const TSchemaSet> LoadDeclarations(std::string_view declarations) {
    const TTemporaryFolder folder;
    WriteTestFile(folder / "teste.xsd", SchemaText(declarations));
    return TSchemaSet::Load(folder / "teste.xsd");
}

std::vector<std::filesystem::path> MainSchemas(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> result;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.ends_with(".xsd") && (name.starts_with("tissV") || name.starts_with("tissMonitoramentoV") ||
                                       name.starts_with("tissMonitoramentoQualidadeV")))
            result.push_back(entry.path());
    }
    std::sort(result.begin(), result.end());
    return result;
}

std::vector<std::string> Sentences(const TSchemaSet& set, std::string_view text) {
    std::vector<std::string> sentences;
    if (const auto document = Parsed(std::string(text)))
        for (const TSchemaFault& fault : TSchemaValidator(set).Validate(*document))
            sentences.push_back(std::to_string(fault.Line) + ": " + TSchemaMessages::Sentence(fault));
    // The first few are those of all, and the others are counted.
    constexpr std::size_t kFew = 5;
    if (const auto document = Parsed(std::string(text))) {
        const auto [few, further, untold] = TSchemaValidator(set).Judge(*document, kFew);
        EXPECT_EQ(few.size(), std::min(kFew, sentences.size()));
        std::size_t count = few.size() + untold.size();
        for (const TSchemaFurther& more : further) {
            count += more.Nodes.size();
            EXPECT_NE(std::ranges::find(sentences, std::to_string(more.First.Line) + ": " +
                                                       TSchemaMessages::Sentence(more.First)),
                      sentences.end());
        }
        EXPECT_EQ(count, sentences.size());
        for (std::size_t i = 0; i < few.size(); ++i)
            EXPECT_EQ(std::to_string(few[i].Line) + ": " + TSchemaMessages::Sentence(few[i]), sentences[i]);
    }
    return sentences;
}

} // namespace conferix
