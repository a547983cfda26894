// Findings of one cause, told once.
#pragma once

#include "validator/tiss_validator.h"
#include "xml/xml_message.h"

#include <cstddef>
#include <string>
#include <vector>

namespace conferix {

/// Findings of one cause: the same rule and field, the same severity, and the same fault of the same element
/// (where the value is the fault, of the same value).
struct TMessageGroup {
    std::vector<std::size_t> Messages; ///< their indices, 0-based, in order; never empty
    std::size_t Count = 0;             ///< of all of them, those included that are not listed
    std::size_t Guides = 0;            ///< distinct guides among all of them
    std::size_t UnlistedLines = 0;     ///< lines of those that are not listed
    bool SameReason = true;            ///< false where their sentences differ
    bool SameCause = true;             ///< false where amounts, dates or other values differ
};

/// Groups the messages of a file. First what stands before the findings of rules or concerns the file as a
/// whole, then the groups of several findings, those of most guides first and then by their first line, then
/// the findings that stand alone, in their order; with no group of several, all in their order. `unlisted`:
/// the findings that were only counted.
std::vector<TMessageGroup> GroupMessages(const TXmlMessages& messages,
                                         const std::vector<TUnkeptFindings>& unlisted = {});

/// Each message as a group of its own, in their order.
std::vector<TMessageGroup> UngroupedMessages(const TXmlMessages& messages);

/// Puts groups into the order in which a file is gone through: what concerns it as a whole, the groups of
/// several findings, the findings that stand alone by their lines, and what is said after all rules.
void SortByLine(const TXmlMessages& messages, std::vector<TMessageGroup>& groups);

/// What a user reads of a group, like TXmlMessage::Msg of one finding: "300 guias: ... (linhas 37, 120, 203 e
/// mais 297)".
std::string GroupText(const TXmlMessages& messages, const TMessageGroup& group);

} // namespace conferix
