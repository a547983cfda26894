// Names that were probably meant by a name that is not known.
#pragma once

#include "xml/xml_node.h"

#include <cstddef>
#include <string_view>

namespace conferix {

/// True for texts that differ at most in ASCII upper and lower case letters.
bool SameButForCase(std::string_view left, std::string_view right);

/// Number of letters to be changed, added or left out to make one text of the other, ASCII case ignored;
/// `limit` + 1 for anything above the limit.
std::size_t EditDistance(std::string_view left, std::string_view right, std::size_t limit);

/// Typing slips between two names, 0 when they differ in case alone; kNotAlike for names that are no slips of
/// each other, for which names of up to three letters and of over 64 bytes are never taken.
std::size_t NameSlips(std::string_view left, std::string_view right);
inline constexpr std::size_t kNotAlike = 3;

/// The first child tag of that local name, else the one whose name is the nearest slip of it; null when there
/// is none.
TXmlNode* ChildMeant(TXmlNode& parent, std::string_view localName);

} // namespace conferix
