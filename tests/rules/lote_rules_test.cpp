#include "findings.h"

#include "data/tuss_writer.h"
#include "support/case_file.h"
#include "support/support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix::tests {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::string_view kLote = "tiss.mensagem.loteguias";

/// Names (without the common part) of the rules that found something, repetitions in a row left out.
std::vector<std::string> Spoken(const TValidationMessages& messages) {
    std::vector<std::string> names;
    for (const auto& message : messages) {
        const std::string name = message->Validation().Name.substr(kLote.size() + 1);
        if (names.empty() || names.back() != name)
            names.push_back(name);
    }
    return names;
}

TValidationMessages Judged(const std::string& xml) {
    return Mensagens(kLote, *Loaded(xml), TTussConnection::InMemory());
}

std::string Repeated(int times, std::string_view text) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += fmt::format(" {}", text);
    return all;
}

TEST(LotRules, FindWhatTheCasesSay) {
    for (const TCase& c : Cases("rules/lotes.casos")) {
        const auto& [guides, times] = c.Inputs.front();
        std::vector<std::string> found;
        for (const auto& message : Judged(LoteComGuias("3.05.00", Repeated(std::stoi(times), guides))))
            if (message->Validation().Name.starts_with("tiss.mensagem.loteguias.lote"))
                found.push_back(Descrito(*message));
        ExpectLines(c, found);
    }
}

TEST(LotRules, ErrorsStandAtTheLotOrTheGuideConcerned) {
    const auto errorLine = [](const std::string& guides) {
        std::string xml = LoteComGuias("3.05.00", guides);
        ReplaceAll(xml, "<guiaConsulta", "\n<guiaConsulta");
        ReplaceAll(xml, "<guiaOdonto", "\n<guiaOdonto");
        ReplaceAll(xml, "<ans:loteGuias", "\n\n\n<ans:loteGuias");
        for (const auto& message : Judged(xml))
            if (message->MsgType() == TMessageType::mtError)
                return message->Line();
        return 0;
    };
    EXPECT_EQ(errorLine(""), 4);
    EXPECT_EQ(errorLine(Repeated(101, "guiaConsulta()")), 4 + 101);
    EXPECT_EQ(errorLine("guiaConsulta() guiaOdonto() guiaConsulta()"), 4 + 1);
}

TEST(LotRules, OtherTransactionsAreNoneOfTheirs) {
    std::string xml = LotText("3.05.00", "");
    ReplaceAll(xml, "ENVIO_LOTE_GUIAS", "SOLICITACAO_PROCEDIMENTOS");
    const auto rules = Julgado(kLote, *Loaded(xml), TTussConnection::InMemory());
    EXPECT_THAT(rules->ValidationMessages(), IsEmpty());
    EXPECT_FALSE(rules->Validated());

    // A message without any lot has an empty one.
    ReplaceAll(xml, "SOLICITACAO_PROCEDIMENTOS", "ENVIO_LOTE_GUIAS");
    ReplaceAll(xml, "loteGuias", "loteAnexo");
    EXPECT_THAT(Spoken(Judged(xml)), ElementsAre("lotesemguias", "lotecommaisdecemguias"));
}

// A guide of each kind with one procedure, one expense and totals, as the versions write them.
constexpr std::string_view kValores = "quantidadeExecutada=1 reducaoAcrescimo=1 valorUnitario=2 valorTotal=2";

std::string GuiaV3(const std::string& element) {
    const std::string procedure =
        fmt::format("sequencialItem=1 dataExecucao=2024-01-01 procedimento(codigoTabela=22 "
                    "codigoProcedimento=1) {}",
                    kValores);
    const std::string expenses = fmt::format("outrasDespesas(despesa(sequencialItem=2 codigoDespesa=07 "
                                             "servicosExecutados(dataExecucao=2024-01-01 codigoTabela=22 "
                                             "codigoProcedimento=1 {})))",
                                             kValores);
    return fmt::format("{0}(numeroGuiaPrestador=1 dadosAtendimento(dataAtendimento=2024-01-01 "
                       "procedimento(codigoTabela=22 codigoProcedimento=1 valorProcedimento=2)) "
                       "procedimentosExecutados(procedimentoExecutado({1})) "
                       "procedimentosRealizados(procedimentoRealizado({1})) {2} "
                       "valorTotal(valorProcedimentos=2 valorTotalGeral=4) valorTotalHonorarios=2)",
                       element, procedure, expenses);
}

std::string GuiaV2(const std::string& element) {
    const std::string item = "data=2024-01-01 procedimento(tipoTabela=22 codigo=1) quantidadeRealizada=1 "
                             "reducaoAcrescimo=1 valor=2 valorTotal=2";
    return fmt::format(
        "{0}(procedimentosRealizados(procedimentos({1})) "
        "procedimentosExamesRealizados(procedimentoRealizado({1}) totalGeralHonorario=2) "
        "outrasDespesas(despesa(identificadorDespesa(tipoTabela=22 codigo=1) tipoDespesa=6 "
        "dataRealizacao=2024-01-01 quantidade=1 reducaoAcrescimo=1 valorUnitario=2 valorTotal=2)) "
        "valorTotal(servicosExecutados=2 taxas=9 totalGeral=9))",
        element, item);
}

TEST(GuideRules, EachKindOfGuideMeetsItsRulesInOrder) {
    const std::vector<std::string> procedure = {"procedimento.codigo", "procedimento.quantidade",
                                                "procedimento.fator", "procedimento.valorunitario",
                                                "procedimento.valortotal"};
    const std::vector<std::string> expense = {"despesa.codigo", "despesa.quantidade", "despesa.fator",
                                              "despesa.valorunitario", "despesa.valortotal"};
    const std::vector<std::string> categories = {"valortotal.procedimentos", "valortotal.diarias",
                                                 "valortotal.taxasalugueis", "valortotal.materiais",
                                                 "valortotal.medicamentos",  "valortotal.opme",
                                                 "valortotal.gases",         "valortotal.totalgeral"};
    using TNames = std::vector<std::string>;
    const struct {
        const char* Version;
        const char* Element;
        const char* Kind;
        std::vector<TNames> Expected;
    } cases[] = {
        {"4.01.00", "guiaConsulta", "consulta", {{"procedimento.codigo", "procedimento.valor"}}},
        {"4.01.00", "guiaSP-SADT", "spsadt", {procedure, expense, {"sequencial"}, categories}},
        {"3.04.00", "guiaResumoInternacao", "internacao", {procedure, expense, {"sequencial"}, categories}},
        {"3.04.00", "guiaHonorarios", "honorarios", {procedure, {"sequencial", "valortotal"}}},
        {"3.04.00", "guiaOdonto", "odonto", {}},
        // Sequence numbers came with 3.04.00, totals by category with 3.00.00.
        {"3.03.03", "guiaSP-SADT", "spsadt", {procedure, expense, categories}},
        {"3.00.00", "guiaResumoInternacao", "internacao", {procedure, expense, categories}},
        {"3.00.00", "guiaHonorarioIndividual", "honorarios", {procedure, {"valortotal"}}},
        {"2.02.03", "guiaSP_SADT", "spsadt", {procedure, expense, {"valortotal.procedimentos"}}},
        {"2.02.03", "guiaResumoInternacao", "internacao", {procedure, expense, {"valortotal.procedimentos"}}},
        {"2.02.03", "guiaHonorarioIndividual", "honorarios", {procedure}},
    };
    for (const auto& c : cases) {
        const auto tuss = TTussConnection::InMemory([](TTussWriter& writer) {
            writer.Insert(TTuss22{{"1", std::nullopt, std::nullopt}});
        });
        const bool old = std::string_view(c.Version) < "3";
        const std::string guide = old ? GuiaV2(c.Element) : GuiaV3(c.Element);
        const TValidationMessages messages = Mensagens(kLote, *Loaded(LoteComGuias(c.Version, guide)), tuss);
        std::vector<std::string> expected = {"lotesemguias", "lotecomguiasdetiposdiferentes",
                                             "lotecommaisdecemguias"};
        for (const TNames& names : c.Expected)
            for (const std::string& name : names)
                expected.push_back(std::string(c.Kind) + "." + name);
        EXPECT_THAT(Spoken(messages), ElementsAreArray(expected)) << c.Version << " " << c.Element;
        for (const auto& message : messages)
            EXPECT_EQ(message->MsgType(), TMessageType::mtSuccess) << Descrito(*message);
    }
}

TEST(GuideRules, EachRuleMeetsTheGuidesInLotOrder) {
    const auto guide = [](int number) {
        return fmt::format(
            "guiaHonorarios(cabecalhoGuia(numeroGuiaPrestador={}) "
            "procedimentosRealizados(procedimentoRealizado(quantidadeExecutada=0 reducaoAcrescimo=0)))",
            number);
    };
    const auto file = Loaded(LoteComGuias("3.05.00", guide(2) + guide(1)));
    const auto rules = Julgado(kLote, *file, TTussConnection::InMemory());
    const auto found = [&] {
        std::vector<std::string> list;
        for (const auto& message : rules->ValidationMessages())
            if (!message->NumeroGuia().empty())
                list.push_back(message->NumeroGuia() + " " +
                               message->Validation().Name.substr(kLote.size() + 1));
        return list;
    };
    const std::vector<std::string> expected = {
        "2 honorarios.procedimento.quantidade",
        "2 honorarios.procedimento.fator",
        "1 honorarios.procedimento.quantidade",
        "1 honorarios.procedimento.fator",
        "2 honorarios.sequencial",
        "1 honorarios.sequencial",
        "2 honorarios.valortotal",
        "1 honorarios.valortotal",
    };
    EXPECT_EQ(found(), expected);
    // A second visit finds the same and keeps nothing of the first.
    file->Accept(*rules);
    EXPECT_EQ(found(), expected);
    const auto empty = Loaded(LoteComGuias("3.05.00", "guiaOdonto()"));
    empty->Accept(*rules);
    EXPECT_THAT(found(), IsEmpty());
}

} // namespace
} // namespace conferix::tests
