#include "app/message_groups.h"

#include "platform/format_settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace conferix {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// A sentence without the figures that differ from guide to guide though the fault is one: amounts, dates,
/// documents with their signs. Codes, which are plain digits, stay.
void MaskFigures(std::string_view sentence, std::string& masked) {
    masked.clear();
    for (std::size_t at = 0; at < sentence.size();) {
        std::size_t digit = at;
        while (digit < sentence.size() && !IsDigit(sentence[digit]))
            ++digit;
        masked.append(sentence, at, digit - at);
        at = digit;
        if (at == sentence.size())
            break;
        std::size_t end = at;
        bool plain = true;
        while (end < sentence.size() &&
               (IsDigit(sentence[end]) ||
                (std::string_view(".,/-:").find(sentence[end]) != std::string_view::npos &&
                 end + 1 < sentence.size() && IsDigit(sentence[end + 1])))) {
            plain = plain && IsDigit(sentence[end]);
            ++end;
        }
        masked += plain ? sentence.substr(at, end - at) : std::string_view("#");
        at = end;
    }
}

struct TKey {
    const TValidationIdentity* Rule;
    TMessageType Type;
    std::string_view Campo;
    std::uint64_t Key;    ///< of a message that has one
    std::string Sentence; ///< of one that has none

    bool operator==(const TKey&) const = default;
};

struct TKeyHash {
    std::size_t operator()(const TKey& key) const {
        return std::hash<const void*>()(key.Rule) ^ (std::hash<std::string>()(key.Sentence) * 31) ^
               (std::hash<std::string_view>()(key.Campo) * 131) ^
               (static_cast<std::size_t>(key.Key) + static_cast<std::size_t>(key.Type));
    }
};

bool IsOfTheFile(const TXmlMessage& message) {
    return message.Kind() == TFindingKind::Run || message.Kind() == TFindingKind::Layout ||
           message.Kind() == TFindingKind::Misread;
}

void Arrange(const TXmlMessages& messages, std::vector<TMessageGroup>& groups) {
    const auto firstOfRule =
        std::ranges::find_if(messages, [](const auto& message) { return message->Rule() != nullptr; });
    const auto lead = static_cast<std::size_t>(firstOfRule - messages.begin());
    const auto rank = [&](const TMessageGroup& group) {
        const std::size_t first = group.Messages.front();
        const bool ofFile = first < lead || IsOfTheFile(*messages[first]);
        const bool alone = group.Messages.size() == 1;
        const auto guides = alone ? 0 : -static_cast<std::ptrdiff_t>(group.Guides);
        const auto line = alone ? 0 : messages[first]->Line();
        return std::tuple(!ofFile, alone, ofFile ? 0 : guides, ofFile ? 0 : line, first);
    };
    std::ranges::sort(groups, {}, rank);
}

} // namespace

std::vector<TMessageGroup> GroupMessages(const TXmlMessages& messages) {
    std::vector<TMessageGroup> groups;
    std::unordered_map<TKey, std::size_t, TKeyHash> known;
    TKey key{};
    for (std::size_t i = 0; i < messages.size(); ++i) {
        const TXmlMessage& message = *messages[i];
        key.Rule = message.Rule();
        key.Type = message.MsgType();
        key.Campo = message.Campo();
        key.Key = message.GroupKey();
        if (key.Key == 0)
            MaskFigures(message.Reason(), key.Sentence);
        else
            key.Sentence.clear();
        const auto [group, added] = known.try_emplace(key, groups.size());
        if (added)
            groups.emplace_back();
        groups[group->second].Messages.push_back(i);
    }
    std::unordered_set<std::string_view> guides;
    for (TMessageGroup& group : groups) {
        guides.clear();
        const std::string& reason = messages[group.Messages.front()]->Reason();
        std::string_view last;
        for (const std::size_t i : group.Messages) {
            if (const std::string_view guide = messages[i]->NumeroGuia(); guide != last)
                guides.insert(last = guide);
            group.SameReason = group.SameReason && messages[i]->Reason() == reason;
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
    const std::size_t count = group.Messages.size();
    for (std::size_t i = 0; i < std::min(count, kShownPlaces); ++i) {
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

std::string GroupText(const TXmlMessages& messages, const TMessageGroup& group) {
    const TXmlMessage& first = *messages[group.Messages.front()];
    const std::size_t count = group.Messages.size();
    if (count == 1)
        return first.Msg();
    const auto number = [](std::size_t value) {
        return TFormatSettings::Regional().Count(static_cast<std::int64_t>(value));
    };
    std::string text;
    if (group.Guides == 1)
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
    std::string notes = lines.size() == 1 ? ItemsOf(messages, group) : std::string();
    if (!notes.empty())
        lines.clear();
    for (std::size_t i = 0; i < std::min(lines.size(), kShownPlaces); ++i)
        notes += (i == 0 ? lines.size() == 1 ? "linha " : "linhas "
                  : i + 1 == lines.size() && lines.size() <= kShownPlaces ? " e "
                                                                          : ", ") +
                 std::to_string(lines[i]);
    if (lines.size() > kShownPlaces)
        notes += fmt::format(" e mais {}", number(lines.size() - kShownPlaces));
    if (!group.SameReason)
        notes += notes.empty() ? "os valores variam" : "; os valores variam";
    return notes.empty() ? text : fmt::format("{} ({})", text, notes);
}

} // namespace conferix
