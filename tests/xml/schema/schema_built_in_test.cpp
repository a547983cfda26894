// The schemas of all versions as the engine compiles them: those that come with the program and, where the
// machine has them, the published ones.
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_support.h"
#include "xml/schema/schema_tables.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace conferix {
namespace {

/// The child of an element's content by its name.
const TSchemaPosition& Child(const TSchemaElement& parent, std::string_view name) {
    const auto& positions = parent.ComplexType->Automaton.Positions;
    return *std::find_if(positions.begin(), positions.end(),
                         [&](const TSchemaPosition& position) { return position.Element->Name == name; });
}

void ExpectRoots(const std::filesystem::path& folder, std::size_t count) {
    const auto schemas = MainSchemas(folder);
    EXPECT_EQ(schemas.size(), count);
    for (const auto& path : schemas) {
        SCOPED_TRACE(path);
        const auto set = TSchemaSet::Load(path);
        const bool message = path.filename().string().starts_with("tissV");
        const std::uint32_t target = set->NamespaceId("http://www.ans.gov.br/padroes/tiss/schemas");
        const TSchemaElement* root =
            set->GlobalElement(set->SymbolOf(target, message ? "mensagemTISS" : "mensagemEnvioANS"));
        ASSERT_NE(root, nullptr);
        EXPECT_EQ(root->ComplexType->Automaton.Positions.front().Element->Name, "cabecalho");
    }
}

void ExpectBounds(const std::filesystem::path& folder) {
    const auto set = TSchemaSet::Load(folder / "tissMonitoramentoV1_06_00.xsd");
    const TSchemaElement& root = *set->GlobalElements().front();
    const auto& sending = *Child(*Child(root, "Mensagem").Element, "operadoraParaANS").Element;
    EXPECT_EQ(Child(sending, "guiaMonitoramento").Max, 10000U);
    EXPECT_EQ(Child(*Child(sending, "guiaMonitoramento").Element, "declaracaoNascido").Max, 8U);
    const auto& version = *Child(*Child(root, "cabecalho").Element, "versaoPadrao").Element;
    EXPECT_THAT(version.SimpleType->Facets.Codes, testing::UnorderedElementsAre("1.06.00", "1.05.00"));
}

TEST(TSchemaBuiltIn, EveryMainSchemaLoads) {
    ExpectRoots(CONFERIX_ESQUEMAS_GERADOS, 34);
    ExpectBounds(CONFERIX_ESQUEMAS_GERADOS);
}

TEST(TSchemaBuiltIn, TablesOfTheBuildSayWhatTheSchemaSays) {
    const TTemporaryFolder folder;
    const std::filesystem::path generated = CONFERIX_ESQUEMAS_GERADOS;
    std::filesystem::copy(generated / "tissAssinaturaXml.xsd", folder.Path());
    for (const auto& path : MainSchemas(generated)) {
        const auto kept = TSchemaTables::Read(path);
        ASSERT_NE(kept, nullptr) << path;
        std::filesystem::copy(path, folder.Path()); // without tables
        EXPECT_EQ(TSchemaTables::Write(*kept, generated),
                  TSchemaTables::Write(*TSchemaSet::Load(folder / path.filename().string()), folder.Path()))
            << path;
    }
}

TEST(TSchemaBuiltIn, TablesOfOtherCodeOrOtherSchemasAreNotUsed) {
    const TTemporaryFolder folder;
    const auto schema = folder / "teste.xsd";
    const std::string text = ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "tests/support/small.xsd");
    WriteTestFile(schema, text);
    const std::string tables = TSchemaTables::Write(*TSchemaSet::Load(schema), folder.Path());
    const auto keep = [&](const std::string& bytes) {
        WriteTestFile(TSchemaTables::FileOf(schema), bytes);
        return TSchemaTables::Read(schema);
    };
    EXPECT_EQ(TSchemaTables::Read(schema), nullptr);
    EXPECT_NE(keep(tables), nullptr);
    for (std::size_t at = 0; at < tables.size(); at += at < 100 ? 1 : 97) {
        EXPECT_EQ(keep(tables.substr(0, at)), nullptr) << at;
        std::string changed = tables;
        changed[at] = static_cast<char>(changed[at] ^ 1);
        EXPECT_EQ(keep(changed), nullptr) << at;
    }
    WriteTestFile(schema, text + " ");
    EXPECT_EQ(keep(tables), nullptr);
    std::filesystem::remove(schema);
    EXPECT_EQ(keep(tables), nullptr);
}

TEST(TSchemaBuiltIn, EveryPatternHasASentenceWithoutIt) {
    std::set<std::string> patterns;
    for (const auto& path : MainSchemas(CONFERIX_ESQUEMAS_GERADOS))
        for (const auto& type : TSchemaSet::Load(path)->SimpleTypes())
            for (const TSchemaPattern& pattern : type->Facets.Patterns)
                patterns.insert(pattern.Text);
    EXPECT_EQ(patterns.size(), 16U);
    for (const std::string& pattern : patterns) {
        TSchemaFault fault;
        fault.Code = TSchemaFaultCode::WrongPattern;
        fault.Name = "x";
        fault.Bound = pattern;
        EXPECT_EQ(TSchemaMessages::Sentence(fault).find(pattern), std::string::npos) << pattern;
    }
}

TEST(TSchemaPublished, EveryMainSchemaLoadsInSpiteOfItsDefects) {
    const auto folder = PublishedSchemas();
    if (!folder)
        GTEST_SKIP() << "the published schemas are not at hand (CONFERIX_ESQUEMAS_PUBLICADOS)";
    ExpectRoots(*folder, 28);
    ExpectBounds(*folder);
}

} // namespace
} // namespace conferix
