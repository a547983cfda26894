#include "schema_model/built_in_folders.h"
#include "support/command_test.h"
#include "support/support.h"
#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_encoding.h"
#include "xml/xml_scanner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace conferix {
namespace {

using nlohmann::json;

std::vector<std::filesystem::path> Examples(const std::string& ending) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(Example("")))
        if (entry.path().string().ends_with(ending))
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    EXPECT_FALSE(files.empty()) << ending;
    return files;
}

class ExampleFiles : public TCommandTest {
  protected:
    ExampleFiles() {
        options_ = {"--terminologia", CONFERIX_TUSS_DB, "--esquemas", BuiltInSchemaFolder().string()};
    }

    /// The main schema of an example, whose name tells kind and version.
    static std::filesystem::path SchemaOf(const std::filesystem::path& example) {
        const std::string name = example.filename().string();
        std::string version = name.substr(name.find('-') + 1, 7);
        std::replace(version.begin(), version.end(), '.', '_');
        const bool monitoring = name.starts_with("monitoramento");
        return BuiltInSchemaFolder() / ((monitoring ? "tissMonitoramentoV" : "tissV") + version + ".xsd");
    }
};

TEST_F(ExampleFiles, ValidOnesHaveNoError) {
    for (const auto& file : Examples("-valido.xml")) {
        const json report = Validate(file.string());
        EXPECT_TRUE(report["valido"].get<bool>()) << file << report.dump(1);
    }
}

TEST_F(ExampleFiles, WhatSwitchedOffRulesFoundRightIsCountedListedOrNot) {
    options_.insert(options_.end(),
                    {"--desativar", "tiss.mensagem.loteguias.spsadt.procedimento.valortotal"});
    const std::string file = Example("spsadt-3.05.00-valido.xml").string();
    EXPECT_EQ(Validate(file)["ocultas"], 5);
    options_.emplace_back("--todas");
    EXPECT_EQ(Validate(file)["ocultas"], 5);
}

TEST_F(ExampleFiles, FaultyOnesShowEachPlantedFault) {
    for (const auto& file : Examples("-com-erros.xml")) {
        std::string found;
        const json report = Validate(file.string());
        for (const json& message : report["mensagens"])
            found += fmt::format("{}:{} [{}] {} {}: {}\n", message["linha"].get<int>(),
                                 message["coluna"].get<int>(), message["guia"].get<std::string>(),
                                 message["tipo"].get<std::string>(), message["validacao"].get<std::string>(),
                                 message["motivo"].get<std::string>());
        EXPECT_EQ(found, ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "tests/app/expected" /
                                      file.filename().replace_extension(".txt")))
            << file;
        EXPECT_FALSE(report["valido"].get<bool>()) << file;
    }
}

/// Renames one element in the text, in its start and end tag.
std::string Rename(std::string text, const TXmlNode& node) {
    const std::size_t prefix = node.Prefix().empty() ? 0 : node.Prefix().size() + 1;
    const std::size_t close = text.rfind("</", node.ByteEnd() - 1);
    if (close != std::string::npos && close > node.ByteStart() && text[node.ByteEnd() - 2] != '/')
        text.insert(close + 2 + prefix, "x");
    text.insert(node.ByteStart() + 1 + prefix, "x");
    return text;
}

TEST_F(ExampleFiles, AFaultInAnyElementIsReportedAtItsPlace) {
    for (const auto& file : Examples("-valido.xml")) {
        const auto schema = TSchemaSet::Load(SchemaOf(file));
        const std::string text = DecodeXml(ReadTestFile(file)).Text;
        const auto document = TXmlParser::Parse(text).Document;
        std::set<std::pair<const TXmlNode*, std::string_view>> seen; // siblings of one name are alike
        TXmlMappingScanner::Scan(*document->Element(), [&](const TXmlNode& node, bool&) {
            if (!node.IsTag() || !seen.emplace(node.Parent(), node.QualifiedName()).second)
                return;
            const auto faulty = TXmlParser::Parse(Rename(text, node)).Document;
            ASSERT_NE(faulty, nullptr) << node.QualifiedName();
            const auto faults = TSchemaValidator(*schema).Validate(*faulty);
            EXPECT_TRUE(std::any_of(faults.begin(), faults.end(),
                                    [&](const TSchemaFault& fault) {
                                        return fault.Line == node.Line() && fault.LinePos == node.LinePos() &&
                                               fault.FilePos == node.FilePos();
                                    }))
                << file << " <" << node.QualifiedName() << "> " << node.Line();
            // The element that it should have been may be missed at its place; nothing else is a fault.
            for (const TSchemaFault& fault : faults)
                EXPECT_GE(fault.Line, node.Line() - (fault.Code == TSchemaFaultCode::MissingElement ||
                                                             fault.Code == TSchemaFaultCode::MissingChoice
                                                         ? 1000
                                                         : 0));
        });
        EXPECT_GT(seen.size(), 50U) << file;
    }
}

} // namespace
} // namespace conferix
