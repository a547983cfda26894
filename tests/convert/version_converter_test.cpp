#include "app/lote_conversion.h"
#include "convert/version_converter.h"
#include "schema_model/built_in_folders.h"
#include "support/support.h"
#include "validation/hash_calculator.h"
#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_encoding.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

constexpr auto kLote = TEnumTipoTransacaoTiss::tmEnvioLoteGuias;
constexpr const char* kTiss = "http://www.ans.gov.br/padroes/tiss/schemas";

std::string ExampleText(const std::string& name) {
    return DecodeXml(ReadTestFile(Example(name))).Text;
}

/// Notes as "tipo passo elemento = valor".
std::vector<std::string> Lines(const TConversionNotes& notes, TConversionNoteType tipo) {
    std::vector<std::string> lines;
    for (const TConversionNote& note : notes)
        if (note.Type == tipo)
            lines.push_back(fmt::format("{} {} = {}", note.Step, note.Element, note.Value));
    return lines;
}

TConvertedLote Convert(const std::string& text, const std::string& target, const std::string& regime = {}) {
    return ConvertLote(*LoadTiss(text), target, {regime}, TSchemaFolder(BuiltInSchemaFolder()));
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

TEST(VersionConverter, RefusesWhatItCannotConvert) {
    std::string other = ExampleText("spsadt-3.05.00-valido.xml");
    ReplaceAll(other, ">ENVIO_LOTE_GUIAS<", ">CANCELA_GUIA<");
    const struct {
        std::string Text;
        const char* Target;
        const char* Reason;
    } cases[] = {
        {other, "4.00.00",
         "Conversão não suportada para esse tipo de transação (tmCancelaGuia). 3.05.00 -> 4.00.00"},
        {ExampleText("monitoramento-1.06.00-valido.xml"), "4.00.00",
         "Conversão não suportada para esse tipo de transação (tmMonitoramento). 1.06.00 -> 4.00.00"},
        {ExampleText("spsadt-2.02.03-valido.xml"), "3.02.00", "a partir da versão 2.02.03"},
        {ExampleText("consulta-4.01.00-valido.xml"), "3.05.00",
         "4.01.00 -> 3.05.00. A partir de 4.01.00 são possíveis: 4.02.00, 4.03.00, 4.00.01, 4.00.00."},
        {ExampleText("consulta-4.01.00-valido.xml"), "4.01.00", "4.01.00 -> 4.01.00"},
        {ExampleText("consulta-4.01.00-valido.xml"), "x", "4.01.00 -> x"}};
    for (const auto& c : cases) {
        EXPECT_THAT(TextOf<EConversionNotSupported>([&] { Convert(c.Text, c.Target); }), HasSubstr(c.Reason));
    }
    TConversionRun run;
    EXPECT_THROW(TVersionConverter().ConvertDown(*LoadTiss(ExampleText("consulta-4.01.00-valido.xml")),
                                                 "4.02.00", run),
                 EConversionNotSupported);
    // A step by itself refuses a foreign transaction with its own versions.
    EXPECT_THROW(TVersionConverter().Converters()[9]->Up(*LoadTiss(other), run), EConversionNotSupported);
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

TEST(VersionConverter, TellsEachLossAndEachOpenPlace) {
    using enum TConversionNoteType;
    const TConvertedLote sadt = Convert(ExampleText("spsadt-3.05.00-valido.xml"), "4.01.00");
    EXPECT_THAT(sadt.Steps, ElementsAre("3.05.00 -> 4.00.00", "4.00.00 -> 4.00.01", "4.00.01 -> 4.01.00"));
    EXPECT_THAT(
        Lines(sadt.Notes, ntLoss),
        ElementsAre(
            "3.05.00 -> 4.00.00 dadosBeneficiario/nomeBeneficiario = BENEFICIARIO DE TESTE UM",
            "3.05.00 -> 4.00.00 dadosBeneficiario/numeroCNS = 700000000000013",
            "3.05.00 -> 4.00.00 dadosExecutante/contratadoExecutante/nomeContratado = CLINICA DE TESTE",
            "3.05.00 -> 4.00.00 dadosBeneficiario/nomeBeneficiario = BENEFICIARIO DE TESTE DOIS",
            "3.05.00 -> 4.00.00 dadosExecutante/contratadoExecutante/nomeContratado = CLINICA DE TESTE"));
    EXPECT_THAT(Lines(sadt.Notes, ntPending),
                ElementsAre("3.05.00 -> 4.00.00 dadosAtendimento/regimeAtendimento = ",
                            "3.05.00 -> 4.00.00 dadosAtendimento/regimeAtendimento = ",
                            "4.00.01 -> 4.01.00 dadosAtendimento/tipoAtendimento = 05"));
    EXPECT_FALSE(sadt.Valid);
    EXPECT_EQ(sadt.Notes[1].Guia, "20000001");
    EXPECT_EQ(sadt.Notes[1].Line, 41); // of the file that was read
    EXPECT_EQ(LoadTiss(sadt.Xml)->Hash(),
              THashCalculator::Calculate(*TXmlParser::Parse(sadt.Xml).Document, THashEncoding::Iso88591));

    // Attributes, text beside elements and what stands below a name that moves are lost by name.
    std::string odd = ExampleText("spsadt-3.05.00-valido.xml");
    ReplaceAll(odd, "<ans:nomeBeneficiario>BENEFICIARIO DE TESTE UM<",
               "<ans:nomeBeneficiario matricula=\"77\" xmlns:q=\"u\"> JOSE <x b=\"2\">1</x><");
    const std::size_t requester = odd.find("<ans:nomeContratado>", odd.find("<ans:contratadoSolicitante>"));
    odd.replace(requester, std::string_view("<ans:nomeContratado>").size(),
                "<ans:nomeContratado a4=\"v89\"><foo>CH577</foo>");
    EXPECT_THAT(
        Lines(Convert(odd, "4.00.00").Notes, ntLoss),
        IsSupersetOf(
            {"3.05.00 -> 4.00.00 dadosBeneficiario/nomeBeneficiario = JOSE",
             "3.05.00 -> 4.00.00 dadosBeneficiario/nomeBeneficiario/@matricula = 77",
             "3.05.00 -> 4.00.00 dadosBeneficiario/nomeBeneficiario/x = 1",
             "3.05.00 -> 4.00.00 dadosBeneficiario/nomeBeneficiario/x/@b = 2",
             "3.05.00 -> 4.00.00 dadosSolicitante/contratadoSolicitante/nomeContratado/@a4 = v89",
             "3.05.00 -> 4.00.00 dadosSolicitante/contratadoSolicitante/nomeContratado/foo = CH577"}));

    // What is offered for a code are those of the target, not of the step that first refused it.
    std::string code = ExampleText("spsadt-3.05.00-valido.xml");
    ReplaceAll(code, "<ans:tipoAtendimento>05<", "<ans:tipoAtendimento>06<");
    const TConversionNotes offered = Convert(code, "4.03.00", "01").Notes;
    const auto refused = std::find_if(offered.begin(), offered.end(),
                                      [](const TConversionNote& note) { return note.Value == "06"; });
    ASSERT_NE(refused, offered.end());
    EXPECT_THAT(refused->Text, testing::AllOf(HasSubstr("23"), Not(HasSubstr("05"))));

    const TConvertedLote fees = Convert(ExampleText("honorarios-4.01.00-valido.xml"), "4.03.00");
    EXPECT_THAT(Lines(fees.Notes, ntPending),
                testing::Each("4.02.00 -> 4.03.00 dadosInternacao/caraterAtendimento = "));
    EXPECT_THAT(fees.Notes.back().Text, "O hash foi calculado de novo.");
    EXPECT_THAT(Lines(fees.Notes, ntLoss), IsEmpty());

    // Council codes take their zero, items their numbers; what was invalid before is told as well.
    std::string stay = ExampleText("internacao-3.02.00-valido.xml");
    ReplaceAll(stay, "</ans:numeroLote>", "</ans:numeroLote><ans:intruso>x</ans:intruso>");
    const TConvertedLote numbered = Convert(stay, "3.05.00");
    EXPECT_THAT(Lines(numbered.Notes, ntChange),
                IsSupersetOf({"3.02.01 -> 3.02.02 cabecalho/versaoPadrao = 3.02.02",
                              "3.02.02 -> 3.03.00 procedimentosExecutados/procedimentoExecutado/identEquipe/"
                              "identificacaoEquipe/conselho = 6",
                              "3.03.03 -> 3.04.00 outrasDespesas/despesa/sequencialItem = 3"}));
    EXPECT_THAT(Lines(numbered.Notes, ntPending),
                ElementsAre("3.04.01 -> 3.05.00 prestadorParaOperadora/loteGuias/intruso = x"));
}

TEST(VersionConverter, ComputesTheHashOfWhatIsWritten) {
    // Files that were wrong before: a group left without elements, text beside elements, a value twice.
    const std::pair<const char*, const char*> edits[] = {
        {"<ans:codigoPrestadorNaOperadora>123456</ans:codigoPrestadorNaOperadora>", ""},
        {"<ans:nomeContratado>", "texto <ans:nomeContratado>"},
        {"<ans:atendimentoRN>N</ans:atendimentoRN>",
         "<ans:atendimentoRN>x</ans:atendimentoRN><ans:atendimentoRN>y</ans:atendimentoRN>"},
        {"<ans:CNES>9999999</ans:CNES>", "<ans:CNES><![CDATA[9999999]]></ans:CNES>"},
        {"<ans:hash>", "<!-- sem hash --><ans:outro>"},
        {"</ans:hash>", "</ans:outro>"}};
    for (const char* example : {"spsadt-3.05.00-valido.xml", "odonto-3.05.00-valido.xml"}) {
        std::string text = ExampleText(example);
        for (const auto& [what, with] : edits) {
            ReplaceAll(text, what, with);
            if (!TXmlParser::Parse(text).Messages.empty())
                continue; // the other half of an edit follows
            const TConvertedLote lote = Convert(text, "4.03.00");
            const auto written = LoadTiss(lote.Xml);
            EXPECT_EQ(written->Hash(), THashCalculator::Calculate(*written->Xml(), THashEncoding::Iso88591))
                << what;
            // As many open places as the schema finds faults in what was written.
            const auto set = TSchemaSet::Load(BuiltInSchemaFolder() / "tissV4_03_00.xsd");
            EXPECT_LE(TSchemaValidator(*set).Validate(*written->Xml()).size(),
                      Lines(lote.Notes, TConversionNoteType::ntPending).size())
                << what;
        }
    }
}

TEST(VersionConverter, KeepsNamespacesAndTellsSignatures) {
    std::string text = ExampleText("consulta-4.01.00-valido.xml");
    // Another prefix of the standard, further namespaces and an attribute that no schema knows.
    ReplaceAll(text, "ans:", "t:");
    ReplaceAll(text, "xmlns:ans=", "extra=\"e\" xmlns:d=\"http://www.w3.org/2000/09/xmldsig#\" xmlns:t=");
    const std::string signature =
        "<d:SignedInfo><d:CanonicalizationMethod Algorithm=\"a\"/><d:SignatureMethod Algorithm=\"b\"/>"
        "<d:Reference URI=\"\"><d:DigestMethod "
        "Algorithm=\"c\"/><d:DigestValue>QQ==</d:DigestValue></d:Reference>"
        "</d:SignedInfo><d:SignatureValue>QQ==</d:SignatureValue>";
    ReplaceAll(text, "</t:epilogo>", "</t:epilogo><d:Signature>" + signature + "</d:Signature>");
    const std::size_t guide = text.find("</t:guiaConsulta>");
    text.insert(guide, "<t:assinaturaDigitalGuia>" + signature + "</t:assinaturaDigitalGuia>");
    const TConvertedLote lote = Convert(text, "4.02.00");
    EXPECT_TRUE(lote.Valid);
    EXPECT_THAT(lote.Xml, HasSubstr("<ans:guiaConsulta>"));
    EXPECT_THAT(lote.Xml, Not(HasSubstr("<t:")));
    EXPECT_THAT(lote.Xml, HasSubstr("<d:Signature xmlns:d=\"http://www.w3.org/2000/09/xmldsig#\">"));
    EXPECT_THAT(Lines(lote.Notes, TConversionNoteType::ntLoss), ElementsAre("4.01.00 -> 4.02.00 @extra = e"));
    EXPECT_THAT(
        Lines(lote.Notes, TConversionNoteType::ntPending),
        ElementsAre("4.01.00 -> 4.02.00 Signature = ", "4.01.00 -> 4.02.00 assinaturaDigitalGuia = "));

    // The default namespace takes the prefix as well.
    std::string plain = ExampleText("consulta-4.01.00-valido.xml");
    ReplaceAll(plain, "ans:", "");
    ReplaceAll(plain, "xmlns:ans=", "xmlns=");
    EXPECT_TRUE(Convert(plain, "4.00.01").Valid) << plain.substr(0, 400);
}

} // namespace
} // namespace conferix
