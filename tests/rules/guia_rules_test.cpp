#include "achados.h"

#include "support/support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace conferix::testes {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

enum class TItemKind { Procedimento, Despesa };

/// An SP/SADT guide with one item of a kind.
std::string UmItem(TItemKind kind, std::string_view valores) {
    const char* notation = kind == TItemKind::Procedimento
                               ? "procedimentosExecutados(procedimentoExecutado({}))"
                               : "outrasDespesas(despesa(codigoDespesa=07 servicosExecutados({})))";
    return SpSadt(fmt::format(fmt::runtime(notation), valores));
}

std::string RuleOf(TItemKind kind, std::string_view check) {
    return fmt::format("spsadt.{}.{}", kind == TItemKind::Procedimento ? "procedimento" : "despesa", check);
}

TEST(ItemRules, JudgeEachValueOfProceduresAndExpenses) {
    const auto P = TItemKind::Procedimento;
    const auto D = TItemKind::Despesa;
    const std::string fatorP =
        "erro: O valor do fator de redução ou acréscimo sobre o procedimento deve ser maior que "
        "zero. Caso não haja redução ou acréscimo o fator deverá ser igual a 1,00. Valor "
        "encontrado: ";
    const std::string fatorD =
        "erro: O valor do fator de redução ou acréscimo sobre a despesa deve ser maior que zero. "
        "Caso não haja redução ou acréscimo o fator deverá ser igual a 1,00. Valor encontrado: ";
    const std::string comFatorP = "erro: O valor total do procedimento deve considerar a quantidade de "
                                  "procedimentos realizados, o valor unitário "
                                  "e o fator de redução ou acréscimo. Caso não haja redução ou acréscimo "
                                  "sobre o valor do procedimento, o fator "
                                  "deverá ser igual a 1.00. O valor encontrado foi ";
    const std::string semFatorP = "erro: O valor total do procedimento deve considerar a quantidade de "
                                  "procedimentos realizados, o valor unitário "
                                  "e o fator de redução ou acréscimo. O valor encontrado foi ";
    const std::string comFatorD = "erro: O valor total do item da despesa deve considerar a quantidade de "
                                  "itens, o valor unitário e o fator de "
                                  "redução ou acréscimo. Caso não haja redução ou acréscimo sobre o valor do "
                                  "item de despesa, o fator deverá ser "
                                  "igual a 1.00. O valor encontrado foi ";
    const std::string semFatorD =
        "erro: O valor total do item da despesa deve considerar a quantidade de itens, o valor "
        "unitário e o fator de redução ou acréscimo. O valor encontrado foi ";
    const auto wrong = [](const std::string& text, const char* found, const char* expected) {
        return fmt::format("{0}{1}, porém o esperado é {2}. -> Alterar o valor para {2}", text, found,
                           expected);
    };
    const auto decimalsP = [&](const char* found, const char* expected) {
        return wrong(
            "erro: O valor unitário do procedimento deve ter apenas duas casas decimais. O valor encontrado "
            "foi ",
            found, expected);
    };
    const struct {
        TItemKind Kind;
        const char* Check;
        const char* Values;
        std::vector<std::string> Expected;
    } cases[] = {
        {P,
         "quantidade",
         "quantidadeExecutada=1",
         {"ok: A quantidade informada de procedimentos está válida."}},
        {P,
         "quantidade",
         "quantidadeExecutada=0.0001",
         {"ok: A quantidade informada de procedimentos está válida."}},
        {P,
         "quantidade",
         "quantidadeExecutada=00",
         {"erro: A quantidade informada de procedimentos deve ser maior que zero. Valor encontrado: 00."}},
        {P,
         "quantidade",
         "quantidadeExecutada=-1.50",
         {"erro: A quantidade informada de procedimentos deve ser maior que zero. Valor encontrado: -1.50."}},
        {P, "quantidade", "quantidadeExecutada=dois", {}},
        {P, "quantidade", "quantidadeExecutada=", {}},
        {P, "quantidade", "valorUnitario=1", {}},
        {D,
         "quantidade",
         "quantidadeExecutada=2",
         {"ok: A quantidade informada de itens de despesa está válida."}},
        {D,
         "quantidade",
         "quantidadeExecutada=0",
         {"erro: A quantidade informada de itens de despesa deve ser maior que zero. Valor encontrado: 0."}},

        {P,
         "fator",
         "reducaoAcrescimo=0.01",
         {"ok: O valor do fator de redução ou acréscimo do procedimento está válido."}},
        {P, "fator", "reducaoAcrescimo=0.00", {fatorP + "0.00."}},
        {P, "fator", "reducaoAcrescimo=-1", {fatorP + "-1."}},
        {P, "fator", "quantidadeExecutada=1", {}},
        {D,
         "fator",
         "reducaoAcrescimo=1",
         {"ok: O valor do fator de redução ou acréscimo da despesa está válido."}},
        {D, "fator", "reducaoAcrescimo=0", {fatorD + "0."}},

        {P, "valorunitario", "valorUnitario=10.1", {"ok: O valor unitário do procedimento está válido."}},
        {P, "valorunitario", "valorUnitario=0", {"ok: O valor unitário do procedimento está válido."}},
        {P,
         "valorunitario",
         "valorUnitario=10.100000",
         {"ok: O valor unitário do procedimento está válido."}},
        {P, "valorunitario", "valorUnitario=10.123", {decimalsP("10.123", "10.12")}},
        {P, "valorunitario", "valorUnitario=0.125", {decimalsP("0.125", "0.13")}},
        {P, "valorunitario", "valorUnitario=1.005", {decimalsP("1.005", "1.01")}},
        {P,
         "valorunitario",
         "valorUnitario=-5",
         {"erro: O valor unitário do procedimento deve ser maior ou igual a zero. Valor encontrado: -5."}},
        {P,
         "valorunitario",
         "valorUnitario=-0.125",
         {"erro: O valor unitário do procedimento deve ser maior ou igual a zero. Valor encontrado: -0.125.",
          decimalsP("-0.125", "-0.13")}},
        {P, "valorunitario", "valorTotal=1", {}},
        {D, "valorunitario", "valorUnitario=3.33", {"ok: O valor unitário da despesa está válido."}},
        {D,
         "valorunitario",
         "valorUnitario=-3.331",
         {"erro: O valor unitário da despesa deve ser maior ou igual a zero. Valor encontrado: -3.331.",
          wrong("erro: O valor unitário da despesa deve ter apenas duas casas decimais. O valor encontrado "
                "foi ",
                "-3.331", "-3.33")}},

        {P,
         "valortotal",
         "quantidadeExecutada=2 valorUnitario=10.005 valorTotal=20.01",
         {"ok: O valor total do procedimento está válido."}},
        {P,
         "valortotal",
         "quantidadeExecutada=2 valorUnitario=10.005 valorTotal=20.00",
         {wrong(semFatorP, "20.00", "20.01")}},
        // Half a cent goes away from zero, also where the binary value lies just below.
        {P,
         "valortotal",
         "quantidadeExecutada=1 valorUnitario=1.005 valorTotal=1.01",
         {"ok: O valor total do procedimento está válido."}},
        {P,
         "valortotal",
         "quantidadeExecutada=3 reducaoAcrescimo=1.15 valorUnitario=0.33 valorTotal=1.14",
         {"ok: O valor total do procedimento está válido."}},
        {P,
         "valortotal",
         "quantidadeExecutada=3 reducaoAcrescimo=1.00 valorUnitario=1234.5 valorTotal=3703.49",
         {wrong(comFatorP, "3703.49", "3703.50")}},
        {P,
         "valortotal",
         "quantidadeExecutada=1 reducaoAcrescimo=0.5 valorUnitario=100 valorTotal=100.000",
         {wrong(comFatorP, "100.000", "50.00")}},
        {P,
         "valortotal",
         "quantidadeExecutada=1 valorUnitario=1 valorTotal=-1.00",
         {"erro: O valor total do procedimento deve ser maior ou igual a zero. Valor informado: -1.00.",
          wrong(semFatorP, "-1.00", "1.00")}},
        {P,
         "valortotal",
         "quantidadeExecutada=1 valorUnitario=-2 valorTotal=-2",
         {"erro: O valor total do procedimento deve ser maior ou igual a zero. Valor informado: -2."}},
        // Quantity zero is another rule's fault; the total is judged all the same.
        {P,
         "valortotal",
         "quantidadeExecutada=0 valorUnitario=10 valorTotal=10.00",
         {wrong(semFatorP, "10.00", "0.00")}},
        {P, "valortotal", "valorUnitario=10 valorTotal=99", {}},
        {P, "valortotal", "quantidadeExecutada=1 valorTotal=99", {}},
        {P, "valortotal", "quantidadeExecutada=1 valorUnitario=10", {}},
        {P, "valortotal", "quantidadeExecutada=1 valorUnitario=10 valorTotal=dez", {}},
        {D,
         "valortotal",
         "quantidadeExecutada=2.5 reducaoAcrescimo=1 valorUnitario=4 valorTotal=10",
         {"ok: O valor total do item da despesa está válido."}},
        {D,
         "valortotal",
         "quantidadeExecutada=2 reducaoAcrescimo=1 valorUnitario=4 valorTotal=8.01",
         {wrong(comFatorD, "8.01", "8.00")}},
        {D,
         "valortotal",
         "quantidadeExecutada=2 valorUnitario=4 valorTotal=-8.01",
         {"erro: O valor total da despesa deve ser maior ou igual a zero. Valor informado: -8.01.",
          wrong(semFatorD, "-8.01", "8.00")}},
    };
    for (const auto& c : cases)
        EXPECT_THAT(Achados("3.05.00", UmItem(c.Kind, c.Values), RuleOf(c.Kind, c.Check)),
                    ElementsAreArray(c.Expected))
            << c.Check << " " << c.Values;
}

TEST(ItemRules, AGuideWithoutItemsIsToldSoByEachRule) {
    const std::string empty = SpSadt("procedimentosExecutados() valorTotal(valorTotalGeral=0)");
    for (const char* check : {"codigo", "quantidade", "fator", "valorunitario", "valortotal"}) {
        EXPECT_THAT(Achados("3.05.00", empty, RuleOf(TItemKind::Procedimento, check)),
                    ElementsAre("ok: Não há procedimentos na guia."));
        EXPECT_THAT(Achados("3.05.00", empty, RuleOf(TItemKind::Despesa, check)),
                    ElementsAre("ok: Não há despesas na guia."));
    }
}

TEST(ItemRules, MessagesNameGuideAndPlaceOfTheElement) {
    std::string xml = MensagemComLote(
        "3.05.00",
        Xml("guiasTISS(" +
            UmItem(TItemKind::Procedimento, "quantidadeExecutada=0 valorUnitario=2 valorTotal=3") + ")"));
    ReplaceAll(xml, "<valorTotal>", "\n  <valorTotal>");
    const auto file = std::dynamic_pointer_cast<IMensagemTiss>(Carregado(xml));
    const auto rules = Validado(*file, "3.05.00");
    const TXmlNode* total = file->Xml()->Root().FirstDescendant("valorTotal");
    bool met = false;
    for (const auto& message : rules->ValidationMessages()) {
        if (message->Validation().Name != "tiss.mensagem.loteguias.spsadt.procedimento.valortotal")
            continue;
        met = true;
        EXPECT_EQ(message->Line(), 2);
        EXPECT_EQ(message->LinePos(), 3);
        EXPECT_EQ(message->FilePos(), total->FilePos());
        EXPECT_EQ(message->SrcText(), "3");
        EXPECT_EQ(message->Msg().rfind("[Linha: 2] [Guia: 7] O valor total", 0), 0U) << message->Msg();
    }
    EXPECT_TRUE(met);
}

TEST(ConsultationRules, JudgeTheValueOfTheOneProcedure) {
    const std::string decimals =
        "erro: O valor do procedimento deve ter apenas duas casas decimais. O valor encontrado "
        "foi ";
    const struct {
        const char* Value;
        std::vector<std::string> Expected;
    } cases[] = {
        {"valorProcedimento=180.00", {"ok: O valor do procedimento está válido."}},
        {"valorProcedimento=180.005",
         {decimals + "180.005, porém o esperado é 180.01. -> Alterar o valor para 180.01"}},
        {"valorProcedimento=-1",
         {"erro: O valor do procedimento deve ser maior ou igual a zero. Valor informado: -1."}},
        {"valorProcedimento=-0.001",
         {"erro: O valor do procedimento deve ser maior ou igual a zero. Valor informado: -0.001.",
          decimals + "-0.001, porém o esperado é 0.00. -> Alterar o valor para 0.00"}},
        {"codigoTabela=22", {}},
    };
    for (const auto& c : cases)
        EXPECT_THAT(Achados("4.01.00",
                            fmt::format("guiaConsulta(dadosAtendimento(procedimento({})))", c.Value),
                            "consulta.procedimento.valor"),
                    ElementsAreArray(c.Expected))
            << c.Value;
    EXPECT_THAT(Achados("4.01.00", "guiaConsulta()", "consulta.procedimento.valor"), IsEmpty());
}

void FillCodes(TTussWriter& writer) {
    for (const char* table : {"19", "20", "22"})
        writer.Insert(table, {"111", Dia(2020, 1, 1), std::nullopt});
    writer.Insert(TTussInativado{"22", "222", Dia(2020, 12, 31)});
}

TEST(CodeRules, JudgeCodesOfTheTerminologyTables) {
    const std::string inactivated = "O termo de código 222 da tabela 22 da TUSS foi inativado em 31/12/2020.";
    const std::string notFound =
        "O termo de código 333 da tabela 22 da TUSS não foi localizado no componente de "
        "representação de conceitos em saúde do padrão TISS.";
    const std::string valid = "ok: O código do procedimento está válido. ";
    const std::string invalid = "erro: O código do procedimento está inválido. ";
    const struct {
        const char* Date;
        const char* Table;
        const char* Code;
        std::vector<std::string> Expected;
    } cases[] = {
        {"2020-01-01", "22", "111", {valid}},
        {"2020-01-01-03:00", "22", "111", {valid}},
        {"2019-12-31",
         "22",
         "111",
         {invalid + "O termo de código 111 da tabela 22 da TUSS entrará em vigência somente em 01/01/2020."}},
        {"2020-12-31", "22", "222", {valid}},
        {"2021-01-01", "22", "222", {invalid + inactivated}},
        {"2021-01-01", "22", "333", {invalid + notFound}},
        {"2021-01-01", "20", "111", {valid}},
        {"2021-01-01", "98", "333", {}},
        {"2021-01-01", "00", "333", {}},
        {"2021-01-01", "63", "333", {}},
        {"31/12/2020", "22", "333", {}},
        {"2021-01-01",
         "18",
         "333",
         {"aviso: A tabela 18 da TUSS não está instalada; os códigos dessa tabela não foram verificados. "
          "Importe a publicação da ANS: conferix terminologia importar ARQUIVO."}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(fmt::format("{} {} {}", c.Date, c.Table, c.Code));
        const std::string codes = fmt::format("codigoTabela={} codigoProcedimento={}", c.Table, c.Code);
        EXPECT_THAT(Achados("3.05.00",
                            UmItem(TItemKind::Procedimento,
                                   fmt::format("dataExecucao={} procedimento({})", c.Date, codes)),
                            "spsadt.procedimento.codigo", FillCodes),
                    ElementsAreArray(c.Expected));
        EXPECT_THAT(Achados("3.05.00",
                            fmt::format("guiaConsulta(dadosAtendimento(dataAtendimento={} procedimento({})))",
                                        c.Date, codes),
                            "consulta.procedimento.codigo", FillCodes),
                    ElementsAreArray(c.Expected));
        std::vector<std::string> expense = c.Expected;
        for (std::string& text : expense) {
            ReplaceAll(text, "do procedimento está válido. ", "da despesa está válido.");
            ReplaceAll(text, "do procedimento está inválido", "da despesa está inválido");
        }
        EXPECT_THAT(Achados("3.05.00",
                            UmItem(TItemKind::Despesa, fmt::format("dataExecucao={} {}", c.Date, codes)),
                            "spsadt.despesa.codigo", FillCodes),
                    ElementsAreArray(expense));
    }
    for (const char* incomplete :
         {"procedimento(codigoTabela=22 codigoProcedimento=333)", "dataExecucao=2021-01-01",
          "dataExecucao=2021-01-01 procedimento(codigoTabela=22)",
          "dataExecucao=2021-01-01 procedimento(codigoProcedimento=333)"})
        EXPECT_THAT(
            Achados("3.05.00", UmItem(TItemKind::Procedimento, incomplete), "procedimento.codigo", FillCodes),
            IsEmpty())
            << incomplete;
}

TEST(CodeRules, WarnOnceOfATableThatIsNotInstalled) {
    const std::string item = "procedimentoExecutado(dataExecucao=2024-01-01 procedimento(codigoTabela=22 "
                             "codigoProcedimento=1))";
    const std::string guide = SpSadt(fmt::format("procedimentosExecutados({0} {0})", item));
    EXPECT_THAT(
        Achados("3.05.00", guide + " " + guide, "codigo"),
        ElementsAre("aviso: A tabela 22 da TUSS não está instalada; os códigos dessa tabela não foram "
                    "verificados. Importe a publicação da ANS: conferix terminologia importar ARQUIVO.",
                    "ok: Não há despesas na guia.", "ok: Não há despesas na guia."));
}

TEST(CodeRules, NeedTheTerminologyOnlyWhereACodeIsJudged) {
    const auto visit = [](const std::string& guide) {
        const auto rules = MakeValidation<TLoteGuiasValidation>("3.05.00", nullptr);
        Mensagem("3.05.00", Xml("guiasTISS(" + guide + ")"))->Accept(*rules);
    };
    EXPECT_NO_THROW(visit(UmItem(TItemKind::Procedimento, "quantidadeExecutada=1")));
    try {
        visit(UmItem(TItemKind::Procedimento,
                     "dataExecucao=2024-01-01 procedimento(codigoTabela=22 codigoProcedimento=1)"));
        FAIL() << "sem terminologia não há o que julgar";
    } catch (const EManagerNotDefined& error) {
        EXPECT_STREQ(error.what(), "Manager not defined.");
    }
}

/// A guide with one expense of each of the kinds and totals that are given.
std::string Despesas(std::initializer_list<std::pair<const char*, const char*>> despesas,
                     std::string_view totais) {
    std::string itens;
    for (const auto& [codigo, total] : despesas)
        itens += fmt::format(" despesa(codigoDespesa={} servicosExecutados(valorTotal={}))", codigo, total);
    return SpSadt(fmt::format("outrasDespesas({}) valorTotal({})", itens, totais));
}

TEST(TotalizerRules, CompareTheDeclaredTotalOfEachCategoryWithItsItems) {
    const struct {
        const char* Rule;
        const char* Element;
        const char* Name; ///< in the texts
        const char* Sum;  ///< of one expense of every code, 2^n cents each
    } cases[] = {
        {"diarias", "valorDiarias", "diárias", "1.44"},
        {"taxasalugueis", "valorTaxasAlugueis", "taxas/aluguéis", "7.04"},
        {"materiais", "valorMateriais", "materiais", "0.36"},
        {"medicamentos", "valorMedicamentos", "medicamentos", "0.18"},
        {"opme", "valorOPME", "OPME", "10.24"},
        {"gases", "valorGasesMedicinais", "gases medicinais", "0.09"},
    };
    const auto guide = [](std::string_view totals) {
        return Despesas({{"01", "0.01"},
                         {"02", "0.02"},
                         {"03", "0.04"},
                         {"1", "0.08"},
                         {"2", "0.16"},
                         {"3", "0.32"},
                         {"04", "99"},
                         {"4", "0.64"},
                         {"05", "1.28"},
                         {"5", "0.16"},
                         {"06", "99"},
                         {"6", "1.28"},
                         {"07", "5.12"},
                         {"7", "99"},
                         {"08", "10.24"},
                         {"8", "99"},
                         {"09", "99"}},
                        totals);
    };
    for (const auto& c : cases) {
        const std::string rule = std::string("spsadt.valortotal.") + c.Rule;
        EXPECT_THAT(Achados("3.00.00", guide(""), rule),
                    ElementsAre(fmt::format("ok: Não há valor total de {} informado na guia.", c.Name)));
        EXPECT_THAT(
            Achados("3.00.00", guide(fmt::format("{}={}0", c.Element, c.Sum)), rule),
            ElementsAre(fmt::format("ok: O valor total de {} informado na guia está correto.", c.Name)));
        EXPECT_THAT(Achados("3.00.00", guide(fmt::format("{}=1234.5", c.Element)), rule),
                    ElementsAre(fmt::format(
                        "erro: O valor total de {0} deve ser igual a soma do valor das despesas com "
                        "{0}. O valor 1234.50 foi encontrado, porém o esperado é {1}. -> Alterar o "
                        "valor para {1}",
                        c.Name, c.Sum)));
    }
    // All of them: what the accessors' own sums leave out ("6") is in.
    EXPECT_THAT(
        Achados("3.00.00", guide("valorTotalGeral=0"), "valortotal.totalgeral"),
        ElementsAre(
            "erro: O valor total geral deve ser igual a soma do valor dos procedimentos/despesas. O valor "
            "0.00 foi encontrado, porém o esperado é 19.35. -> Alterar o valor para 19.35"));
}

TEST(TotalizerRules, CompareProceduresFeesAndTheGeneralTotal) {
    const std::string items =
        "(procedimentoExecutado(valorTotal=33.333) procedimentoExecutado(valorTotal=33.333) "
        "procedimentoExecutado(quantidadeExecutada=1) procedimentoExecutado(valorTotal=33.339))";
    const auto spSadt = [&](std::string_view totals) {
        return SpSadt(fmt::format("procedimentosExecutados{} outrasDespesas(despesa(codigoDespesa=07 "
                                  "servicosExecutados(valorTotal=0.10))) valorTotal({})",
                                  items, totals));
    };
    const std::string procedures = "erro: O valor total de procedimentos deve ser igual a soma do valor dos "
                                   "procedimentos da guia. O valor ";
    const std::string fees =
        "erro: O valor total de honorários deve ser igual a soma do valor dos procedimentos da "
        "guia. O valor ";
    const struct {
        const char* Version;
        std::string Guide;
        const char* Rule;
        std::vector<std::string> Expected;
    } cases[] = {
        // Rounded once, after the sum.
        {"3.05.00",
         spSadt("valorProcedimentos=100.01"),
         "valortotal.procedimentos",
         {"ok: O valor total de procedimentos informado na guia está correto."}},
        {"3.05.00",
         spSadt("valorProcedimentos=-100"),
         "valortotal.procedimentos",
         {procedures + "-100.00 foi encontrado, porém o esperado é 100.01. -> Alterar o valor para 100.01"}},
        // A sum of what is no number is told, but not written.
        {"3.05.00",
         SpSadt("procedimentosExecutados(procedimentoExecutado(valorTotal=x) "
                "procedimentoExecutado(valorTotal=1)) "
                "valorTotal(valorProcedimentos=2)"),
         "valortotal.procedimentos",
         {procedures + "2.00 foi encontrado, porém o esperado é 1.00."}},
        {"3.05.00",
         spSadt(""),
         "valortotal.procedimentos",
         {"ok: Não há valor total de procedimentos informado na guia."}},
        {"3.05.00",
         spSadt("valorTotalGeral=100.11"),
         "valortotal.totalgeral",
         {"ok: O valor total geral informado na guia está correto."}},
        {"3.05.00", spSadt(""), "valortotal.totalgeral", {}},
        {"3.05.00",
         SpSadt("valorTotal(valorTotalGeral=0)"),
         "valortotal.totalgeral",
         {"ok: O valor total geral informado na guia está correto."}},
        {"3.05.00",
         SpSadt("valorTotal(valorProcedimentos=0.01)"),
         "valortotal.procedimentos",
         {procedures + "0.01 foi encontrado, porém o esperado é 0.00. -> Alterar o valor para 0.00"}},
        {"3.05.00",
         "guiaHonorarios(procedimentosRealizados(procedimentoRealizado(valorTotal=5)) "
         "valorTotalHonorarios=5)",
         "honorarios.valortotal",
         {"ok: O valor total de honorários informado na guia está correto."}},
        {"3.05.00",
         "guiaHonorarios(procedimentosRealizados(procedimentoRealizado(valorTotal=5)))",
         "honorarios.valortotal",
         {"ok: Não há valor total de honorários informado na guia."}},
        {"3.05.00",
         "guiaHonorarios(procedimentosRealizados(procedimentoRealizado(valorTotal=5)) "
         "valorTotalHonorarios=4)",
         "honorarios.valortotal",
         {fees + "4.00 foi encontrado, porém o esperado é 5.00. -> Alterar o valor para 5.00"}},
        // In 2.x the totals of procedures are judged, the others are not.
        {"2.02.03",
         "guiaSP_SADT(procedimentosRealizados(procedimentos(valorTotal=5)) valorTotal(servicosExecutados=4 "
         "diarias=9 totalGeral=1))",
         "valortotal.procedimentos",
         {procedures + "4.00 foi encontrado, porém o esperado é 5.00. -> Alterar o valor para 5.00"}},
    };
    for (const auto& c : cases)
        EXPECT_THAT(Achados(c.Version, c.Guide, c.Rule), ElementsAreArray(c.Expected)) << c.Guide;
}

TEST(SequenceRule, EveryRepetitionPointsAtTheFirstUser) {
    const std::string second =
        "\r\nEm uma mesma guia, o sequencial de referência do procedimento ou item assistencial "
        "não pode se repetir, inclusive considerando os itens assistenciais do Anexo de Outras "
        "Despesas.";
    const auto repeated = [&](int number, const char* user, int line) {
        return fmt::format(
            "erro: O sequencial de número {} está repetido. {} na linha {} já o está utilizando.{}", number,
            user, line, second);
    };
    const char* kProcedure = "O procedimento localizado";
    const char* kExpense = "A despesa localizada";
    const std::string good =
        "ok: O sequencial de referência dos procedimentos ou itens assistenciais estão de acordo "
        "com o componente organizacional.";
    // Each item on a line of its own: the lot begins on line 1, the first item is on line 2.
    const struct {
        const char* Version;
        std::vector<const char*> Procedures;
        std::vector<const char*> Expenses;
        std::vector<std::string> Expected;
    } cases[] = {
        {"3.04.00", {"1", "2"}, {"3", "4"}, {good}},
        {"3.04.00", {}, {}, {good}},
        {"3.04.00", {"", "", "x"}, {"1"}, {good}},
        {"3.04.00", {"1", "1"}, {"1"}, {repeated(1, kProcedure, 2), repeated(1, kProcedure, 2)}},
        {"3.04.00", {"01", "2", "+1"}, {}, {repeated(1, kProcedure, 2)}},
        {"3.04.00", {"1"}, {"2", "2", "2"}, {repeated(2, kExpense, 3), repeated(2, kExpense, 3)}},
        {"4.01.00", {"1", "1"}, {"2", "2"}, {repeated(1, kProcedure, 2), repeated(2, kExpense, 4)}},
        {"3.03.03", {"1", "1"}, {"1"}, {}},
    };
    for (const auto& c : cases) {
        std::string procedures;
        for (const char* number : c.Procedures)
            procedures += fmt::format(" procedimentoExecutado(sequencialItem={})", number);
        std::string expenses;
        for (const char* number : c.Expenses)
            expenses += fmt::format(" despesa(sequencialItem={})", number);
        std::string xml = MensagemComLote(
            c.Version, Xml(fmt::format("guiasTISS({})",
                                       SpSadt(fmt::format("procedimentosExecutados({}) outrasDespesas({})",
                                                          procedures, expenses)))));
        ReplaceAll(xml, "<procedimentoExecutado>", "\n<procedimentoExecutado>");
        ReplaceAll(xml, "<despesa>", "\n<despesa>");
        const auto rules = Validado(*std::dynamic_pointer_cast<IMensagemTiss>(Carregado(xml)), c.Version);
        std::vector<std::string> found;
        for (const auto& message : rules->ValidationMessages())
            if (message->Validation().Name.ends_with("sequencial"))
                found.push_back(Descrito(*message));
        EXPECT_THAT(found, ElementsAreArray(c.Expected)) << xml;
    }
}

TEST(SequenceRule, IsJudgedGuideByGuide) {
    const std::string guide =
        "guiaHonorarios(procedimentosRealizados(procedimentoRealizado(sequencialItem=1)))";
    const std::vector<std::string> found = Achados("3.04.00", guide + " " + guide, "honorarios.sequencial");
    EXPECT_EQ(found.size(), 2U);
    EXPECT_EQ(std::set(found.begin(), found.end()).size(), 1U) << "o número 1 vale em cada guia";
}

} // namespace
} // namespace conferix::testes
