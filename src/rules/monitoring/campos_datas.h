// Checks of the dates of a guide: fields 029 to 033 and 080.
#pragma once

#include "rules/monitoring/campo_validation.h"

#include <string_view>

namespace conferix {

/// A date has to lie before the reference date and, for some, not before another date of the guide.
struct TDataAnterior {
    TDateField TGuiaFields::*Data;
    std::string_view NotBeforeReference;
    TDateField TGuiaFields::*NotEarlierThan = nullptr;
    std::string_view TooEarly = {};

    void operator()(TCampoValidation& campo, const TGuiaFields& guia) const;
};

/// 080: before the reference date, and of a guide that is included in the month that the lot speaks of.
void CheckDataProcessamento(TCampoValidation& campo, const TGuiaFields& guia);

} // namespace conferix
