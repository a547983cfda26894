#include "achados.h"

#include "platform/format_settings.h"
#include "support/support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix::testes {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::string_view kLote = "tiss.mensagem.loteguias.";

/// Names (without the common part) of the rules that found something, repetitions in a row left out.
std::vector<std::string> Spoken(const TValidation& rules) {
    std::vector<std::string> names;
    for (const auto& message : rules.ValidationMessages()) {
        const std::string name = message->Validation().Name.substr(kLote.size());
        if (names.empty() || names.back() != name)
            names.push_back(name);
    }
    return names;
}

std::string Repeated(int times, std::string_view text) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += fmt::format(" {}", text);
    return all;
}

TEST(LotRules, LimitsAndKinds) {
    const std::string one = "ok: Todas as guias do lote são do mesmo tipo.";
    const auto mixed = [](const char* counts) {
        return fmt::format(
            "erro: Um lote só pode conter guias de um mesmo tipo. Porém, foram encontradas tipos "
            "diferentes de guias dentro do lote ({}).",
            counts);
    };
    const std::string few = "ok: O lote não excede o limite máximo permitido de 100 guias.";
    const auto many = [](std::int64_t n) {
        return fmt::format(
            "erro: De acordo com o padrão TISS, um lote pode conter no máximo 100 guias. Porém, {} guias "
            "foram encontradas no XML.",
            TFormatSettings::Regional().Count(n));
    };
    const std::string some = "ok: O lote atende o limite mínimo exigido de 1 guia.";
    const struct {
        std::string Guides;
        std::vector<std::string> Expected;
    } cases[] = {
        {"",
         {"erro: Como o tipo da transação foi definida como sendo \"ENVIO_LOTE_GUIAS\", é necessário que o "
          "XML contenha "
          "um lote com pelo menos uma guia TISS. Porém, não foram localizadas guias TISS no conteúdo do XML.",
          few}},
        {Repeated(100, "guiaOdonto()"), {some, one, few}},
        {Repeated(101, "guiaOdonto()"), {some, one, many(101)}},
        {Repeated(1234, "guiaOdonto()"), {some, one, many(1234)}},
        {"guiaConsulta() guiaSP-SADT() guiaConsulta()", {some, mixed("2 de Consulta, 1 de SP-SADT"), few}},
        // The parity of the number of kinds decides.
        {"guiaHonorarios() guiaSP-SADT() guiaConsulta()", {some, one, few}},
        {"guiaHonorarios() guiaOdonto() guiaResumoInternacao() guiaSP-SADT()",
         {some, mixed("1 de SP-SADT, 1 de Resumo de Internação, 1 de Honorários, 1 de Odonto"), few}},
        {"guiaHonorarios() guiaOdonto() guiaResumoInternacao() guiaSP-SADT() guiaConsulta()",
         {some, one, few}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> found;
        const auto rules = Validado(*Mensagem("3.05.00", Xml("guiasTISS(" + c.Guides + ")")), "3.05.00");
        for (const auto& message : rules->ValidationMessages())
            if (message->Validation().Name.starts_with("tiss.mensagem.loteguias.lote"))
                found.push_back(Descrito(*message));
        EXPECT_THAT(found, ElementsAreArray(c.Expected)) << c.Guides.substr(0, 100);
    }
}

TEST(LotRules, ErrorsStandAtTheLotOrTheGuideConcerned) {
    const auto errorLine = [](const std::string& guides) {
        std::string xml = MensagemComLote("3.05.00", Xml("guiasTISS(" + guides + ")"));
        ReplaceAll(xml, "<guiaConsulta", "\n<guiaConsulta");
        ReplaceAll(xml, "<guiaOdonto", "\n<guiaOdonto");
        ReplaceAll(xml, "<ans:loteGuias", "\n\n\n<ans:loteGuias");
        const auto rules = Validado(*std::dynamic_pointer_cast<IMensagemTiss>(Carregado(xml)), "3.05.00");
        for (const auto& message : rules->ValidationMessages())
            if (message->MsgType() == TMessageType::mtError)
                return message->Line();
        return 0;
    };
    EXPECT_EQ(errorLine(""), 4);
    EXPECT_EQ(errorLine(Repeated(101, "guiaConsulta()")), 4 + 101);
    EXPECT_EQ(errorLine("guiaConsulta() guiaOdonto() guiaConsulta()"), 4 + 1);
}

TEST(LotRules, OtherTransactionsAreNoneOfTheirs) {
    std::string xml = MensagemComLote("3.05.00", "");
    ReplaceAll(xml, "ENVIO_LOTE_GUIAS", "SOLICITACAO_PROCEDIMENTOS");
    const auto rules = Validado(*std::dynamic_pointer_cast<IMensagemTiss>(Carregado(xml)), "3.05.00");
    EXPECT_THAT(rules->ValidationMessages(), IsEmpty());
    EXPECT_FALSE(rules->Validated());

    // A message without any lot has an empty one.
    ReplaceAll(xml, "SOLICITACAO_PROCEDIMENTOS", "ENVIO_LOTE_GUIAS");
    ReplaceAll(xml, "loteGuias", "loteAnexo");
    const auto empty = Validado(*std::dynamic_pointer_cast<IMensagemTiss>(Carregado(xml)), "3.05.00");
    EXPECT_THAT(Spoken(*empty), ElementsAre("lotesemguias", "lotecommaisdecemguias"));
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
        const std::string guide = std::string_view(c.Version) < "3" ? GuiaV2(c.Element) : GuiaV3(c.Element);
        const auto file = Mensagem(c.Version, Xml(Lote(c.Version, guide)));
        const auto rules = Validado(*file, c.Version, [](TTussWriter& writer) {
            writer.Insert(TTuss22{{"1", std::nullopt, std::nullopt}});
        });
        std::vector<std::string> expected = {"lotesemguias", "lotecomguiasdetiposdiferentes",
                                             "lotecommaisdecemguias"};
        for (const TNames& names : c.Expected)
            for (const std::string& name : names)
                expected.push_back(std::string(c.Kind) + "." + name);
        EXPECT_THAT(Spoken(*rules), ElementsAreArray(expected)) << c.Version << " " << c.Element;
        for (const auto& message : rules->ValidationMessages())
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
    const auto file = Mensagem("3.05.00", Xml("guiasTISS(" + guide(2) + guide(1) + ")"));
    const auto rules = Validado(*file, "3.05.00");
    const auto found = [&] {
        std::vector<std::string> list;
        for (const auto& message : rules->ValidationMessages())
            if (const auto* guia = dynamic_cast<const TLoteGuiasValidationMessage*>(message.get()))
                list.push_back(guia->NumeroGuia() + " " + guia->Validation().Name.substr(kLote.size()));
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
    const auto empty = Mensagem("3.05.00", Xml("guiasTISS(guiaOdonto())"));
    empty->Accept(*rules);
    EXPECT_THAT(found(), IsEmpty());
}

TEST(GuideRules, StandUnderTheNameOfTheirParent) {
    const auto rules = MakeValidation<TLoteGuiasValidation>("4.01.00", TTussConnection::InMemory());
    std::vector<const TValidation*> open = {rules.get()};
    std::size_t count = 0;
    while (!open.empty()) {
        const TValidation* parent = open.back();
        open.pop_back();
        for (const auto& child : parent->Validations()) {
            ++count;
            const std::string_view name = child->Name();
            const std::size_t point = name.rfind('.');
            EXPECT_EQ(name.substr(0, point), parent->Name()) << name;
            EXPECT_FALSE(child->Description().empty()) << name;
            // Only what judges the lot, or hands out its guides, cannot be switched off.
            EXPECT_EQ(child->Required(), parent == rules.get()) << name;
            open.push_back(child.get());
        }
    }
    EXPECT_EQ(count, 63U);
}

} // namespace
} // namespace conferix::testes
