#pragma once

#include "xml/xml_node.h"

#include <string>

namespace conferix {

/// The procedure or expense that an element is or belongs to, as "item 3 (código 40301630)", in a document
/// whose lines are so long that a line number tells nothing; empty in any other and outside items.
std::string FindingItem(const TXmlNode& element);

} // namespace conferix
