#include "data/import/periods.h"

#include "platform/iso_date.h"

#include <algorithm>
#include <chrono>

namespace conferix {

namespace {

std::string DayBefore(const std::string& day) {
    const std::optional<TDate> date = ParseIsoDate(day);
    return date ? FormatIsoDate(TDate(std::chrono::sys_days(*date) - std::chrono::days(1))) : std::string();
}

} // namespace

std::vector<TPeriod> MergePeriods(std::vector<TPeriod> periods) {
    std::sort(periods.begin(), periods.end(),
              [](const TPeriod& a, const TPeriod& b) { return a.Start < b.Start; });
    std::vector<TPeriod> merged;
    for (TPeriod& period : periods) {
        if (!merged.empty() && merged.back().Start == period.Start) {
            merged.back().End = std::max(merged.back().End, period.End);
            merged.back().ImplementationEnd =
                std::max(merged.back().ImplementationEnd, period.ImplementationEnd);
        } else {
            merged.push_back(std::move(period));
        }
    }
    if (merged.size() > 1 && merged.front().Start.empty() && merged.front().End.empty()) {
        merged.erase(merged.begin());
    }
    return merged;
}

TTermRows RowsOfPeriods(const std::vector<TPeriod>& periods) {
    TTermRows rows;
    for (const TPeriod& period : periods) {
        if (!period.End.empty()) {
            rows.LastEnd = std::max(rows.LastEnd, period.End);
            rows.Earlier.push_back(period);
            continue;
        }
        if (rows.Current) {
            rows.LastEnd = std::max(rows.LastEnd, DayBefore(period.Start));
            rows.Earlier.push_back(*rows.Current);
        }
        rows.Current = period;
    }
    std::sort(rows.Earlier.begin(), rows.Earlier.end(),
              [](const TPeriod& a, const TPeriod& b) { return a.Start < b.Start; });
    return rows;
}

} // namespace conferix
