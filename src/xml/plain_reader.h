// A fast reader for XML as files of the standard are written.
#pragma once

#include "xml/xml_document.h"

#include <memory>
#include <string>

namespace conferix {

/// Builds the tree of a text in UTF-8 in one pass. It takes well-formed documents without DOCTYPE whose names
/// are ASCII; at anything else, be it unusual or wrong, it answers null, and the parser has to decide. What
/// it takes has the same tree, to the byte and position, as the parser gives it.
std::shared_ptr<TXmlDocument> ReadPlainXml(std::shared_ptr<const std::string> text);

} // namespace conferix
