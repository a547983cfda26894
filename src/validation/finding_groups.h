// Which findings are of one cause, and those that a run counts without keeping them.
#pragma once

#include "xml/xml_message.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace conferix {

/// What findings of one cause share: the rule and the field, the severity, and the fault of the element. For
/// as long as the message of which it is.
struct TFindingKey {
    const TValidationIdentity* Rule = nullptr;
    TMessageType Type = TMessageType::mtError;
    std::string_view Campo;
    std::uint64_t Key = 0; ///< of a message that has one
    std::string Sentence;  ///< of one that has none, without what differs from guide to guide

    static TFindingKey Of(const TXmlMessage& message);
    /// Becomes that of a message.
    void Assign(const TXmlMessage& message);
    bool operator==(const TFindingKey&) const = default;
};

struct TFindingKeyHash {
    std::size_t operator()(const TFindingKey& key) const;
};

/// The findings of one cause that are not kept.
struct TUnkeptGroup {
    std::shared_ptr<const TXmlMessage> First;
    std::size_t Count = 0;
    std::size_t Lines = 0; ///< in which they are
    std::unordered_set<std::string> Guides;
    bool SameReason = true; ///< false where their sentences differ
    bool SameCause = true;  ///< false where they differ in more than the place
    std::int32_t LastLine = 0;
};

/// Counts findings by their cause. Of very many causes only the first are told apart.
class TUnkeptGroups {
  public:
    void Add(const std::shared_ptr<const TXmlMessage>& message);
    /// The group of a message, to count further findings like it; null for one that is not told apart.
    TUnkeptGroup* GroupOf(const std::shared_ptr<const TXmlMessage>& message);
    static void Count(TUnkeptGroup& group, const std::string& guide, std::int32_t line);

    const std::vector<TUnkeptGroup>& Groups() const { return groups_; }
    std::vector<TUnkeptGroup>& Groups() { return groups_; }

  private:
    std::unordered_map<TFindingKey, std::size_t, TFindingKeyHash> known_;
    std::vector<TUnkeptGroup> groups_;
};

/// What two findings of one cause have to share so that only their places differ.
bool IsSameCause(const TXmlMessage& left, const TXmlMessage& right);

} // namespace conferix
