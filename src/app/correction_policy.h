// Which corrections are safe to apply without asking.
#pragma once

#include "validation/solver.h"
#include "xml/xml_document.h"
#include "xml/xml_message.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace conferix {

/// Number of a tag in document order, 0-based. Corrections of values leave it as it is, so that it finds an
/// element again in a corrected text.
using TTagNumber = std::uint32_t;

/// The findings of one validation by the elements that they are about.
class TFindingMap {
  public:
    /// Only errors and fatal errors count. The document is the one that was validated.
    TFindingMap(const TXmlDocument& document, const TXmlMessages& messages);

    struct TEntry {
        const TXmlNode* Node; ///< the tag, or the last one that starts before the place
        TTagNumber Number;
        bool IsAtTag;
        std::shared_ptr<const TXmlMessage> Message;
    };
    /// In document order.
    const std::vector<TEntry>& Entries() const { return entries_; }
    /// First finding at an element, or null.
    const TXmlMessage* At(const TXmlNode& node) const;
    /// First finding of what belongs elsewhere and holds other elements, among them those that `holds`
    /// accepts; null when there is none.
    template<class Holds>
    const TXmlMessage* Stray(const Holds& holds) const {
        for (const TEntry& entry : entries_)
            if ((entry.Message->Kind() == TFindingKind::UnknownElement ||
                 entry.Message->Kind() == TFindingKind::Misplaced) &&
                entry.Node->FirstChildTag() != nullptr && entry.IsAtTag && holds(*entry.Node))
                return entry.Message.get();
        return nullptr;
    }

  private:
    std::vector<TEntry> entries_;
    std::unordered_map<const TXmlNode*, const TXmlMessage*> byNode_;
};

/// The bill that an element belongs to: its guide, or the document's root.
const TXmlNode& GuiaOf(const TXmlNode& node);
/// Why a correction of the hash has to wait, as the end of a sentence: where the text of the file was misread
/// it would store the hash of a text that nobody meant. Empty where it may be applied.
std::string MisreadRefusal(const ISolver& solver, const TXmlMessages& messages);

/// Decides for one validation which of the corrections that it offers make no bill worse.
class TCorrectionPolicy {
  public:
    /// The messages have to live as long. `leftAlone`: numbers of the guides whose amounts are not to be
    /// corrected.
    TCorrectionPolicy(const TXmlDocument& document, const TXmlMessages& messages,
                      const std::set<TTagNumber>& leftAlone);

    /// Why a correction must not be applied without asking, as the end of a sentence; empty when it may. The
    /// amounts of one item or guide are corrected all or none.
    std::string Refusal(const ISolver& solver) const;

  private:
    std::string OwnRefusal(const TUpdateNodeValueSolver& solver) const;
    std::string AmountRefusal(const TUpdateNodeValueSolver& solver) const;
    /// The finding for which a value cannot be relied on, or null.
    const TXmlMessage* FindingOf(const TXmlNode& operand) const;
    /// The finding for which the structure of an item or guide cannot be summed up, or null.
    const TXmlMessage* StructureFinding(const TXmlNode& scope) const;
    /// True when a finding in a branch of an item or guide is one for which amounts may count wrongly.
    bool Touches(const TFindingMap::TEntry& entry, const TXmlNode& branch) const;
    bool HoldsAmounts(const TXmlNode& node) const;

    TFindingMap findings_;
    const TXmlMessages& messages_;
    std::unordered_set<const TXmlNode*> leftAlone_;
    const TXmlMessage* stray_ = nullptr;            ///< items that stand somewhere else
    std::unordered_set<const TXmlNode*> contested_; ///< elements for which different values are demanded
    std::unordered_map<const TXmlNode*, std::string> refusedScopes_;
    mutable std::unordered_map<const TXmlNode*, bool> holdsAmounts_;
    mutable std::unordered_map<const TXmlNode*, const TXmlMessage*> structure_;
};

} // namespace conferix
