// Checks of the totals of a guide: fields 050 to 061 and 084.
#pragma once

#include "rules/monitoring/campo_validation.h"

#include <string_view>

namespace conferix {

/// A total that must not be negative.
struct TTotalNaoNegativo {
    TNumberField TGuiaFields::*Total;
    std::string_view Negative; ///< {} is the value

    void operator()(TCampoValidation& campo, const TGuiaFields& guia) const;
};

/// A total that equals the sum of one value of the items.
struct TSomaDosItens {
    TNumberField TGuiaFields::*Total;
    TNumberField TItemFields::*Parcela;
    std::string_view Different; ///< {} are the value found and the one expected

    void operator()(TCampoValidation& campo, const TGuiaFields& guia) const;
};

/// 059: what was paid equals both the sum of the totals by kind and the sum of the items.
void CheckValorPagoGuia(TCampoValidation& campo, const TGuiaFields& guia);

} // namespace conferix
