#include "xml/xml_encoding.h"

#include "platform/utf8.h"

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
        {"<?xml version='1.0' encoding='IBM850'?><a>\x82</a>",
         "<?xml version='1.0' encoding='IBM850'?><a>é</a>"},
        {"<?xml version='1.0' encoding='macintosh'?><a>\x8E</a>",
         "<?xml version='1.0' encoding='macintosh'?><a>é</a>"},
        {"<?xml version='1.0' encoding='cp1250'?><a>\xB9</a>",
         "<?xml version='1.0' encoding='cp1250'?><a>ą</a>"},
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
    // Letters of one encoding and of the other: guessed where each byte can be one letter only.
    for (const auto& [bytes, text] : {std::pair{"<a>Concei\xE7\xE3o ção</a>", "<a>Conceição ção</a>"},
                                      {"\xEF\xBB\xBF<a>\xE9 ção</a>", "<a>é ção</a>"},
                                      {"<a>ção JO\xC3O n\xBA 1\xAA IRM\xC3 IN\xCAS C\xC2MARA</a>",
                                       "<a>ção JOÃO nº 1ª IRMÃ INÊS CÂMARA</a>"},
                                      {"<a>IRM\xC3\xA0MARIA JOS\xC9</a>", "<a>IRMÃ\u00A0MARIA JOSÉ</a>"},
                                      {"<a>\x93MA\xC7\xC3\x94 \x96 \x80</a>", "<a>“MAÇÃ” – €</a>"},
                                      {"<a>JOS\xC9\x92S f\xE3</a>", "<a>JOSÉ’S fã</a>"},
                                      {"<a>\x93\xE9\x94 ção x \x96 \x80</a>", "<a>“é” ção x – €</a>"},
                                      {"<?xml version='1.0' encoding='UTF-16'?><a>ção</a>",
                                       "<?xml version='1.0' encoding='UTF-16'?><a>ção</a>"}})
        EXPECT_EQ(DecodeXml(bytes, TXmlUndecodable::Guessed).Text, text);
    for (const auto& [bytes, unknown] :
         {std::pair{"<a>\x81</a>", "que letra é este byte: 81 na linha 1. "},
          {"<a>ção\nMANH\xC3</a>", "C3 na linha 2. "},
          {"<a>ção</a>\n<b>\x93\xE9</b>", "93 na linha 2. "},
          {"ção \xE9 \xA7\n\xE2\x80\nx\xA9",
           "que letras são estes bytes: A7 na linha 1, E2 na linha 2, 80 na linha 2, "
           "A9 na linha 3. "}}) {
        try {
            DecodeXml(bytes, TXmlUndecodable::Guessed);
            ADD_FAILURE() << bytes;
        } catch (const EXmlEncoding& error) {
            EXPECT_THAT(error.what(), HasSubstr(unknown));
        }
    }
    for (const char* sound :
         {"\xC3\xA3α", "Concei\xE7\xE3o", "Č", "\xE7\xE3o \x93MANH\xC3\x94", "L\xC3\xA0 \xE9 \xE7 \xFA",
          "IRM\xC3\xA0MARIA", "IRM\xC3\x96MARIA IRM\xC3\x97", "CL\xC3\xADNICA", "\xABIRM\xC3\xBB",
          "IRM\xC3\x92S", "IRM\xC3\x95\xC9LIDA IRM\xC3\x85 ITA\xCD\xA0SP", "1\x84IRM\xC3\x93 x",
          "MARCA\xC2\xAE \xE9", "10 cm\xC2\xB2 \xC2\xA9 \xC2\xAE IRM\xC3"})
        EXPECT_FALSE(FindMisreading(DecodeXml(head + sound).Text, {"windows-1252", false, nullptr})) << sound;
    for (const char* misread : {"VOV\xC3\x94 \xE9 \xE7 \xFA", "ida \xC3\xA0 rua \xE9 \xE7 \xFA",
                                "\xE9 \xE7 n\xC2\xBA", "L\xC3\xADvia",
                                "CAM\xC3\x95"
                                "ES",
                                "K\xC3\xB6ln", "x \xE2\x80\x93 y", "MARCA\xC2\xAE", "10 cm\xC2\xB2 \xC2\xA9"})
        EXPECT_TRUE(FindMisreading(DecodeXml(head + misread).Text, {"windows-1252", false, nullptr}))
            << misread;
    // Most letters decide; what is no UTF-8 is kept as it reads.
    for (const auto& [written, meant] : {std::pair{"é é ã Fran\xE7ois", "é é ã François"},
                                         {"Č é \x81", "Č é \xC2\x81"},
                                         {"é à \xE7ã é", "é à çã é"},
                                         {"é – 😀", "é – 😀"},
                                         {"JOS\xC9\xAE é é ã Fran\xE7ois", "JOSÉ® é é ã François"},
                                         {"CLÍNICA é IRM\xC3\xA0", "CLÍNICA é IRMà"},
                                         {"\xE9 \xC3O \xF3 \xFA \xE1 \xED \xF5", "é ÃO ó ú á í õ"},
                                         {"X®", "X®"}}) {
        const std::string text = DecodeXml(head + written + " á ó ú").Text;
        const auto misreading = FindMisreading(text, {"windows-1252", false, nullptr});
        ASSERT_TRUE(misreading) << meant;
        EXPECT_EQ(MeantText(text, *misreading), head + meant + " á ó ú");
        EXPECT_EQ(misreading->Kept.empty(), FindMalformedUtf8(written) == std::string_view(written).size());
    }
    EXPECT_EQ(EncodeXml("<?xml version='1.0' encoding='US-ASCII'?><a>é</a>", {}),
              "<?xml version='1.0' encoding='US-ASCII'?><a>&#233;</a>");
    // What would be read as something else is not written.
    for (const char* wrong : {"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a/>", "\xEF\xBB\xBF<a/>"})
        EXPECT_THROW(EncodeXml(wrong, {}), EXmlEncoding) << wrong;
    EXPECT_EQ(EncodeXml(head + "<!-- - -- ]]> --><a>→</a>", {}), head + "<!-- - -- ]]> --><a>&#8594;</a>");
}

TEST(XmlEncoding, AnsiReplacesWhatItLacks) {
    EXPECT_EQ(EncodeAnsi("aé€→😀z"), "a\xE9\x80??z");
}

} // namespace
} // namespace conferix
