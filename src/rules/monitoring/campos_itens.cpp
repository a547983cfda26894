#include "rules/monitoring/campos_itens.h"

#include "platform/format_settings.h"
#include "rules/documents/documents_validation.h"
#include "rules/tuss_validation.h"
#include "xml/cut_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <compare>
#include <numeric>

namespace conferix {

namespace {

constexpr std::string_view kTables = "87";
constexpr std::string_view kGroups = "63";

/// Tables of the health plan's own codes.
bool IsOwnTable(std::string_view table) {
    return table == "00" || table == "90" || table == "98";
}

/// Tables whose items may be packages.
bool IsPackageTable(std::string_view table) {
    return table == "90" || table == "98";
}

/// Tables whose codes the consolidation table lists.
bool IsJudgedTable(std::string_view table) {
    static constexpr std::array<std::string_view, 4> kJudged = {"18", "19", "20", "22"};
    return std::ranges::find(kJudged, table) != kJudged.end();
}

std::string CountText(std::int64_t count) {
    static const TFormatSettings formats = TFormatSettings::Regional();
    return formats.Count(count);
}

} // namespace

const std::vector<bool>& TRepetitions::Find() {
    order_.resize(keys_.size());
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    std::ranges::sort(order_, [this](std::size_t a, std::size_t b) {
        const auto order = keys_[a] <=> keys_[b];
        return std::is_lt(order) || (std::is_eq(order) && a < b);
    });
    repeated_.assign(keys_.size(), false);
    for (std::size_t i = 1; i < order_.size(); ++i)
        repeated_[order_[i]] = keys_[order_[i]] == keys_[order_[i - 1]];
    return repeated_;
}

void CheckCodigoTabela(TCampoValidation& campo, const TGuiaFields& guia) {
    if (!guia.DataRealizacao.Value)
        return;
    for (const TItemFields& item : guia.Itens) {
        if (!item.CodigoTabela.Present())
            continue;
        if (!campo.CanConsult(kTables))
            return;
        TTussValidation table(campo.Manager(), *guia.DataRealizacao.Value, kTables, item.CodigoTabela.Text());
        if (!table.IsValid())
            campo.Error(item.CodigoTabela.Node(),
                        "O código da tabela está inválido. " + table.ValidationMessage());
    }
}

void TGrupoProcedimento::operator()(TCampoValidation& campo, const TGuiaFields& guia) {
    Repetitions.Clear();
    for (const TItemFields& item : guia.Itens)
        if (item.GrupoProcedimento.Present())
            Repetitions.Add({{}, item.GrupoProcedimento.Text()});
    const std::vector<bool>& repeated = Repetitions.Find();
    std::size_t index = 0;
    for (const TItemFields& item : guia.Itens) {
        const TXmlField& group = item.GrupoProcedimento;
        if (!group.Present())
            continue;
        if (IsOwnTable(item.CodigoTabela.Text()))
            campo.Error(
                group.Node(),
                "Quando for utilizado código próprio da operadora, a forma de envio do procedimento ou item "
                "assistencial deve ser individualizada.");
        if (guia.DataRealizacao.Value && campo.CanConsult(kGroups)) {
            TTussValidation term(campo.Manager(), *guia.DataRealizacao.Value, kGroups, group.Text());
            if (!term.IsValid())
                campo.Error(group.Node(),
                            "O código do grupo do procedimento está inválido. " + term.ValidationMessage());
        }
        if (repeated[index++])
            campo.Error(
                group.Node(),
                fmt::format("O grupo de procedimento {} está repetido nesse lançamento. Não pode haver, em "
                            "um mesmo lançamento, repetição de grupo de procedimento ou item assistencial.",
                            group.Shown()));
    }
}

void TCodigoProcedimento::operator()(TCampoValidation& campo, const TGuiaFields& guia) {
    Repetitions.Clear();
    for (const TItemFields& item : guia.Itens)
        if (item.CodigoProcedimento.Present())
            Repetitions.Add({item.CodigoTabela.Text(), item.CodigoProcedimento.Text()});
    const std::vector<bool>& repeated = Repetitions.Find();
    std::size_t index = 0;
    for (const TItemFields& item : guia.Itens) {
        const TXmlField& code = item.CodigoProcedimento;
        if (!code.Present())
            continue;
        const std::string_view table = item.CodigoTabela.Text();
        if (guia.DataRealizacao.Value && IsJudgedTable(table) && campo.CanConsultTable64(table)) {
            TTuss64Validation term(campo.Manager(), *guia.DataRealizacao.Value, table, code.Text());
            if (!term.IsValid())
                campo.Error(code.Node(),
                            "O código do procedimento está inválido. " + term.ValidationMessage());
        }
        if (repeated[index++])
            campo.Error(
                code.Node(),
                fmt::format(
                    "O código de procedimento {} da tabela {} está repetido nesse lançamento. Não "
                    "pode haver, em um mesmo lançamento, repetição de códigos de procedimento ou item "
                    "assistencial da mesma tabela de referência.",
                    code.Shown(), CutText(table, kShownFound)));
    }
}

void TNumeroDeItem::operator()(TCampoValidation& campo, const TGuiaFields& guia) const {
    for (const TItemFields& item : guia.Itens) {
        const TNumberField& number = item.*Number;
        if (number.Value && (*number.Value < 0 || (*number.Value == 0 && !MayBeZero)))
            campo.Error(number.Field.Node(), fmt::format(fmt::runtime(TooSmall), MoneyText(*number.Value)));
    }
}

void CheckCnpjFornecedor(TCampoValidation& campo, const TGuiaFields& guia) {
    for (const TItemFields& item : guia.Itens)
        if (item.CNPJFornecedor.Present() && !TDocumentsValidation::IsValidCnpj(item.CNPJFornecedor.Text()))
            campo.DocumentError(
                item.CNPJFornecedor,
                fmt::format("O CNPJ do fornecedor do item assistencial está inválido. Valor encontrado: {}.",
                            item.CNPJFornecedor.Shown()),
                TDocumentsValidation::IsValidCnpj, kCnpjDigits);
}

namespace {

/// Tells of packages where none may be, and hands each item with a package to `check`.
template<class Check>
void CheckPacotes(TCampoValidation& campo, const TGuiaFields& guia, Check&& check) {
    for (const TItemFields& item : guia.Itens) {
        if (!item.HasPackage)
            continue;
        const auto package = item.Item.DetalhePacote();
        if (!IsPackageTable(item.CodigoTabela.Text()))
            campo.Error(
                package.Get(0).Node(),
                fmt::format("Pacotes só deverão ser informados quando o campo 064 for igual a 90 ou 98. "
                            "Quantidade de pacote(s) encontrado(s): {}",
                            CountText(package.Count())));
        check(package);
    }
}

} // namespace

void CheckPacoteTabela(TCampoValidation& campo, const TGuiaFields& guia) {
    CheckPacotes(campo, guia, [&](const auto& package) {
        for (const TDetalhePacote& component : package) {
            const TXmlField table = component.CodigoTabela();
            if (table.Present() && table.Text() != "00" && !IsJudgedTable(table.Text()))
                campo.Error(
                    table.Node(),
                    "O código da tabela do item do pacote deve ser preenchido com um dos seguintes códigos "
                    "possíveis: \"00\", \"18\", \"19\", \"20\" ou \"22\".");
        }
    });
}

void TPacoteProcedimento::operator()(TCampoValidation& campo, const TGuiaFields& guia) {
    CheckPacotes(campo, guia, [&](const auto& package) {
        Repetitions.Clear();
        for (const TDetalhePacote& component : package)
            Repetitions.Add({component.CodigoTabela().Text(), component.CodigoProcedimento().Text()});
        const std::vector<bool>& repeated = Repetitions.Find();
        std::size_t index = 0;
        for (const TDetalhePacote& component : package) {
            const std::size_t at = index++;
            const TXmlField code = component.CodigoProcedimento();
            if (!code.Present())
                continue;
            const std::string table(component.CodigoTabela().Text());
            if (guia.DataRealizacao.Value && IsJudgedTable(table) && campo.CanConsultTable64(table)) {
                TTuss64Validation term(campo.Manager(), *guia.DataRealizacao.Value, table, code.Text());
                if (!term.IsValid())
                    campo.Error(code.Node(), "O código do procedimento que compõe o pacote está inválido. " +
                                                 term.ValidationMessage());
            }
            if (repeated[at])
                campo.Error(
                    code.Node(),
                    fmt::format("O código de procedimento {} da tabela {} está repetido no pacote. Não pode "
                                "haver, em um mesmo pacote, repetição de códigos de procedimento ou item "
                                "assistencial da mesma tabela de referência (campo 077).",
                                code.Shown(), CutText(table, kShownFound)));
        }
    });
}

void CheckPacoteQuantidade(TCampoValidation& campo, const TGuiaFields& guia) {
    CheckPacotes(campo, guia, [&](const auto& package) {
        for (const TDetalhePacote& component : package) {
            const TXmlField quantity = component.Quantidade();
            const std::optional<double> value = quantity.Number();
            if (value && *value < 0)
                campo.Error(
                    quantity.Node(),
                    fmt::format(
                        "A quantidade do procedimento ou item assistencial que compõe o pacote deve ser "
                        "maior ou igual a zero. Porém o valor {} foi encontrado.",
                        MoneyText(*value)));
        }
    });
}

} // namespace conferix
