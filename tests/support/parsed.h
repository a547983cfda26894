#pragma once

#include "xml/xml_parser.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace conferix {

/// Parses a text that is expected to be well-formed; null (and a failed expectation) when it is not.
inline std::shared_ptr<TXmlDocument> Parsed(std::string xml) {
    TXmlParseResult result = TXmlParser::Parse(std::move(xml));
    for (const auto& message : result.Messages)
        ADD_FAILURE() << message->Msg() << "\n" << message->SrcText();
    return result.Document;
}

} // namespace conferix
