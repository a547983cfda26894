#pragma once

#include "xml/xml_document.h"

#include <string>

namespace conferix {

/// The whole tree as text in UTF-8. Where the tree was not changed the parsed text is repeated to the
/// letter, so that a correction changes only the lines that it must.
std::string WriteXml(const TXmlDocument& document);

/// Text or attribute value with the characters that markup reserves written as references.
std::string EscapeXml(std::string_view text, bool attribute);

} // namespace conferix
