#include "rules/monitoring/guia_de_teste.h"

#include "support/support.h"

#include <fmt/format.h>

namespace conferix {

using namespace testes;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char* const kWithinLimit = "O lote não excede o limite máximo permitido de 10.000 guias.";

TEST(LoteMonitoramento, Limite) {
    const struct {
        int guides;
        TMessageType type;
        std::string reason;
    } cases[] = {
        {0, TMessageType::mtSuccess, kWithinLimit},
        {10000, TMessageType::mtSuccess, kWithinLimit},
        {10001, TMessageType::mtError,
         "De acordo com o padrão TISS, um lote de monitoramento pode conter no máximo 10.000 guias. Porém, "
         "10.001 guias "
         "foram encontradas no XML."},
    };
    for (const auto& c : cases) {
        std::string guides;
        for (int i = 0; i < c.guides; ++i)
            guides += "<guiaMonitoramento/>";
        const TValidationMessages messages = Judge(ArquivoMonitoramento("", guides));
        ASSERT_EQ(messages.size(), 1U) << c.guides;
        EXPECT_EQ(messages[0]->MsgType(), c.type);
        EXPECT_EQ(messages[0]->Reason(), c.reason);
        EXPECT_EQ(messages[0]->Validation().Name, "tiss.monitoramento.loteguias.lotecommaisdedezmilguias");
    }
}

TEST(LoteMonitoramento, AnOversizedLotIsCheckedInFull) {
    std::string guides;
    for (int i = 0; i < 10001; ++i)
        guides += "<guiaMonitoramento/>";
    guides += Xml("guiaMonitoramento(origemEventoAtencao=1 numeroGuia_prestador=9)");
    const TValidationMessages messages = Judge(ArquivoMonitoramento("", guides));
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_THAT(messages[0]->Reason(), testing::HasSubstr("10.002 guias"));
    EXPECT_EQ(messages[1]->Msg(),
              "[Linha: 1] [Guia: 9] [Campo: 010] A versão TISS utilizada pelo prestador não foi "
              "informada, conforme tabela de domínio nº 69. ");
}

TEST(LoteMonitoramento, OtherContentPassesWithoutFindings) {
    const std::string kPessoa =
        "dadosBeneficiario(identBeneficiario(dadosSemCartao(sexo=1 dataNascimento=1980-01-01 "
        "municipioResidencia=1)) numeroRegistroPlano=1)";
    const std::string contents[] = {
        "",
        Xml("semMovimentoInclusao=5016 "),
        Xml("fornecimentoDiretoMonitoramento(tipoRegistro=1 " + kPessoa +
            " identificacaoFornecimentoDireto=1 dataFornecimento=2999-01-01 valorTotalFornecimento=-1 "
            "valorTotalTabelaPropria=-1 valorTotalCoParticipacao=-1 "
            "procedimentos(identProcedimento(codigoTabela=x "
            "procedimento(grupoProcedimento=1)) quantidadeFornecida=-1 valorFornecido=-1 "
            "valorCoParticipacao=-1))"),
        Xml("outraRemuneracaoMonitoramento(tipoRegistro=1 dataProcessamento=2999-01-01 dadosRecebedor("
            "identificadorRecebedor=1 codigoCNPJ_CPF=1) valorTotalInformado=-1 valorTotalGlosa=-1 "
            "valorTotalPago=-1)"),
        Xml("valorPreestabelecidoMonitoramento(tipoRegistro=1 competenciaCoberturaContratada=1 "
            "dadosPrestador(CNES=1 "
            "identificadorPrestador=1 codigoCNPJ_CPF=1 municipioPrestador=1) valorPreestabelecido=-1)"),
    };
    for (const std::string& content : contents) {
        const auto arquivo = ArquivoMonitoramento("", content);
        EXPECT_THAT(Findings(Judge(arquivo)), IsEmpty()) << content;
        EXPECT_EQ(arquivo->Lote().QtdGuias(), 0) << content;
    }
}

TEST(LoteMonitoramento, EveryVersionIsChecked) {
    for (const char* version : {"1.00.00", "1.00.01", "1.01.00", "1.02.00", "1.03.00", "1.04.00", "1.04.01",
                                "1.05.00", "1.06.00"}) {
        const auto load = [&](const TEdits& edits) {
            return std::dynamic_pointer_cast<IMonitoramento>(Carregado(
                Monitoramento(version, Xml(std::string(kCabecalho) + " "), Xml(Edited(kGuia, edits)))));
        };
        EXPECT_THAT(Findings(Judge(load({}))), IsEmpty()) << version;
        EXPECT_THAT(Findings(Judge(load({{"valorGlosaGuia=5.00", "valorGlosaGuia=-5"}}))),
                    ElementsAre(testing::StartsWith("058 ")))
            << version;
    }
}

TEST(LoteMonitoramento, FindingsComeGuideByGuideInTheOrderOfTheRules) {
    const TEdits faults = {{"valorCoParticipacao=0.30", "valorCoParticipacao=-1"},
                           {"valorGlosaGuia=5.00", "valorGlosaGuia=-1"},
                           {"tipoRegistro=1 versaoTISSPrestador=016", "tipoRegistro=1"},
                           {"dataPagamento=2023-01-10", "dataPagamento=2023-02-10"},
                           {"dataProcessamentoGuia=2023-01-12", "dataProcessamentoGuia=2023-01-31"},
                           {"municipioExecutante=3550308", "municipioExecutante=1"},
                           {"tipoAtendimento=05 ", ""}};
    TEdits others = faults;
    others.emplace_back("numeroGuia_prestador=123", "numeroGuia_prestador=00000");
    const auto arquivo = ArquivoMonitoramento(Xml(std::string(kCabecalho) + " "),
                                              Xml(Edited(kGuia, faults)) + "\n" + Xml(Edited(kGuia, others)));
    const TValidationMessages messages = Judge(arquivo);
    std::string order;
    for (const auto& message : messages)
        if (const auto* m = dynamic_cast<const TLoteGuiasMonitoramentoValidationMessage*>(message.get())) {
            order += fmt::format("{}/{}:{} ", m->Line(), m->NumeroGuia(), m->Campo());
            EXPECT_EQ(m->Validation().Name, "tiss.monitoramento.loteguias.guia.campo" + m->Campo());
            EXPECT_FALSE(m->Validation().Required);
        }
    EXPECT_EQ(order, "1/123:010 1/123:015 1/123:033 1/123:080 1/123:045 1/123:058 1/123:084 1/123:085 "
                     "2/456:010 2/456:015 2/456:033 2/456:080 2/456:045 2/456:058 2/456:084 2/456:085 ");
}

TEST(LoteMonitoramento, AMessageStandsAtTheElementThatFailed) {
    std::string guide = Xml(Edited(kGuia, {{"valorGlosaGuia=5.00", "valorGlosaGuia=-1"},
                                           {"codigoTabela=90", "codigoTabela=22"},
                                           {"dataPagamento=2023-01-10", "dataPagamento=2023-02-10"}}));
    ReplaceAll(guide, "<valorGlosaGuia>", "\n  <valorGlosaGuia>");
    ReplaceAll(guide, "<detalhePacote>", "\n    <detalhePacote>");
    const TValidationMessages messages =
        Judge(ArquivoMonitoramento(Xml(std::string(kCabecalho) + " "), guide));
    std::vector<std::string> places;
    for (const auto& message : messages)
        if (message->MsgType() == TMessageType::mtError)
            places.push_back(
                fmt::format("{}:{} {}", message->Line(), message->LinePos(), message->SrcText()));
    const std::string package = "3:5 ";
    EXPECT_THAT(places, ElementsAre(testing::EndsWith(" 2023-02-10"), "2:3 -1", testing::EndsWith(" 777"),
                                    package, package, package));
}

TEST(LoteMonitoramento, TablesThatAreNotInstalledAreToldOnceARuleAndTable) {
    const auto notice = [](const char* campo, const char* table) {
        return fmt::format(
            "{} A tabela {} da TUSS não está instalada; os códigos dessa tabela não foram verificados. "
            "Importe a publicação da ANS: conferix terminologia importar ARQUIVO.",
            campo, table);
    };
    const std::string kCidades =
        "A tabela de municípios não está instalada; os códigos de município não foram verificados.";
    const std::string guides = Xml(kGuia) + Xml(kGuia) + Xml(kGuia);
    const auto arquivo = ArquivoMonitoramento(Xml(std::string(kCabecalho) + " "), guides);
    const TValidationMessages messages = Judge(arquivo, TTussConnection::InMemory());
    EXPECT_THAT(Findings(messages),
                ElementsAre("015 " + kCidades, "019 " + kCidades, notice("064", "87"), notice("065", "63"),
                            notice("066", "64"), notice("078", "64")));
    for (const auto& message : messages)
        EXPECT_NE(message->MsgType(), TMessageType::mtError);
    // Domain table 64 with the terms of one table only: the codes of the others stay unjudged.
    const auto partial = TTussConnection::InMemory([](TTussWriter& writer) {
        writer.Insert(TTuss64{"22", "10101012", false, "", {}, {}, {}});
    });
    EXPECT_THAT(Findings(Judge(arquivo, partial)),
                ElementsAre("015 " + kCidades, "019 " + kCidades, notice("064", "87"), notice("065", "63"),
                            notice("078", "64 (termos da tabela 20)")));
}

TEST(LoteMonitoramento, RulesThatNeedTheTerminologyRefuseToRunWithoutOne) {
    const auto judge = [](const std::string& guide) {
        return Judge(ArquivoMonitoramento("", guide), nullptr);
    };
    EXPECT_THROW(judge(Xml("guiaMonitoramento(dadosContratadoExecutante(municipioExecutante=355030))")),
                 EManagerNotDefined);
    EXPECT_THAT(Findings(judge(Xml("guiaMonitoramento(valoresGuia(valorGlosaGuia=-1))"))),
                ElementsAre(testing::StartsWith("058 ")));
}

TEST(LoteMonitoramento, TheTreeIsReadAnewAtEachVisit) {
    const auto arquivo = ArquivoMonitoramento("", Xml("guiaMonitoramento(valoresGuia(valorGlosaGuia=-1))"));
    const auto rule = MakeValidation<TMonitoramentoLoteValidation>(arquivo, Terminologia());
    EXPECT_FALSE(rule->Validated());
    arquivo->Accept(*rule);
    EXPECT_EQ(Findings(rule->ValidationMessages()).size(), 1U);
    arquivo->Lote().GuiasMonitoramento().Get(0).ValoresGuia().ValorGlosaGuia().Node()->SetValue("1");
    arquivo->Accept(*rule);
    EXPECT_TRUE(rule->Validated());
    EXPECT_THAT(Findings(rule->ValidationMessages()), IsEmpty());
    // Also by a single rule, which shares nothing with the visit before.
    const auto& rules = rule->Validations()[1]->Validations();
    const auto valores = std::ranges::find_if(
        rules, [](const auto& each) { return each->Name() == "tiss.monitoramento.loteguias.guia.valores"; });
    ASSERT_NE(valores, rules.end());
    const TGuiaMonitoramento guia = arquivo->Lote().GuiasMonitoramento().Get(0);
    guia.ValoresGuia().ValorGlosaGuia().Node()->SetValue("-1");
    guia.Accept(**valores);
    EXPECT_EQ(Findings((*valores)->ValidationMessages()).size(), 1U);
}

TEST(LoteMonitoramento, CorrectionsLeadToALotWithoutFindings) {
    const TEdits faults = {{"origemEventoAtencao=1", "origemEventoAtencao=4"},
                           {"identificacaoReembolso=00000000000000000000", "identificacaoReembolso=77"},
                           {"valorTotalInformado=100.00", "valorTotalInformado=1.00"},
                           {"valorPagoGuia=95.00", "valorPagoGuia=0"},
                           {"valorPagoFornecedores=2.00", "valorPagoFornecedores=2"},
                           {"valorPagoFornecedor=2.00", "valorPagoFornecedor=1234.5"},
                           {"valorTotalCoParticipacao=0.60", "valorTotalCoParticipacao=9.99"}};
    auto arquivo = ArquivoMonitoramento(Xml(std::string(kCabecalho) + " "),
                                        Xml(Edited(kGuia, faults)) +
                                            Xml(Edited(kGuia, {{"identificacaoReembolso=00000000000000000000",
                                                                "identificacaoReembolso=5"}})));
    std::vector<std::string> corrected;
    for (int step = 0; step < 20; ++step) {
        const TValidationMessages messages = Judge(arquivo);
        if (Findings(messages).empty())
            break;
        const auto fixable =
            std::ranges::find_if(messages, [](const auto& m) { return !m->Solvers().empty(); });
        ASSERT_NE(fixable, messages.end()) << (*messages.back()).Msg();
        const auto* message = dynamic_cast<const TLoteGuiasMonitoramentoValidationMessage*>(fixable->get());
        corrected.push_back(message->Campo());
        arquivo =
            std::dynamic_pointer_cast<IMonitoramento>(LoadTiss(message->Solvers().front()->SolvedXml()));
    }
    EXPECT_THAT(Findings(Judge(arquivo)), IsEmpty());
    EXPECT_THAT(corrected, ElementsAre("023", "024", "050", "059", "060", "084", "025"));
    const TGuiaMonitoramento guia = arquivo->Lote().GuiasMonitoramento().Get(0);
    EXPECT_EQ(guia.ValoresGuia().ValorPagoFornecedores().Text(), "1234.50");
    EXPECT_EQ(guia.NumeroGuiaPrestador().Text(), std::string(20, '0'));
}

} // namespace
} // namespace conferix
