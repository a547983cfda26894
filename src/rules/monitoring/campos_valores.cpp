#include "rules/monitoring/campos_valores.h"

#include "model/money.h"
#include "platform/format_settings.h"

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

/// An error, with its correction, at a total that differs from what is expected. `summands` calls what it is
/// given with each number that was summed up; where one of them is unreadable, nobody knows the sum.
template<class Summands>
void CheckTotal(TCampoValidation& campo, const TGuiaFields& guia, const TNumberField& total, double expected,
                std::string_view different, Summands&& summands) {
    if (!total.Value || SameMoney(*total.Value, expected))
        return;
    TComputation computation{guia.Guia.Node(), {}};
    bool readable = true;
    summands([&](const TNumberField& number) {
        if (!number.Field.Present())
            return;
        readable = readable && number.Value.has_value();
        computation.Operands.push_back(number.Field.Node());
    });
    if (!readable)
        return;
    campo.CorrectableError(*total.Field.Node(),
                           fmt::format(fmt::runtime(different), MoneyText(*total.Value), MoneyText(expected)),
                           CorrectionText(expected), std::move(computation));
}

} // namespace

void TTotalNaoNegativo::operator()(TCampoValidation& campo, const TGuiaFields& guia) const {
    const TNumberField& total = guia.*Total;
    if (total.Value && *total.Value < 0)
        campo.Error(total.Field.Node(), fmt::format(fmt::runtime(Negative), MoneyText(*total.Value)));
}

void TSomaDosItens::operator()(TCampoValidation& campo, const TGuiaFields& guia) const {
    CheckTotal(campo, guia, guia.*Total, guia.SumOfItens(Parcela), Different, [&](auto&& add) {
        for (const TItemFields& item : guia.Itens)
            add(item.*Parcela);
    });
}

void CheckValorPagoGuia(TCampoValidation& campo, const TGuiaFields& guia) {
    static constexpr TSomaDosItens kSoma = {&TGuiaFields::ValorPagoGuia, &TItemFields::ValorPagoProc,
                                            "O valor total pago ao prestador deve ser igual à soma do campo "
                                            "Valor pago ao prestador executante ou "
                                            "reembolsado ao beneficiário (campo 073) dos procedimentos ou "
                                            "itens assistenciais do mesmo lançamento. O "
                                            "valor {} foi encontrado, porém o esperado é {}."};
    long double sum = 0;
    for (const auto total : kPaidTotals)
        sum += (guia.*total).Value.value_or(0);
    CheckTotal(campo, guia, guia.ValorPagoGuia, static_cast<double>(sum), kDifferentFromTotals,
               [&](auto&& add) {
                   for (const auto total : kPaidTotals)
                       add(guia.*total);
               });
    kSoma(campo, guia);
}

} // namespace conferix
