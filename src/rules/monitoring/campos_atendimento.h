// Checks of the fields 034 to 049, which only some kinds of guide carry.
#pragma once

#include "rules/monitoring/campo_validation.h"

#include <string_view>

namespace conferix {

/// Which kinds of guide may carry a field, and which have to. The two sets differ for some fields, and so
/// do the names and kinds that the two texts speak of.
struct TCampoDeTiposDeGuia {
    TXmlField TGuiaFields::*Campo;
    std::string_view Allowed;      ///< kinds that may carry it, a character each
    std::string_view Demanded;     ///< kinds that have to
    bool ReembolsoExempt = true;   ///< not demanded of a reimbursement
    std::string_view AllowedName;  ///< subject of the text for a field that is out of place
    std::string_view AbsentName;   ///< subject of the text for an absent field
    std::string_view DemandedName; ///< subject of that text's second sentence
    std::string_view Kinds;        ///< the kinds in words
    bool ShortDemand = false;      ///< that sentence says "for" in place of "for igual a"

    void operator()(TCampoValidation& campo, const TGuiaFields& guia) const;
};

} // namespace conferix
