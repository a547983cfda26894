#include "xml/schema/schema_support.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace conferix {
namespace {

std::vector<std::filesystem::path> MainSchemas(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> result;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("tissV") || name.starts_with("tissMonitoramentoV") ||
            name.starts_with("tissMonitoramentoQualidadeV"))
            result.push_back(entry.path());
    }
    std::sort(result.begin(), result.end());
    return result;
}

TEST(TSchemaPublished, EveryMainSchemaLoadsInSpiteOfItsDefects) {
    const auto folder = PublishedSchemas();
    if (!folder)
        GTEST_SKIP() << "the published schemas are not at hand (CONFERIX_ESQUEMAS_PUBLICADOS)";
    const auto schemas = MainSchemas(*folder);
    EXPECT_GE(schemas.size(), 28U);
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

TEST(TSchemaPublished, KnownBoundsAreInTheTables) {
    const auto folder = PublishedSchemas();
    if (!folder)
        GTEST_SKIP() << "the published schemas are not at hand (CONFERIX_ESQUEMAS_PUBLICADOS)";
    const auto set = TSchemaSet::Load(*folder / "tissMonitoramentoV1_06_00.xsd");
    EXPECT_THAT(set->Files(), testing::Contains("tissSimpleTypesMonitoramentoV1_06_00.xsd"));
    const auto child = [](const TSchemaElement& parent, std::string_view name) -> const TSchemaPosition& {
        const auto& positions = parent.ComplexType->Automaton.Positions;
        return *std::find_if(positions.begin(), positions.end(),
                             [&](const TSchemaPosition& position) { return position.Element->Name == name; });
    };
    const TSchemaElement& root = *set->GlobalElements().front();
    const auto& sending = *child(*child(root, "Mensagem").Element, "operadoraParaANS").Element;
    EXPECT_EQ(child(sending, "guiaMonitoramento").Max, 10000U);
    EXPECT_EQ(child(*child(sending, "guiaMonitoramento").Element, "declaracaoNascido").Max, 8U);
    const auto& version = *child(*child(root, "cabecalho").Element, "versaoPadrao").Element;
    EXPECT_THAT(version.SimpleType->Facets.Codes, testing::UnorderedElementsAre("1.06.00", "1.05.00"));
}

} // namespace
} // namespace conferix
