#pragma once

#include "xml/xml_document.h"
#include "xml/xml_message.h"

#include <memory>
#include <string>

namespace conferix {

/// What a parse ends in: a document and no message, or the messages and no document.
struct TXmlParseResult {
    std::shared_ptr<TXmlDocument> Document;
    TXmlMessages Messages;
};

/// What a text may contain.
enum class TXmlDoctype { Refused, Ignored };

/// Strict XML 1.0 parser. Positions count characters; nothing outside the text is ever read.
class TXmlParser {
  public:
    /// Parses a text in UTF-8 (any encoding that its declaration names is passed over). A DOCTYPE is
    /// refused in files of the standard, which define none, and ignored in schema files.
    static TXmlParseResult Parse(std::shared_ptr<const std::string> text,
                                 TXmlDoctype doctype = TXmlDoctype::Refused);
    static TXmlParseResult Parse(std::string text, TXmlDoctype doctype = TXmlDoctype::Refused);
    /// The same without the fast reader, which Parse tries first: what decides on all that the fast reader
    /// leaves.
    static TXmlParseResult ParseByJudge(std::shared_ptr<const std::string> text,
                                        TXmlDoctype doctype = TXmlDoctype::Refused);
};

} // namespace conferix
