#pragma once

#include "xml/xml_document.h"

#include <string>

namespace conferix {

/// The two encodings in which health plans compute the epilogue's hash.
enum class THashEncoding {
    Iso88591, ///< the ANSI code page of Portuguese systems, Windows-1252
    Utf8
};

/// The digests of one document.
struct THashes {
    std::string Iso88591;
    std::string Utf8;
    bool operator==(const THashes&) const = default;
};

/// MD5 of the text values of all elements before the epilogue, in document order.
class THashCalculator {
  public:
    /// The digest as 32 lower-case hexadecimal digits.
    static std::string Calculate(const TXmlDocument& document, THashEncoding encoding);
    /// Both digests from one walk.
    static THashes CalculateBoth(const TXmlDocument& document);
    /// Those of the text that was meant, where the document's letters were misread; else as CalculateBoth.
    static THashes CalculateMeant(const TXmlDocument& document);
};

} // namespace conferix
