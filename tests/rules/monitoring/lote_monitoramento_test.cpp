#include "rules/monitoring/guia_de_teste.h"

#include <gmock/gmock.h>

namespace conferix::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TValidationMessages Judge(const IMonitoramento& arquivo) {
    return Mensagens(kLoteMonitoramento, arquivo, Terminologia());
}

std::string EmptyGuides(int count) {
    std::string guides;
    for (int i = 0; i < count; ++i)
        guides += "<guiaMonitoramento/>";
    return guides;
}

TEST(LoteMonitoramento, HoldsTenThousandGuidesAtMostAndIsCheckedInFull) {
    const std::string limit =
        "erro: De acordo com o padrão TISS, um lote de monitoramento pode conter no máximo 10.000 guias. "
        "Porém, {} guias foram encontradas no XML.";
    const std::string faulty = Xml("guiaMonitoramento(origemEventoAtencao=1 numeroGuia_prestador=9)");
    const struct {
        std::string Guides;
        std::vector<std::string> Findings;
    } cases[] = {
        {"", {}},
        {EmptyGuides(10000), {}},
        {EmptyGuides(10001), {fmt::format(fmt::runtime(limit), "10.001")}},
        {EmptyGuides(10001) + faulty,
         {fmt::format(fmt::runtime(limit), "10.002"), "010 A versão TISS utilizada pelo prestador não foi "
                                                      "informada, conforme tabela de domínio nº 69. "}},
    };
    for (const auto& c : cases) {
        const auto arquivo = LoadedMonitoring("", c.Guides);
        EXPECT_EQ(Findings(*arquivo), c.Findings);
        const TValidationMessages messages = Judge(*arquivo);
        EXPECT_EQ(messages[0]->Validation().Name, "tiss.monitoramento.loteguias.lotecommaisdedezmilguias");
        EXPECT_EQ(messages[0]->Reason() == "O lote não excede o limite máximo permitido de 10.000 guias.",
                  c.Findings.empty());
    }
}

TEST(LoteMonitoramento, OtherContentPassesWithoutFindings) {
    const std::string contents[] = {
        "",
        Xml("semMovimentoInclusao=5016 "),
        Xml("fornecimentoDiretoMonitoramento(tipoRegistro=1 dataFornecimento=2999-01-01 "
            "valorTotalFornecimento=-1 procedimentos(identProcedimento(codigoTabela=x "
            "procedimento(grupoProcedimento=1)) quantidadeFornecida=-1 valorCoParticipacao=-1))"),
        Xml("outraRemuneracaoMonitoramento(tipoRegistro=1 dataProcessamento=2999-01-01 dadosRecebedor("
            "identificadorRecebedor=1 codigoCNPJ_CPF=1) valorTotalInformado=-1 valorTotalPago=-1)"),
        Xml("valorPreestabelecidoMonitoramento(tipoRegistro=1 dadosPrestador(identificadorPrestador=1 "
            "codigoCNPJ_CPF=1 municipioPrestador=1) valorPreestabelecido=-1)"),
    };
    for (const std::string& content : contents) {
        const auto arquivo = LoadedMonitoring("", content);
        EXPECT_THAT(Findings(*arquivo), IsEmpty()) << content;
        EXPECT_EQ(arquivo->Lote().QtdGuias(), 0) << content;
    }
}

TEST(LoteMonitoramento, EveryVersionIsChecked) {
    for (const char* version : {"1.00.00", "1.00.01", "1.01.00", "1.02.00", "1.03.00", "1.04.00", "1.04.01",
                                "1.05.00", "1.06.00"}) {
        const auto findings = [&](const TEdits& edits) {
            const auto [header, guide] = EditedGuia(edits);
            return Findings(
                *std::dynamic_pointer_cast<IMonitoramento>(LoadTiss(MonitoringText(version, header, guide))));
        };
        EXPECT_THAT(findings({}), IsEmpty()) << version;
        EXPECT_THAT(findings({{"valorGlosaGuia=5.00", "valorGlosaGuia=-5"}}),
                    ElementsAre(testing::StartsWith("058 ")))
            << version;
    }
}

TEST(LoteMonitoramento, FindingsComeGuideByGuideInTheOrderOfTheRules) {
    TEdits edits = {{"valorCoParticipacao=0.30", "valorCoParticipacao=-1"},
                    {"valorGlosaGuia=5.00", "valorGlosaGuia=-1"},
                    {" versaoTISSPrestador=016", ""},
                    {"dataPagamento=2023-01-10", "dataPagamento=2023-02-10"},
                    {"dataProcessamentoGuia=2023-01-12", "dataProcessamentoGuia=2023-01-31"},
                    {"municipioExecutante=3550308", "municipioExecutante=1"},
                    {"tipoAtendimento=05 ", ""}};
    const auto [header, first] = EditedGuia(edits);
    edits.emplace_back("numeroGuia_prestador=123", "numeroGuia_prestador=00000");
    const TValidationMessages messages =
        Judge(*LoadedMonitoring(header, first + "\n" + EditedGuia(edits).second));
    std::string order;
    for (const auto& message : messages)
        if (!message->Campo().empty()) {
            order += fmt::format("{}/{}:{} ", message->Line(), message->NumeroGuia(), message->Campo());
            EXPECT_EQ(message->Validation().Name,
                      "tiss.monitoramento.loteguias.guia.campo" + message->Campo());
        }
    EXPECT_EQ(order, "1/123:010 1/123:015 1/123:033 1/123:080 1/123:045 1/123:058 1/123:084 1/123:085 "
                     "2/456:010 2/456:015 2/456:033 2/456:080 2/456:045 2/456:058 2/456:084 2/456:085 ");
}

TEST(LoteMonitoramento, AMessageStandsAtTheElementThatFailed) {
    auto [header, guide] = EditedGuia({{"valorGlosaGuia=5.00", "valorGlosaGuia=-1"},
                                       {"codigoTabela=90", "codigoTabela=22"},
                                       {"dataPagamento=2023-01-10", "dataPagamento=2023-02-10"}});
    ReplaceAll(guide, "<valorGlosaGuia>", "\n  <valorGlosaGuia>");
    ReplaceAll(guide, "<detalhePacote>", "\n    <detalhePacote>");
    std::vector<std::string> places;
    for (const auto& message : Judge(*LoadedMonitoring(header, guide)))
        if (message->MsgType() == TMessageType::mtError)
            places.push_back(
                fmt::format("{}:{} {}", message->Line(), message->LinePos(), message->SrcText()));
    const std::string package = "3:5 ";
    EXPECT_THAT(places, ElementsAre(testing::EndsWith(" 2023-02-10"), "2:3 -1", testing::EndsWith(" 777"),
                                    package, package, package));
}

TEST(LoteMonitoramento, APackageOfManyIsCountedAsUsersReadNumbers) {
    std::string many;
    for (int i = 0; i < 1000; ++i)
        many += fmt::format("detalhePacote(codigoTabela=00 codigoProcedimento={} quantidade=1) ", i);
    EXPECT_THAT(Findings(*ArquivoEditado(
                    {{"codigoTabela=90", "codigoTabela=00"},
                     {"detalhePacote(codigoTabela=20 codigoProcedimento=31005497 quantidade=1)", many},
                     {"detalhePacote(codigoTabela=00 codigoProcedimento=31005497 quantidade=2)", ""}})),
                ElementsAre(testing::EndsWith(": 1.000"), testing::EndsWith(": 1.000"),
                            testing::EndsWith(": 1.000")));
}

TEST(LoteMonitoramento, TablesThatAreNotInstalledAreToldOnceARuleAndTable) {
    const auto notice = [](const char* campo, const char* table) {
        return fmt::format(
            "{} A tabela {} da TUSS não está instalada; os códigos dessa tabela não foram verificados. "
            "Importe a publicação da ANS: conferix terminologia importar ARQUIVO.",
            campo, table);
    };
    const std::string kCidades =
        " A tabela de municípios não está instalada; os códigos de município não foram verificados.";
    const auto [header, guide] = EditedGuia({});
    const auto arquivo = LoadedMonitoring(header, guide + guide + guide);
    EXPECT_THAT(Findings(*arquivo, TTussConnection::InMemory()),
                ElementsAre("015" + kCidades, "019" + kCidades, notice("064", "87"), notice("065", "63"),
                            notice("066", "64"), notice("078", "64")));
    for (const auto& message : Mensagens(kLoteMonitoramento, *arquivo, TTussConnection::InMemory()))
        if (message->MsgType() != TMessageType::mtSuccess) {
            EXPECT_EQ(message->MsgType(), TMessageType::mtWarning);
            EXPECT_EQ(message->Kind(), TFindingKind::Run);
            EXPECT_EQ(message->Place(), "[Campo: " + message->Campo() + "]");
        }
    // Domain table 64 with the terms of one table only: the codes of the others stay unjudged.
    const auto partial = TTussConnection::InMemory([](TTussWriter& writer) {
        writer.Insert(TTuss64{"22", "10101012", false, "", {}, {}, {}});
    });
    EXPECT_THAT(Findings(*arquivo, partial),
                ElementsAre("015" + kCidades, "019" + kCidades, notice("064", "87"), notice("065", "63"),
                            notice("078", "64 (termos da tabela 20)")));
}

TEST(LoteMonitoramento, RulesThatNeedTheTerminologyRefuseToRunWithoutOne) {
    const auto findings = [](const char* guide) {
        return Findings(*LoadedMonitoring("", Xml(guide)), nullptr);
    };
    EXPECT_THROW(findings("guiaMonitoramento(dadosContratadoExecutante(municipioExecutante=355030))"),
                 EManagerNotDefined);
    EXPECT_THAT(findings("guiaMonitoramento(valoresGuia(valorGlosaGuia=-1))"),
                ElementsAre(testing::StartsWith("058 ")));
}

TEST(LoteMonitoramento, TheTreeIsReadAnewAtEachVisit) {
    const auto arquivo = LoadedMonitoring("", Xml("guiaMonitoramento(valoresGuia(valorGlosaGuia=-1))"));
    const TGuiaMonitoramento guia = arquivo->Lote().GuiasMonitoramento().Get(0);
    TXmlNode& glosa = *guia.ValoresGuia().ValorGlosaGuia().Node();
    const auto rule =
        AllRules().MakeValidation(std::string(kLoteMonitoramento), NewRunContext("1.06.00", {}, nullptr));
    const auto found = [](const TValidation& visited) {
        return std::ranges::count(visited.ValidationMessages(), TMessageType::mtError, &TXmlMessage::MsgType);
    };
    EXPECT_FALSE(rule->Validated());
    arquivo->Accept(*rule);
    EXPECT_EQ(found(*rule), 1);
    glosa.SetValue("1");
    arquivo->Accept(*rule);
    EXPECT_TRUE(rule->Validated());
    EXPECT_EQ(found(*rule), 0);
    // Also by a single rule, which shares nothing with the visit before.
    const auto& fields = rule->Validations()[1]->Validations();
    const auto valores =
        std::ranges::find(fields, "tiss.monitoramento.loteguias.guia.valores", &TValidation::Name);
    ASSERT_NE(valores, fields.end());
    glosa.SetValue("-1");
    guia.Accept(**valores);
    EXPECT_EQ(found(**valores), 1);
}

TEST(LoteMonitoramento, CorrectionsLeadToALotWithoutFindings) {
    const TEdits faults = {{"origemEventoAtencao=1", "origemEventoAtencao=4"},
                           {"identificacaoReembolso=00000000000000000000", "identificacaoReembolso=77"},
                           {"valorTotalInformado=100.00", "valorTotalInformado=1.00"},
                           {"valorPagoGuia=95.00", "valorPagoGuia=0"},
                           {"valorPagoFornecedores=2.00", "valorPagoFornecedores=2"},
                           {"valorPagoFornecedor=2.00", "valorPagoFornecedor=1234.5"},
                           {"valorTotalCoParticipacao=0.60", "valorTotalCoParticipacao=9.99"}};
    const auto [header, first] = EditedGuia(faults);
    const std::string second =
        EditedGuia({{"identificacaoReembolso=00000000000000000000", "identificacaoReembolso=5"}}).second;
    auto arquivo = LoadedMonitoring(header, first + second);
    std::vector<std::string> corrected;
    for (int step = 0; step < 20 && !Findings(*arquivo).empty(); ++step) {
        const TValidationMessages messages = Judge(*arquivo);
        const auto fixable =
            std::ranges::find_if(messages, [](const auto& m) { return !m->Solvers().empty(); });
        ASSERT_NE(fixable, messages.end()) << messages.back()->Msg();
        corrected.push_back((*fixable)->Campo());
        arquivo =
            std::dynamic_pointer_cast<IMonitoramento>(LoadTiss((*fixable)->Solvers().front()->SolvedXml()));
    }
    EXPECT_THAT(Findings(*arquivo), IsEmpty());
    EXPECT_THAT(corrected, ElementsAre("023", "024", "050", "059", "060", "084", "025"));
    const TGuiaMonitoramento guia = arquivo->Lote().GuiasMonitoramento().Get(0);
    EXPECT_EQ(guia.ValoresGuia().ValorPagoFornecedores().Text(), "1234.50");
    EXPECT_EQ(guia.NumeroGuiaPrestador().Text(), std::string(20, '0'));
}

} // namespace
} // namespace conferix::tests
