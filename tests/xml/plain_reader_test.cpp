// The fast reader against the parser that decides: the same tree wherever it takes a text.
#include "support/case_file.h"
#include "support/test_files.h"
#include "support/tree_text.h"
#include "xml/plain_reader.h"

#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

#include <gtest/gtest.h>

#include <filesystem>
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
        texts.push_back(DecodeXml(ReadTestFile(entry.path())).Text);
    }
    return texts;
}

} // namespace

TEST(PlainReader, TakesWhatFilesHaveAndLeavesTheRestToTheParser) {
    for (const tests::TCase& c : tests::Cases("xml/plain_reader.casos"))
        for (const auto& [text, none] : c.Inputs)
            EXPECT_EQ(Agree(text) ? "lido" : "deixado", c.Expected.front()) << text;
    for (const std::string& text : Examples())
        EXPECT_TRUE(Agree(text)) << text.substr(0, 300);
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
