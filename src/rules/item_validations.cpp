#include "rules/item_validations.h"

#include "model/money.h"
#include "rules/tuss_validation.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <vector>

namespace conferix {

const TItemTexts kProcedimentoTexts = {
    .SemItens = "Não há procedimentos na guia.",
    .CodigoValido = "O código do procedimento está válido. ",
    .CodigoInvalido = "O código do procedimento está inválido. ",
    .QuantidadeValida = "A quantidade informada de procedimentos está válida.",
    .QuantidadeInvalida =
        "A quantidade informada de procedimentos deve ser maior que zero. Valor encontrado: {}.",
    .FatorValido = "O valor do fator de redução ou acréscimo do procedimento está válido.",
    .FatorInvalido = "O valor do fator de redução ou acréscimo sobre o procedimento deve ser maior que zero. "
                     "Caso não haja redução ou acréscimo o fator deverá ser igual a 1,00. Valor encontrado: "
                     "{}.",
    .ValorUnitarioValido = "O valor unitário do procedimento está válido.",
    .ValorUnitarioNegativo =
        "O valor unitário do procedimento deve ser maior ou igual a zero. Valor encontrado: {}.",
    .ValorUnitarioDecimais = "O valor unitário do procedimento deve ter apenas duas casas decimais. O valor "
                             "encontrado foi {}, porém o esperado é {}.",
    .ValorTotalValido = "O valor total do procedimento está válido.",
    .ValorTotalNegativo =
        "O valor total do procedimento deve ser maior ou igual a zero. Valor informado: {}.",
    .ValorTotalComFator =
        "O valor total do procedimento deve considerar a quantidade de procedimentos realizados, o valor "
        "unitário e o fator de redução ou acréscimo. Caso não haja redução ou acréscimo sobre o valor do "
        "procedimento, o fator deverá ser igual a 1.00. O valor encontrado foi {}, porém o esperado é {}.",
    .ValorTotalSemFator =
        "O valor total do procedimento deve considerar a quantidade de procedimentos realizados, o valor "
        "unitário e o fator de redução ou acréscimo. O valor encontrado foi {}, porém o esperado é {}.",
};

const TItemTexts kDespesaTexts = {
    .SemItens = "Não há despesas na guia.",
    .CodigoValido = "O código da despesa está válido.",
    .CodigoInvalido = "O código da despesa está inválido. ",
    .QuantidadeValida = "A quantidade informada de itens de despesa está válida.",
    .QuantidadeInvalida =
        "A quantidade informada de itens de despesa deve ser maior que zero. Valor encontrado: {}.",
    .FatorValido = "O valor do fator de redução ou acréscimo da despesa está válido.",
    .FatorInvalido = "O valor do fator de redução ou acréscimo sobre a despesa deve ser maior que zero. Caso "
                     "não haja redução ou acréscimo o fator deverá ser igual a 1,00. Valor encontrado: {}.",
    .ValorUnitarioValido = "O valor unitário da despesa está válido.",
    .ValorUnitarioNegativo =
        "O valor unitário da despesa deve ser maior ou igual a zero. Valor encontrado: {}.",
    .ValorUnitarioDecimais = "O valor unitário da despesa deve ter apenas duas casas decimais. O valor "
                             "encontrado foi {}, porém o esperado é {}.",
    .ValorTotalValido = "O valor total do item da despesa está válido.",
    .ValorTotalNegativo = "O valor total da despesa deve ser maior ou igual a zero. Valor informado: {}.",
    .ValorTotalComFator =
        "O valor total do item da despesa deve considerar a quantidade de itens, o valor unitário e o fator "
        "de redução ou acréscimo. Caso não haja redução ou acréscimo sobre o valor do item de despesa, o "
        "fator deverá ser igual a 1.00. O valor encontrado foi {}, porém o esperado é {}.",
    .ValorTotalSemFator =
        "O valor total do item da despesa deve considerar a quantidade de itens, o valor unitário e o fator "
        "de redução ou acréscimo. O valor encontrado foi {}, porém o esperado é {}.",
};

namespace {

std::vector<const TXmlNode*> PresentNodes(std::initializer_list<TXmlField> fields) {
    std::vector<const TXmlNode*> nodes;
    for (const TXmlField& field : fields)
        if (field.Present())
            nodes.push_back(field.Node());
    return nodes;
}

} // namespace

void TItensCodigoValidation::CheckItem(const TItemGuia& item) {
    CheckCodigo(item.DataExecucao(), item.CodigoTabela(), item.CodigoProcedimento());
}

void TItensCodigoValidation::CheckCodigo(const TXmlField& data, const TXmlField& tabela,
                                         const TXmlField& codigo) {
    // The other tables hold no terms of the terminology ("00" and "98" are the health plan's own).
    static constexpr std::array<std::string_view, 4> kTabelas = {"18", "19", "20", "22"};
    if (!codigo.Present() || std::ranges::find(kTabelas, tabela.Text()) == kTabelas.end())
        return;
    const std::optional<TDate> day = ParseXsDate(data.Text());
    if (!day || !CanConsult(tabela.Text(), tabela.Node()))
        return;
    TTussValidation term(Manager(), *day, tabela.Text(), codigo.Text());
    if (term.IsValid())
        Success(codigo.Node(), Texts().CodigoValido);
    else
        Error(codigo.Node(), std::string(Texts().CodigoInvalido) + term.ValidationMessage());
}

void TItensQuantidadeValidation::CheckItem(const TItemGuia& item) {
    const TXmlField field = item.QuantidadeExecutada();
    const std::optional<double> quantidade = field.Number();
    if (!quantidade)
        return;
    if (*quantidade > 0)
        Success(field.Node(), Texts().QuantidadeValida);
    else
        Error(field.Node(), fmt::format(fmt::runtime(Texts().QuantidadeInvalida), field.Shown()));
}

void TItensFatorReducaoAcrescimoValidation::CheckItem(const TItemGuia& item) {
    const TXmlField field = item.ReducaoAcrescimo();
    const std::optional<double> fator = field.Number();
    if (!fator)
        return;
    if (*fator > 0)
        Success(field.Node(), Texts().FatorValido);
    else
        Error(field.Node(), fmt::format(fmt::runtime(Texts().FatorInvalido), field.Shown()));
}

void TItensValorUnitarioValidation::CheckItem(const TItemGuia& item) {
    CheckWholeCents(item.ValorUnitario(), {Texts().ValorUnitarioValido, Texts().ValorUnitarioNegativo,
                                           Texts().ValorUnitarioDecimais});
}

void TItensValorTotalValidation::CheckItem(const TItemGuia& item) {
    const TXmlField field = item.ValorTotal();
    const std::optional<double> quantidade = item.QuantidadeExecutada().Number();
    const std::optional<double> unitario = item.ValorUnitario().Number();
    const std::optional<double> total = field.Number();
    const std::optional<double> fator = item.ReducaoAcrescimo().Number();
    if (!quantidade || !unitario || !total || (item.ReducaoAcrescimo().Present() && !fator))
        return;
    const double expected = RoundMoney(static_cast<long double>(fator.value_or(1)) * *quantidade * *unitario);
    const bool negative = *total < 0;
    const bool wrong = !SameMoney(*total, expected);
    if (negative)
        Error(field.Node(), fmt::format(fmt::runtime(Texts().ValorTotalNegativo), field.Shown()));
    if (wrong)
        CorrectableError(
            *field.Node(),
            fmt::format(fmt::runtime(fator ? Texts().ValorTotalComFator : Texts().ValorTotalSemFator),
                        field.Shown(), MoneyText(expected)),
            MoneyText(expected),
            TComputation{item.Node(), PresentNodes({item.QuantidadeExecutada(), item.ReducaoAcrescimo(),
                                                    item.ValorUnitario()})});
    if (!negative && !wrong)
        Success(field.Node(), Texts().ValorTotalValido);
}

void TProcedimentosCodigoValidation::Visit(const IGuiaConsulta& guia) {
    StartGuia(guia);
    const TProcedimentoConsulta procedimento = guia.Procedimento();
    CheckCodigo(procedimento.DataAtendimento(), procedimento.CodigoTabela(),
                procedimento.CodigoProcedimento());
}

void TProcedimentosValorTotalValidation::Visit(const IGuiaConsulta& guia) {
    StartGuia(guia);
    CheckWholeCents(guia.Procedimento().ValorProcedimento(),
                    {"O valor do procedimento está válido.",
                     "O valor do procedimento deve ser maior ou igual a zero. Valor informado: {}.",
                     "O valor do procedimento deve ter apenas duas casas decimais. O valor encontrado foi "
                     "{}, porém o esperado é {}."});
}

} // namespace conferix
