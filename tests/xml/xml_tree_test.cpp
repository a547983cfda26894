#include "support/case_file.h"
#include "support/parsed.h"
#include "xml/xml_encoding.h"
#include "xml/xml_scanner.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

using testing::ElementsAre;

/// Kinds, names, values and positions of every node.
std::vector<std::string> Dump(const TXmlDocument& document) {
    static constexpr const char* kKinds[] = {"doc", "tag", "text", "comment", "cdata", "decl", "pi"};
    std::vector<std::string> lines;
    TXmlMappingScanner::Scan(document.Root(), [&](const TXmlNode& node, bool&) {
        if (node.Kind() != TXmlNodeKind::xnDocument)
            lines.push_back(
                fmt::format("{}:{}/{} {}{}{}", node.Line(), node.LinePos(), node.FilePos(),
                            kKinds[static_cast<int>(node.Kind())],
                            node.QualifiedName().empty() ? "" : fmt::format(" <{}>", node.QualifiedName()),
                            node.HasValue() ? fmt::format(" \"{}\"", node.Value()) : ""));
    });
    return lines;
}

TEST(XmlTree, HoldsKindsValuesAndPositions) {
    for (const tests::TCase& c : tests::Cases("xml/tree.casos"))
        ExpectLines(c, Dump(*Parsed(c.Inputs.front().first)));
}

/// The one message about bytes that cannot be decoded or a text that is not well-formed.
std::shared_ptr<const TXmlMessage> Refusal(const std::string& bytes) {
    try {
        const TXmlParseResult result = TXmlParser::Parse(DecodeXml(bytes).Text);
        EXPECT_FALSE(result.Document);
        EXPECT_EQ(result.Messages.size(), 1U);
        return result.Messages.front();
    } catch (const EXmlEncoding& error) {
        return error.Message();
    }
}

TEST(XmlTree, RefusesBadTextWithPlaceAndReason) {
    for (const tests::TCase& c : tests::Cases("xml/refusals.casos")) {
        const auto message = Refusal(c.Inputs.front().first);
        EXPECT_EQ(message->MsgType(), TMessageType::mtError) << c;
        ExpectLines(c, {fmt::format("{}:{} {}", message->Line(), message->LinePos(), message->Reason())});
    }
}

TEST(XmlTree, LooksUpByLocalName) {
    const auto document =
        Parsed("<r xmlns:n='u'><n:a><b>1</b><n:b>2</n:b></n:a><a><b>3</b><c><b>4</b></c></a></r>");
    const TXmlNode& root = *document->Element();
    EXPECT_EQ(ValueOf(root.Find("a/b")), "1");
    EXPECT_EQ(root.Find("a/c"), nullptr); // the first <a> has none
    // Steps of which one begins like another, or differs from it at its end alone.
    const auto alike = Parsed("<r><valor>1</valor><valorTotal><valor>2</valor><valorTotalA>3</valorTotalA>"
                              "<valorTotalB>4</valorTotalB></valorTotal></r>");
    for (const auto& [path, value] :
         {std::pair("valor", "1"), std::pair("valorTotal/valor", "2"),
          std::pair("valorTotal/valorTotalB", "4"), std::pair("valorTotal/valorTotal", ""),
          std::pair("valorTot", ""), std::pair("valor/valor", "")}) {
        EXPECT_EQ(ValueOf(alike->Element()->Find(path)), value) << path;
    }
    EXPECT_EQ(ValueOf(root.FirstDescendant("c")->Child("b")), "4");
    std::vector<std::string> values;
    for (const TXmlNode* node : root.Descendants("b"))
        values.emplace_back(node->Value());
    EXPECT_THAT(values, ElementsAre("1", "2", "3", "4"));
    EXPECT_EQ(&root.FirstDescendant("c")->Document(), document.get());
    EXPECT_EQ(root.Attribute("xmlns:n")->Value(), "u");
    EXPECT_EQ(root.Attribute("xmlns"), nullptr);
}

TEST(XmlTree, KeepsManyNamesApart) {
    constexpr std::uint32_t kNames = 3000;
    std::string text;
    for (std::uint32_t i = 0; i < 2 * kNames; ++i)
        text += "<n" + std::to_string(i % kNames) + "/>";
    const auto document = Parsed("<r>" + text + "</r>");
    std::uint32_t next = 0;
    for (const TXmlNode& node : document->Element()->ChildTags()) {
        EXPECT_EQ(node.LocalName(), "n" + std::to_string(next % kNames));
        EXPECT_EQ(node.Name().Id, 2 + next++ % kNames); // after the document's and the root's
    }
    EXPECT_EQ(document->NameCount(), 2 + kNames);
}

TEST(XmlTree, WalkStopsOnDemandAndStaysBelowItsRoot) {
    const auto document = Parsed("<r><a><b/><c/></a><d/></r>");
    std::string seen;
    TXmlMappingScanner::Scan(*document->Element(), [&](const TXmlNode& node, bool& stop) {
        seen += node.LocalName();
        stop = node.LocalName() == "c";
    });
    EXPECT_EQ(seen, "rabc");
    seen.clear();
    TXmlMappingScanner::Scan(*document->Element()->Child("a"),
                             [&](const TXmlNode& node, bool&) { seen += node.LocalName(); });
    EXPECT_EQ(seen, "abc");
}

TEST(XmlTree, AnswersTheOffsetOfAPlace) {
    const auto document = Parsed("<r>\r\n <é>x</é>\n</r>");
    const struct {
        std::int64_t Line, Column;
        std::uint32_t Offset;
    } cases[] = {{1, 1, 0},  {1, 99, 3}, {2, 1, 5}, {2, 2, 6}, {2, 4, 9},
                 {3, 1, 17}, {9, 1, 21}, {0, 0, 0}, {-5, 3, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(document->OffsetOf(c.Line, c.Column), c.Offset) << c.Line << ":" << c.Column;
}

TEST(XmlTree, TellsPlacesOfALongTextInAnyOrderAndOfRemovedNodes) {
    std::string text = "<r>";
    for (int i = 0; i < 3000; ++i)
        text += i % 3 == 0 ? "<a>é</a>" : i % 101 == 0 ? "\r\n<a/>" : "<a b='>'>ção</a>";
    const auto document = Parsed(text + "</r>");
    const std::size_t size = document->Text().size();
    for (std::size_t i = 0, at = 0; i < 500; ++i, at = (at + 7919) % size) {
        const TXmlPlace expected = TPositionCounter(document->Text()).PlaceOf(at);
        const TXmlPlace place = document->PlaceOf(at);
        EXPECT_EQ(std::tie(place.Line, place.LinePos, place.FilePos),
                  std::tie(expected.Line, expected.LinePos, expected.FilePos))
            << at;
    }
    TXmlNode* second = document->Element()->FirstChildTag()->NextSiblingTag();
    second->Remove();
    EXPECT_EQ(second->Parent(), nullptr);
    EXPECT_EQ(second->LinePos(), 12);
    EXPECT_EQ(second->TextPlace().LinePos, 21);
    const TXmlNode* added = document->NewTag("n");
    EXPECT_EQ(added->Line(), 0);
    EXPECT_EQ(added->Parent(), nullptr);
}

TEST(XmlTree, SurvivesAMillionNestedElementsAndALongAttribute) {
    constexpr int kDepth = 1000000;
    std::string deep;
    for (int i = 0; i < kDepth; ++i)
        deep += "<a>";
    deep += "x";
    for (int i = 0; i < kDepth; ++i)
        deep += "</a>";
    const auto document = Parsed(std::move(deep));
    int count = 0;
    TXmlMappingScanner::Scan(document->Root(), [&](const TXmlNode&, bool&) { ++count; });
    EXPECT_EQ(count, kDepth + 1);
    const auto wide = Parsed("<a b='" + std::string(20000000, 'x') + "'/>");
    EXPECT_EQ(wide->Element()->Attribute("b")->Value().size(), 20000000U);
}

} // namespace
} // namespace conferix
