#include "app/message_table.h"

#include "platform/format_settings.h"
#include "platform/utf8.h"
#include "validation/identity.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <set>
#include <string_view>
#include <unordered_map>

namespace conferix {

namespace {

/// The ASCII letter of each character from U+00C0 to U+00FF; "." for those that have none.
constexpr std::string_view kLatin = "aaaaaa.ceeeeiiii.nooooo.ouuuuy..aaaaaa.ceeeeiiii.nooooo.ouuuuy.y";

template<class Less>
std::vector<std::uint32_t> RanksBy(std::size_t count, const Less& less) {
    std::vector<std::uint32_t> order(count);
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), less);
    std::vector<std::uint32_t> ranks(count);
    for (std::size_t i = 1; i < count; ++i)
        ranks[order[i]] = ranks[order[i - 1]] + (less(order[i - 1], order[i]) ? 1 : 0);
    return ranks;
}

std::vector<std::string> WordsOf(std::string_view text) {
    std::vector<std::string> words;
    const std::string plain = SearchText(text);
    std::size_t at = 0;
    while ((at = plain.find_first_not_of(' ', at)) != std::string::npos) {
        const std::size_t end = std::min(plain.find(' ', at), plain.size());
        words.push_back(plain.substr(at, end - at));
        at = end;
    }
    return words;
}

} // namespace

std::uint32_t SeverityRank(TMessageType type) {
    switch (type) {
    case TMessageType::mtFatal:
        return 0;
    case TMessageType::mtError:
        return 1;
    case TMessageType::mtWarning:
        return 2;
    case TMessageType::mtInformation:
        return 3;
    case TMessageType::mtSuccess:
        return 4;
    }
    return 4;
}

std::string SearchText(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        if (byte < 0x80) {
            plain += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : text.front();
            text.remove_prefix(1);
            continue;
        }
        const std::string_view before = text;
        const char32_t character = TakeCharacter(text);
        const char letter = character >= 0xC0 && character <= 0xFF ? kLatin[character - 0xC0] : '.';
        if (letter != '.')
            plain += letter;
        else
            plain += before.substr(0, before.size() - text.size());
    }
    return plain;
}

TMessageDigest::TMessageDigest(TXmlMessages messages)
    : messages_(std::move(messages)), causes_(GroupMessages(messages_)), causeOf_(messages_.size()) {
    for (std::size_t group = 0; group < causes_.size(); ++group)
        for (const std::size_t message : causes_[group].Messages)
            causeOf_[message] = static_cast<std::uint32_t>(group);
    keys_.reserve(messages_.size());
    std::unordered_map<const TValidationIdentity*, std::string> ruleKeys;
    for (const auto& message : messages_) {
        counts_.Add(message->MsgType());
        const TValidationIdentity* rule = message->Rule();
        const auto [key, isNew] = ruleKeys.try_emplace(rule);
        if (isNew && rule != nullptr) {
            key->second = SearchText(rule->Description) + '\n' + rule->Name;
            rules_.push_back(rule);
        }
        keys_.push_back(SearchText(message->Reason()) + '\n' + SearchText(message->NumeroGuia()) + '\n' +
                        message->Campo() + '\n' + key->second);
    }
    std::ranges::sort(rules_, {}, [&](const TValidationIdentity* rule) { return ruleKeys.at(rule); });
    RankAll();
}

void TMessageDigest::RankAll() {
    const std::size_t count = messages_.size();
    std::unordered_map<const TValidationIdentity*, std::uint32_t> ruleRank = {{nullptr, 0}};
    for (std::size_t i = 0; i < rules_.size(); ++i)
        ruleRank[rules_[i]] = static_cast<std::uint32_t>(i + 1);
    std::unordered_map<std::string_view, std::uint32_t> guideRank;
    for (const auto& message : messages_)
        if (guideRank.try_emplace(message->NumeroGuia(), 0).second && !message->NumeroGuia().empty())
            guides_.push_back(message->NumeroGuia());
    std::ranges::sort(guides_);
    for (std::size_t i = 0; i < guides_.size(); ++i)
        guideRank[guides_[i]] = static_cast<std::uint32_t>(i + 1);

    for (std::vector<std::uint32_t>& ranks : ranks_)
        ranks.resize(count);
    const auto ranks = [&](TMessageColumn column) -> std::vector<std::uint32_t>& {
        return ranks_[static_cast<std::size_t>(column)];
    };
    for (std::size_t i = 0; i < count; ++i) {
        const TXmlMessage& message = *messages_[i];
        ranks(TMessageColumn::Severity)[i] = SeverityRank(message.MsgType());
        ranks(TMessageColumn::Guide)[i] = guideRank[message.NumeroGuia()];
        ranks(TMessageColumn::Rule)[i] = ruleRank[message.Rule()];
        ranks(TMessageColumn::Corrections)[i] =
            std::numeric_limits<std::uint32_t>::max() - static_cast<std::uint32_t>(message.Solvers().size());
    }
    ranks(TMessageColumn::Line) = RanksBy(count, [&](std::uint32_t left, std::uint32_t right) {
        const TXmlMessage& a = *messages_[left];
        const TXmlMessage& b = *messages_[right];
        return a.Line() != b.Line() ? a.Line() < b.Line() : a.LinePos() < b.LinePos();
    });
    ranks(TMessageColumn::Field) = RanksBy(count, [&](std::uint32_t left, std::uint32_t right) {
        return messages_[left]->Campo() < messages_[right]->Campo();
    });
    ranks(TMessageColumn::Text) =
        RanksBy(count, [&](std::uint32_t left, std::uint32_t right) { return keys_[left] < keys_[right]; });
}

TMessageTable::TMessageTable() : digest_(std::make_shared<const TMessageDigest>(TXmlMessages{})) {}

void TMessageTable::SetDigest(std::shared_ptr<const TMessageDigest> digest) {
    digest_ = std::move(digest);
    if (std::ranges::find(digest_->Rules(), filter_.Rule, &TValidationIdentity::Name) ==
        digest_->Rules().end())
        filter_.Rule.clear();
    if (!std::ranges::binary_search(digest_->Guides(), filter_.Guide))
        filter_.Guide.clear();
    filter_.Left.clear();
    Arrange();
}

void TMessageTable::SetFilter(TMessageFilter filter) {
    filter_ = std::move(filter);
    Arrange();
}

void TMessageTable::SetGrouping(TMessageGrouping grouping) {
    grouping_ = grouping;
    Arrange();
}

void TMessageTable::Sort(std::optional<TMessageColumn> column, bool descending) {
    column_ = column;
    descending_ = descending;
    Arrange();
}

bool TMessageTable::Admits(std::size_t message, std::uint32_t rule,
                           const std::vector<std::string>& words) const {
    const TXmlMessage& found = *Messages()[message];
    return !filter_.Hidden[static_cast<std::size_t>(found.MsgType())] &&
           (rule == 0 || digest_->Rank(TMessageColumn::Rule, message) == rule) &&
           (filter_.Guide.empty() || found.NumeroGuia() == filter_.Guide) &&
           (filter_.Left.empty() || !filter_.Left[message]) &&
           std::ranges::all_of(words, [&](const std::string& word) {
               return digest_->Key(message).find(word) != std::string::npos;
           });
}

std::uint32_t TMessageTable::GroupOf(std::size_t message) const {
    return grouping_ == TMessageGrouping::Cause ? digest_->CauseOf(message)
                                                : digest_->Rank(TMessageColumn::Rule, message);
}

void TMessageTable::Arrange() {
    const std::vector<std::string> words = WordsOf(filter_.Text);
    const auto& rules = digest_->Rules();
    const auto named = std::ranges::find(rules, filter_.Rule, &TValidationIdentity::Name);
    const auto rule = filter_.Rule.empty() ? 0U : static_cast<std::uint32_t>(named - rules.begin() + 1);
    std::vector<std::uint32_t> order;
    const auto add = [&](std::size_t message) {
        if (Admits(message, rule, words))
            order.push_back(static_cast<std::uint32_t>(message));
    };
    if (grouping_ == TMessageGrouping::Cause && !column_) {
        for (const TMessageGroup& group : digest_->Causes())
            std::ranges::for_each(group.Messages, add);
    } else {
        for (std::size_t message = 0; message < Messages().size(); ++message)
            add(message);
    }
    if (column_) {
        // Rank and place in one number: equal ones stay in their order.
        std::vector<std::uint64_t> keys(order.size());
        for (std::size_t i = 0; i < order.size(); ++i) {
            const std::uint32_t rank = digest_->Rank(*column_, order[i]);
            keys[i] = (static_cast<std::uint64_t>(descending_ ? ~rank : rank) << 32U) | order[i];
        }
        std::ranges::sort(keys);
        std::ranges::transform(keys, order.begin(),
                               [](std::uint64_t key) { return static_cast<std::uint32_t>(key); });
    }
    rows_.clear();
    if (grouping_ == TMessageGrouping::None) {
        shown_ = std::move(order);
        for (std::uint32_t i = 0; i < shown_.size(); ++i)
            rows_.push_back({i, i + 1});
        return;
    }
    // Groups stand where their first message does.
    std::unordered_map<std::uint32_t, std::uint32_t> rowOf;
    for (const std::uint32_t message : order) {
        const auto [row, isNew] =
            rowOf.try_emplace(GroupOf(message), static_cast<std::uint32_t>(rows_.size()));
        if (isNew)
            rows_.push_back({0, 0});
        ++rows_[row->second].End;
    }
    std::uint32_t start = 0;
    for (TRow& row : rows_) {
        const std::uint32_t size = row.End;
        row = {start, start};
        start += size;
    }
    shown_.resize(order.size());
    for (const std::uint32_t message : order)
        shown_[rows_[rowOf.at(GroupOf(message))].End++] = message;
}

std::optional<TMessageTable::TPlace> TMessageTable::Find(std::size_t message) const {
    const auto found = std::ranges::find(shown_, message);
    if (found == shown_.end())
        return std::nullopt;
    const auto place = static_cast<std::uint32_t>(found - shown_.begin());
    const auto row = std::ranges::upper_bound(rows_, place, {}, &TRow::Start) - 1;
    return TPlace{static_cast<std::size_t>(row - rows_.begin()), place - row->Start};
}

std::string TMessageTable::GroupText(std::size_t row) const {
    TMessageGroup group;
    for (std::size_t member = 0; member < MemberCount(row); ++member)
        group.Messages.push_back(Member(row, member));
    if (grouping_ == TMessageGrouping::Cause) {
        const TMessageGroup& whole = digest_->Causes()[digest_->CauseOf(group.Messages.front())];
        if (group.Messages.size() == whole.Messages.size())
            return conferix::GroupText(Messages(), whole);
        // A filter shows a part of the group.
        std::ranges::sort(group.Messages);
        std::set<std::string_view> guides;
        for (const std::size_t message : group.Messages)
            guides.insert(Messages()[message]->NumeroGuia());
        guides.erase("");
        group.Guides = guides.size();
        group.Count = group.Messages.size();
        group.SameReason = whole.SameReason;
        group.SameCause = whole.SameCause;
        return conferix::GroupText(Messages(), group);
    }
    const TValidationIdentity* rule = Messages()[group.Messages.front()]->Rule();
    return fmt::format("{} mensagens: {}",
                       TFormatSettings::Regional().Count(static_cast<std::int64_t>(group.Messages.size())),
                       rule != nullptr ? rule->Description : "o arquivo como um todo");
}

} // namespace conferix
