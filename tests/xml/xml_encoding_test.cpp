#include "support/case_file.h"
#include "xml/xml_encoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

using testing::HasSubstr;

std::string Wide(std::string_view ascii, bool bigEndian) {
    std::string bytes;
    for (const char c : ascii)
        bytes += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    return bytes;
}

TEST(XmlEncoding, DecodesAndWritesBackEveryByte) {
    std::string everyByte = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>";
    for (int byte = 0x80; byte < 0x100; ++byte)
        everyByte += static_cast<char>(byte);
    const std::string utf16 = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>x</a>";
    const struct {
        std::string Bytes;
        std::string Text;
    } cases[] = {
        {"<a>é</a>", "<a>é</a>"},
        {"\xEF\xBB\xBF<a>é</a>", "<a>é</a>"},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a>é</a>",
         "<?xml version='1.0' encoding='ISO-8859-1'?><a>é</a>"},
        {"<?xml version='1.0' encoding='iso-8859-1'?><a>\xE9\x80</a>",
         "<?xml version='1.0' encoding='iso-8859-1'?><a>é€</a>"},
        {"<?xml version='1.0' encoding=\"ISO-8859-15\"?><a>\xA4</a>",
         "<?xml version='1.0' encoding=\"ISO-8859-15\"?><a>€</a>"},
        {"\xFF\xFE" + Wide(utf16, false), utf16},
        {"\xFE\xFF" + Wide(utf16, true), utf16},
        {Wide(utf16, false), utf16},
        {"", ""},
        {everyByte, ""},
    };
    for (const auto& c : cases) {
        const TXmlText decoded = DecodeXml(c.Bytes);
        if (c.Bytes != everyByte) {
            EXPECT_EQ(decoded.Text, c.Text);
        }
        EXPECT_EQ(EncodeXml(decoded.Text, decoded.Encoding), c.Bytes) << decoded.Text;
    }
}

TEST(XmlEncoding, FindsAByteThatIsNoUtf8AtAnyPlace) {
    for (std::size_t at = 3; at < 3 + 3 * 64; ++at) {
        std::string bytes = "<a>" + std::string(300, 'x') + "é</a>";
        bytes[at] = '\xFF';
        try {
            DecodeXml(bytes);
            ADD_FAILURE() << at;
        } catch (const EXmlEncoding& error) {
            EXPECT_EQ(error.Message()->FilePos(), static_cast<std::int32_t>(at));
        }
    }
}

TEST(XmlEncoding, TakesOverBytesThatAreTheirOwnText) {
    std::string plain = "<?xml version='1.0' encoding='ISO-8859-1'?><a>x</a>";
    const std::string copy = plain;
    EXPECT_EQ(TakeXml(plain).Text, copy);
    EXPECT_EQ(plain, "");
    for (std::string bytes :
         {"\xEF\xBB\xBF<a>é</a>", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>"}) {
        const std::string before = bytes;
        EXPECT_NE(TakeXml(bytes).Text, before);
        EXPECT_EQ(bytes, before);
    }
}

TEST(XmlEncoding, WritesWhatAnEncodingLacksAsReference) {
    const std::string head = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
    EXPECT_EQ(EncodeXml(head + "<a b='→' c=\"é\">x→😀</a>", {}),
              head + "<a b='&#8594;' c=\"\xE9\">x&#8594;&#128512;</a>");
    for (const char* place : {"<a><!-- → --></a>", "<a><![CDATA[→]]></a>", "<a→/>", "<?p →?><a/>"}) {
        try {
            EncodeXml(head + "\n" + place, {});
            ADD_FAILURE() << place;
        } catch (const EXmlEncoding& error) {
            EXPECT_EQ(error.Message()->Line(), 2) << place;
            EXPECT_THAT(error.what(), HasSubstr("ISO-8859-1"));
        }
    }
    EXPECT_EQ(EncodeXml(head + "<!-- - -- ]]> --><a>→</a>", {}), head + "<!-- - -- ]]> --><a>&#8594;</a>");
}

TEST(XmlEncoding, DoubtsWhatReadersReadDifferently) {
    for (const tests::TCase& c : tests::Cases("xml/doubts.casos")) {
        const TXmlText decoded = DecodeXml(c.Inputs.front().first);
        std::vector<std::string> doubts;
        for (const auto& doubt : CheckEncoding(decoded.Text, decoded.Encoding)) {
            EXPECT_EQ(doubt->MsgType(), TMessageType::mtWarning);
            doubts.push_back(doubt->Reason());
        }
        ExpectLines(c, doubts);
    }
    EXPECT_EQ(DeclaredEncoding("\n <?xml version='1.0' encoding='X'?>"), "X");
}

TEST(XmlEncoding, AnsiReplacesWhatItLacks) {
    EXPECT_EQ(EncodeAnsi("aé€→😀z"), "a\xE9\x80??z");
}

} // namespace
} // namespace conferix
