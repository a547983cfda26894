// What several publications say of the periods of one term, and the rows of the database that follow.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace conferix {

/// A period of validity. Dates as AAAA-MM-DD, which compare as text; empty for none.
struct TPeriod {
    std::string Start;
    std::string End;
    std::string ImplementationEnd;

    bool operator==(const TPeriod&) const = default;
};

/// Brings the periods that are known of a term into ascending order, each start once. Of several with one
/// start, an end wins over none and a later over an earlier one. A period without any date, which lists of
/// bare codes give, says nothing where another is known. The result does not depend on the order.
std::vector<TPeriod> MergePeriods(std::vector<TPeriod> periods);

/// What the database keeps of a term.
struct TTermRows {
    std::optional<TPeriod> Current; ///< row in the table of terms: the newest period without an end
    std::string LastEnd;            ///< row in the table of inactivated terms; empty for none
    std::vector<TPeriod> Earlier;   ///< all periods but `vigente`

    bool operator==(const TTermRows&) const = default;
};

/// The rows of a term from its merged periods: every ended period counts with its end; an older period
/// that no publication ended is taken to end on the day before the newest one starts, so that what was
/// valid stays valid when a publication moves the start forward.
TTermRows RowsOfPeriods(const std::vector<TPeriod>& periods);

} // namespace conferix
