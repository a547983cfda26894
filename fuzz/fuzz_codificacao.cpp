// Any bytes that are text come back as they were: as text always, and as the same bytes but for marks and
// references that can be written in more than one way.
#include "target.h"
#include "xml/xml_encoding.h"

using namespace conferix;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TXmlText read;
    try {
        read = DecodeXml(std::string(BytesOf(data, size)));
    } catch (const EXmlEncoding&) {
        return 0; // refused with a reason
    }
    if (const auto misreading = FindMisreading(read.Text, read.Encoding))
        MeantText(read.Text, *misreading);
    std::string written;
    try {
        written = EncodeXml(read.Text, read.Encoding);
    } catch (const EXmlEncoding&) {
        return 0;
    }
    const TXmlText again = DecodeXml(written);
    Demand(again.Text == read.Text, "what was written is read as the same text");
    Demand(EncodeXml(again.Text, again.Encoding) == written, "what was written is written again as it is");
    return 0;
}
