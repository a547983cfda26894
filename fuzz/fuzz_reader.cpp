// The fast reader against the parser that decides: the same tree wherever it takes a text.
#include "support/tree_text.h"
#include "xml/plain_reader.h"
#include "xml/xml_parser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace conferix;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = std::make_shared<const std::string>(reinterpret_cast<const char*>(data), size);
    const std::shared_ptr<TXmlDocument> plain = ReadPlainXml(text);
    if (plain == nullptr)
        return 0;
    const TXmlParseResult judged = TXmlParser::ParseByJudge(text);
    if (judged.Document == nullptr || TreeText(*plain) != TreeText(*judged.Document))
        std::abort();
    return 0;
}
