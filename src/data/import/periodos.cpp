#include "data/import/periodos.h"

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

std::vector<TPeriodo> MergePeriods(std::vector<TPeriodo> periods) {
    std::sort(periods.begin(), periods.end(),
              [](const TPeriodo& a, const TPeriodo& b) { return a.inicio < b.inicio; });
    std::vector<TPeriodo> merged;
    for (TPeriodo& period : periods) {
        if (!merged.empty() && merged.back().inicio == period.inicio) {
            merged.back().fim = std::max(merged.back().fim, period.fim);
            merged.back().implantacao = std::max(merged.back().implantacao, period.implantacao);
        } else {
            merged.push_back(std::move(period));
        }
    }
    if (merged.size() > 1 && merged.front().inicio.empty() && merged.front().fim.empty()) {
        merged.erase(merged.begin());
    }
    return merged;
}

TTermRows RowsOfPeriods(const std::vector<TPeriodo>& periods) {
    TTermRows rows;
    for (const TPeriodo& period : periods) {
        if (!period.fim.empty()) {
            rows.ultimoFim = std::max(rows.ultimoFim, period.fim);
            rows.anteriores.push_back(period);
            continue;
        }
        if (rows.vigente) {
            rows.ultimoFim = std::max(rows.ultimoFim, DayBefore(period.inicio));
            rows.anteriores.push_back(*rows.vigente);
        }
        rows.vigente = period;
    }
    std::sort(rows.anteriores.begin(), rows.anteriores.end(),
              [](const TPeriodo& a, const TPeriodo& b) { return a.inicio < b.inicio; });
    return rows;
}

} // namespace conferix
