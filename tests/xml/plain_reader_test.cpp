// The fast reader against the parser that decides: the same tree wherever it takes a text.
#include "support/tree_text.h"
#include "xml/plain_reader.h"

#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

using namespace conferix;

namespace {

/// Compares both ways of reading; true where the fast reader takes the text.
bool Agree(const std::string& text) {
    const auto shared = std::make_shared<const std::string>(text);
    const std::shared_ptr<TXmlDocument> plain = ReadPlainXml(shared);
    if (plain == nullptr)
        return false;
    const TXmlParseResult judged = TXmlParser::ParseByJudge(shared);
    if (judged.Document == nullptr)
        ADD_FAILURE() << "takes what is wrong (" << judged.Messages.front()->Reason()
                      << "): " << text.substr(0, 2000);
    else
        EXPECT_EQ(TreeText(*plain), TreeText(*judged.Document)) << text.substr(0, 2000);
    return true;
}

std::vector<std::string> Examples() {
    std::vector<std::string> texts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(CONFERIX_FONTE "/exemplos")) {
        if (entry.path().extension() != ".xml" && entry.path().extension() != ".xte")
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        texts.push_back(DecodeXml({std::istreambuf_iterator<char>(file), {}}).Text);
    }
    return texts;
}

} // namespace

TEST(PlainReader, TakesWhatFilesHave) {
    const char* const taken[] = {
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone='no' ?>\r\n<!-- a -->\n<?p  q "
        "?><a/>\n<!---->",
        "<a>\n  <b>x</b>\r\n\t<c> </c>\r<d></d></a>",
        "<a b='1' c = \"&#65;&quot;\n\r\n\t&#10;é\"\n/>",
        "<a>1 &lt; 2 &amp;&#x41;&#13;]] ]&gt;</a>",
        "<a>x<!-- \r\n -->y<?p?><![CDATA[<&]]]]>z<![CDATA[]]></a >",
        "<a>&#32;<b/>&#32; <!-- --> <b/>t</a>",
        "<n:a xmlns:n='u'><n:b n:c='é€\U0001F600'>ç\nã<n:d/></n:b></n:a>",
        "<a>\x7F ]]</a>",
    };
    for (const std::string text : taken)
        EXPECT_TRUE(Agree(text)) << text;
    for (const std::string& text : Examples())
        EXPECT_TRUE(Agree(text)) << text.substr(0, 300);
}

TEST(PlainReader, LeavesTheRestToTheParser) {
    const char* const left[] = {
        "",
        "x",
        "<a",
        "<a>",
        "<a></b>",
        "<a/><b/>",
        "<a/>x",
        " <?xml version='1.0'?><a/>",
        "<?xml version='1.1'?><a/>",
        "<?xml version='1.0'encoding='UTF-8'?><a/>",
        "<?xml version='1.0' encoding='1'?><a/>",
        "<?xml version='1.0' encoding='x'standalone='yes'?><a/>",
        "<!DOCTYPE a><a/>",
        "<a>]]></a>",
        "<a>&x;</a>",
        "<a>&#0;</a>",
        "<a>&#xD800;</a>",
        "<a>\x01</a>",
        "<a>\xC0\x80</a>",
        "<a>\xED\xA0\x80</a>",
        "<a>\xEF\xBF\xBE</a>",
        "<a>\xC3</a>",
        "<a b='1' b='2'/>",
        "<a b='<'/>",
        "<a b=1/>",
        "<a b='1'c='2'/>",
        "<a><!-- -- --></a>",
        "<a><!-- ---></a>",
        "<a><?xml x?></a>",
        "<a><?p?q?></a>",
        "<a><![CDATA[</a>",
        "<1/>",
        "<a / >",
        "<a>&amp</a>",
        "<\xC3\xA9/>",
        "<a>&#4294967361;</a>",
    };
    for (const std::string text : left)
        EXPECT_EQ(ReadPlainXml(std::make_shared<const std::string>(text)), nullptr) << text;
}

/// Mutants of all examples, of which enough have to be taken for the comparison to mean something.
TEST(PlainReader, AgreesWithTheParserOnMutants) {
    constexpr const char* kPieces[] = {
        "<",  ">",    "&",    "&amp;",      "&#233;",        "]]>",     "\r",   "\n", "\r\n",
        "é",  "\xC3", "\x01", "<!-- c -->", "<![CDATA[d]]>", "<?p i?>", "<x/>", "'",  "\"",
        "=",  " ",    "/",    "-",          "a='b'",         "&lt",     "\t",   "]",  "?>",
        "--", "<x>",  "</x>", "\U0001F600"};
    const std::vector<std::string> seeds = Examples();
    // Every other mutant is one of a small text with something of everything.
    const std::string small =
        "<?xml version='1.0'?><!-- é --><a x='1' y=\"é\"><b>1&amp;2</b>\r\n<c><![CDATA[d]]>e</c>\n"
        "<?p i?>\t<d/><d>f</d> g <e z='&lt;'> </e></a>\n<!-- h -->";
    std::mt19937 random(20260131);
    const auto below = [&random](std::size_t limit) { return random() % std::max<std::size_t>(limit, 1); };
    int taken = 0;
    constexpr int kMutants = 8000;
    for (int i = 0; i < kMutants && !::testing::Test::HasFailure(); ++i) {
        std::string text = i % 2 == 0 ? small : seeds[below(seeds.size())];
        for (std::size_t changes = 1 + below(2); changes > 0; --changes) {
            const std::size_t at = below(text.size());
            switch (below(4)) {
            case 0:
                text.erase(at, 1 + below(4));
                break;
            case 1:
                text.insert(at, text.substr(below(text.size()), 1 + below(30)));
                break;
            default:
                // Half of the insertions stand where text may be, so that enough mutants stay well-formed.
                text.insert(below(2) == 0 ? at : std::min(text.find('>', at), text.size() - 1) + 1,
                            kPieces[below(std::size(kPieces))]);
            }
        }
        taken += Agree(text) ? 1 : 0;
    }
    EXPECT_GT(taken, kMutants / 8);
    RecordProperty("taken", taken);
}
