#include "app/message_groups.h"

#include "platform/format_settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace conferix {

namespace {

bool IsOfTheFile(const TXmlMessage& message) {
    return message.Kind() == TFindingKind::Run || message.Kind() == TFindingKind::Layout ||
           message.Kind() == TFindingKind::Misread;
}

/// How many messages stand before those of rules.
std::size_t Lead(const TXmlMessages& messages) {
    const auto firstOfRule =
        std::ranges::find_if(messages, [](const auto& message) { return message->Rule() != nullptr; });
    return static_cast<std::size_t>(firstOfRule - messages.begin());
}

void Arrange(const TXmlMessages& messages, std::vector<TMessageGroup>& groups) {
    const std::size_t lead = Lead(messages);
    const auto rank = [&](const TMessageGroup& group) {
        const std::size_t first = group.Messages.front();
        const bool ofFile = first < lead || IsOfTheFile(*messages[first]);
        const bool alone = group.Count == 1;
        const auto guides = alone ? 0 : -static_cast<std::ptrdiff_t>(group.Guides);
        const auto line = alone ? 0 : messages[first]->Line();
        return std::tuple(!ofFile, alone, ofFile ? 0 : guides, ofFile ? 0 : line, first);
    };
    std::ranges::sort(groups, {}, rank);
}

} // namespace

std::vector<TMessageGroup> GroupMessages(const TXmlMessages& messages,
                                         const std::vector<TUnkeptFindings>& unlisted) {
    std::vector<TMessageGroup> groups;
    std::unordered_map<TFindingKey, std::size_t, TFindingKeyHash> known;
    TFindingKey key;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        key.Assign(*messages[i]);
        const auto [group, added] = known.try_emplace(key, groups.size());
        if (added)
            groups.emplace_back();
        groups[group->second].Messages.push_back(i);
    }
    std::unordered_map<std::size_t, const TUnkeptGroup*> further;
    for (const TUnkeptFindings& of : unlisted)
        for (const TUnkeptGroup& group : of.Groups->Groups())
            if (const auto found = known.find(TFindingKey::Of(*group.First)); found != known.end())
                further.emplace(found->second, &group);
    std::unordered_set<std::string_view> guides;
    for (TMessageGroup& group : groups) {
        guides.clear();
        const TXmlMessage& first = *messages[group.Messages.front()];
        const auto compare = [&](const TXmlMessage& other) {
            if (!group.SameCause || other.Reason() == first.Reason())
                return; // nothing more to be told
            group.SameReason = false;
            group.SameCause = IsSameCause(other, first);
        };
        std::string_view last;
        for (const std::size_t i : group.Messages) {
            if (const std::string_view guide = messages[i]->Guide(); guide != last)
                guides.insert(last = guide);
            compare(*messages[i]);
        }
        group.Count = group.Messages.size();
        const auto index = static_cast<std::size_t>(&group - groups.data());
        if (const auto more = further.find(index); more != further.end()) {
            const TUnkeptGroup& counted = *more->second;
            group.Count += counted.Count;
            // The first of them may be in the line of the last that is listed.
            const bool sameLine = counted.Lines > 0 && counted.First->Line() > 0 &&
                                  counted.First->Line() == messages[group.Messages.back()]->Line();
            group.UnlistedLines = counted.Lines - (sameLine ? 1 : 0);
            guides.insert(counted.Guides.begin(), counted.Guides.end());
            compare(*counted.First);
            group.SameReason = group.SameReason && counted.SameReason;
            group.SameCause = group.SameCause && counted.SameCause;
        }
        guides.erase(std::string_view{});
        group.Guides = guides.size();
    }
    if (groups.size() != messages.size())
        Arrange(messages, groups);
    return groups;
}

namespace {

constexpr std::size_t kShownPlaces = 3;

/// The first items of a group, where they tell more than lines; empty where they do not.
std::string ItemsOf(const TXmlMessages& messages, const TMessageGroup& group) {
    std::string items;
    const std::size_t count = group.Count;
    for (std::size_t i = 0; i < std::min(group.Messages.size(), kShownPlaces); ++i) {
        const std::string& item = messages[group.Messages[i]]->Item();
        if (item.empty())
            return {};
        items += (i == 0 ? "" : ", ") + item;
    }
    return count > kShownPlaces ? fmt::format("{} e mais {}", items,
                                              TFormatSettings::Regional().Count(
                                                  static_cast<std::int64_t>(count - kShownPlaces)))
                                : items;
}

} // namespace

std::vector<TMessageGroup> UngroupedMessages(const TXmlMessages& messages) {
    std::vector<TMessageGroup> groups(messages.size());
    for (std::size_t i = 0; i < messages.size(); ++i) {
        groups[i].Messages = {i};
        groups[i].Count = 1;
        groups[i].Guides = messages[i]->NumeroGuia().empty() ? 0 : 1;
    }
    return groups;
}

void SortByLine(const TXmlMessages& messages, std::vector<TMessageGroup>& groups) {
    enum TPart { OfFile, OfSeveral, Alone, AfterRules };
    const std::size_t lead = Lead(messages);
    std::ranges::stable_sort(groups, {}, [&](const TMessageGroup& group) {
        const std::size_t index = group.Messages.front();
        const TXmlMessage& first = *messages[index];
        const TPart part = index < lead || IsOfTheFile(first) ? OfFile
                           : group.Count > 1                  ? OfSeveral
                           : first.Rule() != nullptr          ? Alone
                                                              : AfterRules;
        return part == Alone ? std::tuple(part, first.Line(), first.LinePos()) : std::tuple(part, 0, 0);
    });
}

std::string GroupText(const TXmlMessages& messages, const TMessageGroup& group) {
    const TXmlMessage& first = *messages[group.Messages.front()];
    const std::size_t count = group.Count;
    if (first.Kind() == TFindingKind::Run)
        return first.Reason(); // said at the first place that met it, of which it does not speak
    if (count == 1)
        return first.Msg();
    const auto number = [](std::size_t value) {
        return TFormatSettings::Regional().Count(static_cast<std::int64_t>(value));
    };
    std::string text;
    if (group.Guides == 1 && !first.NumeroGuia().empty())
        text += fmt::format("[Guia: {}] ", first.NumeroGuia());
    if (!first.Campo().empty())
        text += fmt::format("[Campo: {}] ", first.Campo());
    if (group.Guides > 1)
        text += number(group.Guides) + " guias";
    if (group.Guides != count)
        text += (group.Guides > 1 ? ", " : "") + number(count) + " vezes";
    text += ": " + first.Reason();
    std::vector<std::int32_t> lines;
    for (const std::size_t i : group.Messages)
        if (messages[i]->Line() > 0 && (lines.empty() || lines.back() != messages[i]->Line()))
            lines.push_back(messages[i]->Line());
    const std::size_t further = group.UnlistedLines;
    std::string notes = lines.size() == 1 && further == 0 ? ItemsOf(messages, group) : std::string();
    if (!notes.empty())
        lines.clear();
    const std::size_t all = lines.size() + further;
    for (std::size_t i = 0; i < std::min(lines.size(), kShownPlaces); ++i)
        notes += (i == 0         ? all == 1 ? "linha " : "linhas "
                  : i + 1 == all ? " e "
                                 : ", ") +
                 std::to_string(lines[i]);
    if (const std::size_t shown = std::min(lines.size(), kShownPlaces); all > shown)
        notes += fmt::format(" e mais {}", number(all - shown));
    if (!group.SameReason)
        notes += fmt::format("{}{}", notes.empty() ? "" : "; ",
                             group.SameCause ? "o lugar varia" : "os valores variam");
    return notes.empty() ? text : fmt::format("{} ({})", text, notes);
}

} // namespace conferix
