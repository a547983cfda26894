#include "validation/finding_groups.h"

#include <functional>

namespace conferix {

namespace {

constexpr std::size_t kCausesToldApart = 1'000;

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

} // namespace

TFindingKey TFindingKey::Of(const TXmlMessage& message) {
    TFindingKey key;
    key.Assign(message);
    return key;
}

void TFindingKey::Assign(const TXmlMessage& message) {
    Rule = message.Rule();
    Type = message.MsgType();
    Campo = message.Campo();
    Key = message.GroupKey();
    Sentence.clear();
    if (Key == 0)
        MaskFigures(message.Reason(), Sentence);
}

std::size_t TFindingKeyHash::operator()(const TFindingKey& key) const {
    return std::hash<const void*>()(key.Rule) ^ (std::hash<std::string>()(key.Sentence) * 31) ^
           (std::hash<std::string_view>()(key.Campo) * 131) ^
           (static_cast<std::size_t>(key.Key) + static_cast<std::size_t>(key.Type));
}

bool IsSameCause(const TXmlMessage& left, const TXmlMessage& right) {
    return left.Cause().empty() ? left.Reason() == right.Reason() : left.Cause() == right.Cause();
}

void TUnkeptGroups::Add(const std::shared_ptr<const TXmlMessage>& message) {
    TUnkeptGroup* group = GroupOf(message);
    if (group == nullptr)
        return;
    Count(*group, message->Guide(), message->Line());
    group->SameReason = group->SameReason && message->Reason() == group->First->Reason();
    group->SameCause = group->SameCause && IsSameCause(*message, *group->First);
}

TUnkeptGroup* TUnkeptGroups::GroupOf(const std::shared_ptr<const TXmlMessage>& message) {
    TFindingKey key = TFindingKey::Of(*message);
    if (const auto found = known_.find(key); found != known_.end())
        return &groups_[found->second];
    if (groups_.size() == kCausesToldApart)
        return nullptr;
    known_.emplace(std::move(key), groups_.size());
    groups_.emplace_back().First = message;
    return &groups_.back();
}

void TUnkeptGroups::Count(TUnkeptGroup& group, const std::string& guide, std::int32_t line) {
    ++group.Count;
    if (line > 0 && line != group.LastLine)
        ++group.Lines;
    group.LastLine = line;
    if (!guide.empty())
        group.Guides.insert(guide);
}

} // namespace conferix
