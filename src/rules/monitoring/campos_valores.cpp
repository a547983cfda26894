#include "rules/monitoring/campos_valores.h"

#include "model/money.h"
#include "platform/format_settings.h"
#include "rules/guia_validation.h"

#include <fmt/format.h>

namespace conferix {

namespace {

constexpr std::string_view kDifferentFromTotals =
    "O valor total pago ao prestador deve ser igual à soma dos dos valores dos campos abaixo no mesmo "
    "lançamento: \r\n"
    "  - Valor total pago dos procedimentos (052)\r\n"
    "  - Valor total de diárias (053)\r\n"
    "  - Valor total de taxas (054)\r\n"
    "  - Valor total de materiais (055)\r\n"
    "  - Valor total de OPME (056)\r\n"
    "  - Valor total de medicamentos (057)\r\n"
    "O valor {} foi encontrado, porém o esperado é {}.";

/// The totals that make up what was paid.
constexpr TNumberField TGuiaFields::*kPaidTotals[] = {
    &TGuiaFields::ValorTotalPagoProcedimentos,
    &TGuiaFields::ValorTotalDiarias,
    &TGuiaFields::ValorTotalTaxas,
    &TGuiaFields::ValorTotalMateriais,
    &TGuiaFields::ValorTotalOPME,
    &TGuiaFields::ValorTotalMedicamentos,
};

/// The sum as a correction writes it: in cents, with more decimals only where the items have them, so that
/// the corrected total is the sum again.
std::string CorrectionText(double value) {
    constexpr int kMaxDecimals = 6;
    static const TFormatSettings formats = TFormatSettings::Messages();
    int decimals = 2;
    std::string text = formats.Decimal(value, decimals);
    while (decimals < kMaxDecimals && !SameMoney(ParseDecimal(text).value_or(0), value))
        text = formats.Decimal(value, ++decimals);
    return text;
}

} // namespace

void TTotalNaoNegativoRule::Check(const TGuiaFields& guia) {
    const TNumberField& total = guia.*row_.Total;
    if (total.Value && *total.Value < 0)
        AddError(guia, total.Field, fmt::format(fmt::runtime(row_.Negative), MoneyText(*total.Value)));
}

void TSomaItensRule::CheckTotal(const TGuiaFields& guia, const TNumberField& total, double expected,
                                std::string_view different, const TSummands& summands) {
    if (!total.Value || SameMoney(*total.Value, expected))
        return;
    TComputation computation{guia.Guia.Node(), {}};
    summands(computation.Operands);
    AddError(guia, total.Field,
             fmt::format(fmt::runtime(different), MoneyText(*total.Value), MoneyText(expected)),
             CorrectionText(expected), std::move(computation));
}

void TSomaItensRule::Check(const TGuiaFields& guia) {
    CheckTotal(guia, guia.*row_.Total, guia.SumOfItens(row_.Parcela), row_.Different,
               [&](std::vector<const TXmlNode*>& nodes) {
                   for (const TItemFields& item : guia.Itens)
                       if (const TXmlField& field = (item.*row_.Parcela).Field; field.Present())
                           nodes.push_back(field.Node());
               });
}

void TValorPagoGuiaRule::Check(const TGuiaFields& guia) {
    long double sum = 0;
    for (const auto total : kPaidTotals)
        sum += (guia.*total).Value.value_or(0);
    CheckTotal(guia, guia.ValorPagoGuia, static_cast<double>(sum), kDifferentFromTotals,
               [&](std::vector<const TXmlNode*>& nodes) {
                   for (const auto total : kPaidTotals)
                       if (const TXmlField& field = (guia.*total).Field; field.Present())
                           nodes.push_back(field.Node());
               });
    TSomaItensRule::Check(guia);
}

} // namespace conferix
