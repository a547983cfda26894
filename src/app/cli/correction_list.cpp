#include "app/cli/correction_list.h"

#include "app/correction_policy.h"
#include "app/file_correction.h"
#include "report/console.h"
#include "xml/cut_text.h"

#include <fmt/format.h>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace conferix {

namespace {

/// Corrections of one kind, in their order.
using TRecordGroup = std::vector<const TCorrectionRecord*>;
/// What corrections that differ at most in place and value share.
using TRecordKind = std::tuple<std::string_view, std::string_view, std::string_view, std::string_view>;

TRecordKind KindOf(const TCorrectionRecord& record) {
    const std::string_view description = record.Description;
    return {record.Solver, record.Element, record.Element.empty() ? description : std::string_view(),
            record.Reason};
}

/// Few of a kind are a group each; `all`: each is.
std::vector<TRecordGroup> GroupRecords(const std::vector<TCorrectionRecord>& records, bool all) {
    constexpr std::size_t kFew = 5;
    std::map<TRecordKind, TRecordGroup> kinds;
    for (const TCorrectionRecord& record : records)
        kinds[KindOf(record)].push_back(&record);
    std::vector<TRecordGroup> groups;
    for (const TCorrectionRecord& record : records)
        if (const TRecordGroup& kind = kinds[KindOf(record)]; all || kind.size() <= kFew)
            groups.push_back({&record});
        else if (kind.front() == &record)
            groups.push_back(kind);
    return groups;
}

std::string PlaceOf(const TCorrectionRecord& record) {
    const std::string place = Visible(record.Message->Place());
    return place.empty() ? place : place + " ";
}

/// "linhas 3, 7, 9 e mais 20; os valores variam"
std::string PlacesOf(const TRecordGroup& group) {
    constexpr std::size_t kShown = 3;
    const TCorrectionRecord& first = *group.front();
    std::set<std::int32_t> lines;
    bool same = true;
    for (const TCorrectionRecord* record : group) {
        lines.insert(record->Message->Line());
        same = same && record->Before == first.Before && record->After == first.After;
    }
    lines.erase(0); // unknown
    std::string places;
    std::size_t shown = 0;
    for (auto line = lines.begin(); line != lines.end() && shown < kShown; ++line)
        places += fmt::format("{}{}", shown++ != 0 ? ", " : lines.size() == 1 ? "linha " : "linhas ", *line);
    if (lines.size() > kShown)
        places += fmt::format(" e mais {}", lines.size() - kShown);
    if (!same)
        places += places.empty() ? "os valores variam" : "; os valores variam";
    return places;
}

std::string ChangeOf(const TCorrectionRecord& record) {
    return record.Element.empty()
               ? IndentLines(record.Description, 2)
               : fmt::format("<{}>: {} -> {}", Visible(record.Element), Visible(CutText(record.Before)),
                             Visible(CutText(record.After)));
}

std::string RefusalOf(const TCorrectionRecord& record) {
    return fmt::format("{}: {}",
                       record.Element.empty() ? IndentLines(record.Description, 2)
                                              : fmt::format("<{}> continua {}", Visible(record.Element),
                                                            Visible(CutText(record.Before))),
                       Visible(OneLine(record.WhyLeft())));
}

std::string TextOf(const TRecordGroup& group, std::string (*sentence)(const TCorrectionRecord&)) {
    const TCorrectionRecord& first = *group.front();
    if (group.size() == 1)
        return PlaceOf(first) + sentence(first);
    const std::string places = PlacesOf(group);
    return fmt::format("{} vezes: {}{}", group.size(), sentence(first),
                       places.empty() ? places : fmt::format(" ({})", places));
}

} // namespace

void ListCorrections(std::ostream& out, const TCorrectionResult& result, bool all) {
    for (const TRecordGroup& group : GroupRecords(result.Applied, all))
        out << fmt::format("  {}\n", TextOf(group, ChangeOf));
    std::vector<TCorrectionRecord> leftOut = result.LeftOut;
    std::string notAsked;
    for (const char* reason : {kOfStructure, kWithLoss})
        if (const std::size_t count = std::erase_if(
                leftOut, [&](const TCorrectionRecord& record) { return record.Reason == reason; }))
            notAsked +=
                fmt::format("  não feitas: {} {}.\n", Counted(count, "correção", "correções"), reason);
    for (const TRecordGroup& group : GroupRecords(leftOut, all))
        out << fmt::format("  não corrigido: {}.\n", TextOf(group, RefusalOf));
    out << notAsked;
}

} // namespace conferix
