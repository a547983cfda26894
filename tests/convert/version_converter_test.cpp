#include "app/lote_conversion.h"
#include "convert/version_converter.h"
#include "schema_model/built_in_folders.h"
#include "support/case_file.h"
#include "support/support.h"
#include "validation/hash_calculator.h"
#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_encoding.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::Cases;
using tests::EditedExample;
using tests::ExpectLines;
using tests::TCase;

constexpr auto kLote = TEnumTipoTransacaoTiss::tmEnvioLoteGuias;
constexpr const char* kTiss = "http://www.ans.gov.br/padroes/tiss/schemas";

std::string ExampleText(const std::string& name) {
    return DecodeXml(ReadTestFile(Example(name))).Text;
}

TEST(VersionConverter, KnowsTheChain) {
    const TVersionConverter converter;
    const struct {
        const char* Versao;
        std::vector<std::string> Next;
        std::vector<std::string> Previous;
    } cases[] = {{"3.05.00", {"4.00.00", "4.00.01", "4.01.00", "4.02.00", "4.03.00"}, {"3.04.01", "3.04.00"}},
                 {"4.01.00", {"4.02.00", "4.03.00"}, {"4.00.01", "4.00.00"}},
                 {"4.03.00", {}, {"4.02.00", "4.01.00", "4.00.01", "4.00.00"}},
                 {"3.03.01",
                  {"3.03.02", "3.03.03", "3.04.00", "3.04.01", "3.05.00", "4.00.00", "4.00.01", "4.01.00",
                   "4.02.00", "4.03.00"},
                  {"3.03.00", "3.02.02", "3.02.01", "3.02.00"}},
                 {"3.01.00", {}, {}}};
    for (const auto& c : cases) {
        EXPECT_EQ(converter.NextVersions(kLote, c.Versao), c.Next) << c.Versao;
        EXPECT_EQ(converter.PreviousVersions(kLote, c.Versao), c.Previous) << c.Versao;
    }
    EXPECT_THAT(converter.NextVersions(TEnumTipoTransacaoTiss::tmCancelaGuia, "3.05.00"), IsEmpty());
    EXPECT_THAT(converter.PreviousVersions(kLote, "3.04.00"), IsEmpty());
    ASSERT_EQ(converter.Converters().size(), 15U);
    for (const auto& step : converter.Converters()) {
        EXPECT_EQ(step->NextVersion().empty(), step->Version() == "4.03.00");
        // Where there is no way, nothing is done.
        std::string source = ExampleText("spsadt-3.05.00-valido.xml");
        ReplaceAll(source, "<ans:Padrao>3.05.00<", fmt::format("<ans:Padrao>{}<", step->Version()));
        TConversionRun run;
        if (step->PreviousVersion().empty()) {
            EXPECT_EQ(step->Down(*LoadTiss(source), run), "");
        }
        if (step->NextVersion().empty()) {
            EXPECT_EQ(step->Up(*LoadTiss(source), run), "");
        }
        EXPECT_THAT(run.Notes(), IsEmpty());
    }
}

TEST(VersionConverter, TellsEachLossAndEachOpenPlace) {
    for (const TCase& c : Cases("convert/conversions.casos")) { // its head tells the form
        std::istringstream to(c.Inputs[0].second);
        std::string target;
        std::string regime;
        to >> target >> regime;
        const std::string source = DecodeXml(EditedExample(c.Inputs[0].first, c, 1)).Text;
        TConvertedLote lote;
        try {
            lote = ConvertLote(*LoadTiss(source), target, {regime}, TSchemaFolder(BuiltInSchemaFolder()));
        } catch (const EConversionNotSupported& error) {
            ExpectLines(c, {error.what()});
            continue;
        }
        std::vector<std::string> told = {
            fmt::format("{}: {}", lote.Valid ? "válido" : "inválido", fmt::join(lote.Steps, ", "))};
        std::size_t pending = 0;
        for (const TConversionNote& note : lote.Notes) {
            static constexpr const char* kTypes[] = {"perda", "pendente", "mudança"};
            const std::string line = fmt::format("{} {} {} = {}: {}", kTypes[static_cast<int>(note.Type)],
                                                 note.Step, note.Element, note.Value, note.Text);
            pending += note.Type == TConversionNoteType::ntPending ? 1 : 0;
            const bool named = std::count(c.Expected.begin(), c.Expected.end(), line) != 0;
            if (named || (note.Type != TConversionNoteType::ntChange && c.Section != "erros de antes"))
                told.push_back(line);
        }
        for (const std::string& text : c.Expected) { // "contém" and "não contém" speak of what is written
            const std::size_t at = text.find("contém ");
            if (at != std::string::npos &&
                (lote.Xml.find(text.substr(at + 8)) == std::string::npos) == (at > 0))
                told.push_back(text);
        }
        ExpectLines(c, told);
        // The hash is that of what is written, and as many places are open as the schema finds faults there.
        const auto written = LoadTiss(lote.Xml);
        EXPECT_EQ(written->Hash(), THashCalculator::Calculate(*written->Xml(), THashEncoding::Iso88591)) << c;
        std::replace(target.begin(), target.end(), '.', '_');
        const auto set = TSchemaSet::Load(BuiltInSchemaFolder() / ("tissV" + target + ".xsd"));
        EXPECT_LE(TSchemaValidator(*set).Validate(*written->Xml()).size(), pending) << c;
    }
}

TEST(VersionConverter, RefusesAWayThatIsNotItsOwn) {
    TConversionRun run;
    const TVersionConverter converter;
    EXPECT_THROW(converter.ConvertDown(*LoadTiss(ExampleText("consulta-4.01.00-valido.xml")), "4.02.00", run),
                 EConversionNotSupported);
    // A step by itself refuses a foreign transaction with its own versions.
    std::string other = ExampleText("spsadt-3.05.00-valido.xml");
    ReplaceAll(other, ">ENVIO_LOTE_GUIAS<", ">CANCELA_GUIA<");
    EXPECT_THROW(converter.Converters()[9]->Up(*LoadTiss(other), run), EConversionNotSupported);
}

TEST(VersionConverter, GoesUpToTheLastVersion) {
    std::vector<std::string> seen;
    TVersionConverter converter;
    converter.SetObserver([&](std::string_view versao, const auto& file) {
        seen.emplace_back(versao);
        EXPECT_EQ(file->Versao(), versao);
    });
    TConversionRun run({"03"});
    const std::string xml =
        converter.ConvertUp(*LoadTiss(ExampleText("spsadt-3.05.00-valido.xml")), "4.03.00", run);
    EXPECT_THAT(seen, ElementsAre("4.00.00", "4.00.01", "4.01.00", "4.02.00", "4.03.00"));
    const auto file = LoadTiss(xml);
    std::vector<std::string> attributes;
    for (const TXmlAttribute& attribute : file->Xml()->Element()->Attributes())
        attributes.push_back(fmt::format("{}={}", attribute.QualifiedName(), attribute.Value()));
    EXPECT_THAT(attributes, ElementsAre(fmt::format("xmlns:ans={}", kTiss),
                                        "xmlns:xsi=http://www.w3.org/2001/XMLSchema-instance",
                                        fmt::format("xsi:schemaLocation={0} {0}/tissV4_03_00.xsd", kTiss)));
    const TXmlNode* guide = file->Xml()->Element()->FirstDescendant("guiaSP-SADT");
    EXPECT_EQ(ValueOf(guide->Find("dadosSolicitante/nomeContratadoSolicitante")), "PROFISSIONAL DE TESTE UM");
    EXPECT_EQ(guide->Find("dadosSolicitante/contratadoSolicitante")->NextSiblingTag()->LocalName(),
              "nomeContratadoSolicitante");
    EXPECT_EQ(ValueOf(guide->Find("dadosAtendimento/regimeAtendimento")), "03");
}

} // namespace
} // namespace conferix
