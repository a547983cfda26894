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

TEST(XmlEncoding, NamesThePlaceOfBytesThatDoNotDecode) {
    const struct {
        std::string Bytes;
        int Line;
        int Column;
        const char* Reason;
    } cases[] = {
        {"<a>\n é\xE9</a>", 2, 3,
         "não declara a codificação e por isso deveria estar em UTF-8, mas contém um byte (E9)"},
        {"<?xml version='1.0' encoding='UTF-8'?>\n\xE9", 2, 1,
         "declara a codificação UTF-8, mas contém um byte (E9)"},
        {"\xEF\xBB\xBF\n\xC3", 2, 1, "começa com a marca de UTF-8 (BOM), mas contém um byte (C3)"},
        {std::string("PK\x03\x04\0\0", 6), 1, 1, "compactado (ZIP ou semelhante) e não é um XML"},
        {"%PDF-1.4\n", 1, 1, "é um PDF, não um XML"},
        {"MZ\x90", 1, 1, "é um programa, não um XML"},
        {"<?xml version='1.0' encoding='UTF-16'?><a/>", 1, 1,
         "declara a codificação UTF-16, mas não está gravado nela"},
        {"<?xml version='1.0' encoding='klingon'?><a/>", 1, 1, "klingon"},
        {"\xFF\xFE<", 1, 1, "UTF-16LE"},
        {"<?xml version='1.0' encoding='Shift_JIS'?>\n<a>\x81\x20</a>", 2, 4, "Shift_JIS"},
    };
    for (const auto& c : cases) {
        try {
            DecodeXml(c.Bytes);
            ADD_FAILURE() << c.Reason;
        } catch (const EXmlEncoding& error) {
            EXPECT_THAT(error.Message()->Reason(), HasSubstr(c.Reason));
            EXPECT_EQ(error.Message()->Line(), c.Line) << c.Reason;
            EXPECT_EQ(error.Message()->LinePos(), c.Column) << c.Reason;
        }
    }
}

TEST(XmlEncoding, DoubtsWhatReadersReadDifferently) {
    const std::string iso = "<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>x ";
    const struct {
        std::string Bytes;
        std::string Reason; ///< empty: no doubt
    } cases[] = {
        {iso + "Conceição – hoje</a>",
         "O arquivo declara a codificação ISO-8859-1, mas foi gravado em UTF-8: lê-se "
         "\"ConceiÃ§Ã£o\" onde deve estar \"Conceição\". Grave o arquivo em ISO-8859-1, ou "
         "declare encoding=\"UTF-8\"."},
        {iso + "Concei\xE7\xE3o</a>", ""},
        {iso + "Conceição \xE3</a>", ""}, // letters of both encodings: neither was meant throughout
        {iso + "\xC3\xA3→</a>", ""},      // Windows-1252 has no arrow
        {iso + "\xC3\x83</a>", "O arquivo declara a codificação ISO-8859-1, mas foi gravado em UTF-8: lê-se "
                               "\"Ãƒ\" onde deve estar \"Ã\". Grave o arquivo em ISO-8859-1, ou declare "
                               "encoding=\"UTF-8\"."},
        {"<a>é</a>", ""},
        {"\xEF\xBB\xBF" + iso + "é</a>", "O arquivo começa com a marca de UTF-8 (BOM), mas declara a "
                                         "codificação ISO-8859-1. Foi lido como UTF-8; "
                                         "outros leitores podem recusá-lo ou lê-lo de outro modo. Declare "
                                         "encoding=\"UTF-8\" ou grave o arquivo "
                                         "em ISO-8859-1, sem a marca."},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?><a>é</a>", ""},
        {"\xFF\xFE" + Wide("<?xml version='1.0' encoding='UTF-16'?><a/>", false), ""},
    };
    for (const auto& c : cases) {
        const TXmlText decoded = DecodeXml(c.Bytes);
        const TXmlMessages doubts = CheckEncoding(decoded.Text, decoded.Encoding);
        EXPECT_EQ(doubts.empty() ? "" : doubts.front()->Reason(), c.Reason) << c.Bytes;
        EXPECT_LE(doubts.size(), 1U);
        if (!doubts.empty()) {
            EXPECT_EQ(doubts.front()->MsgType(), TMessageType::mtWarning);
        }
    }
    EXPECT_EQ(DeclaredEncoding("\n <?xml version='1.0' encoding='X'?>"), "X");
}

TEST(XmlEncoding, AnsiReplacesWhatItLacks) {
    EXPECT_EQ(EncodeAnsi("aé€→😀z"), "a\xE9\x80??z");
}

} // namespace
} // namespace conferix
