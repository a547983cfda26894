#pragma once

#include "xml/xml_document.h"

#include <string>
#include <string_view>

namespace conferix {

/// Reduces element values to plain ASCII without control characters, for health plans that compute the hash
/// in another encoding.
class TXmlSanitizer {
  public:
    /// Cleans the value of every element in place.
    static void Sanitize(TXmlDocument& document);
    /// The same on a text; a text that does not parse is answered as it is.
    static std::string SanitizeXml(const std::string& xml);
    /// Removes control characters, makes line ends blanks, trims, strips accents.
    static std::string SanitizeNodeValue(std::string_view value);
    /// Accented letters become their base letters; what has no likeness in ASCII becomes "?".
    static std::string StripAccents(std::string_view value);
};

} // namespace conferix
