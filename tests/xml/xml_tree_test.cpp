#include "xml/xml_parser.h"
#include "xml/xml_scanner.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::shared_ptr<TXmlDocument> Parse(std::string text) {
    TXmlParseResult result = TXmlParser::Parse(std::move(text));
    for (const auto& message : result.Messages)
        ADD_FAILURE() << message->Msg();
    return result.Document;
}

/// The tree in one line: kinds, names, values and positions of every node.
std::string Dump(const TXmlDocument& document) {
    static constexpr const char* kKinds[] = {"doc", "tag", "text", "comment", "cdata", "decl", "pi"};
    std::string out;
    TXmlMappingScanner::Scan(document.Root(), [&](const TXmlNode& node, bool&) {
        if (node.Kind() == TXmlNodeKind::xnDocument)
            return;
        out +=
            fmt::format("{}{}{}:{}@{}:{}/{}", out.empty() ? "" : " ", kKinds[static_cast<int>(node.Kind())],
                        node.QualifiedName().empty() ? "" : fmt::format("<{}>", node.QualifiedName()),
                        node.HasValue() ? fmt::format("\"{}\"", node.Value()) : "-", node.Line(),
                        node.LinePos(), node.FilePos());
    });
    return out;
}

TEST(XmlTree, HoldsKindsValuesAndPositions) {
    const struct {
        const char* Xml;
        const char* Tree;
    } cases[] = {
        {"<a/>", "tag<a>:-@1:1/0"},
        {"<a></a>", "tag<a>:-@1:1/0"},
        {"<a> x </a>", "tag<a>:\" x \"@1:1/0"},
        {"<a> </a>", "tag<a>:\" \"@1:1/0"},
        {"<n:a xmlns:n='u'><n:b>1</n:b>\n <c/>\n</n:a>",
         "tag<n:a>:-@1:1/0 tag<n:b>:\"1\"@1:18/17 tag<c>:-@2:2/31"},
        // Text between tags is no value, but it is kept where it is more than layout.
        {"<a>\n<b/>oi\n</a>", "tag<a>:-@1:1/0 tag<b>:-@2:1/4 text:\"oi\n\"@2:5/8"},
        {"<a>x&amp;y&#233;</a>", "tag<a>:\"x&yé\"@1:1/0"},
        {"<a>1<!--c-->2</a>", "tag<a>:\"12\"@1:1/0 text:\"1\"@1:4/3 comment:\"c\"@1:5/4 text:\"2\"@1:13/12"},
        {"<a><![CDATA[<x>]]></a>", "tag<a>:-@1:1/0 cdata:\"<x>\"@1:4/3"},
        {"<a>p<![CDATA[q]]> r</a>",
         "tag<a>:\"p r\"@1:1/0 text:\"p\"@1:4/3 cdata:\"q\"@1:5/4 text:\" r\"@1:18/17"},
        {"<a>\n <!--só isto-->\n</a>",
         "tag<a>:-@1:1/0 text:\"\n \"@1:4/3 comment:\"só isto\"@2:2/5 text:\"\n\"@2:16/19"},
        {"<?xml version='1.0'?><?pi d?><a/>", "decl:-@1:1/0 pi<pi>:\"d\"@1:22/21 tag<a>:-@1:30/29"},
        // Columns and offsets count characters; CR LF, CR and LF each end one line.
        {"<é>\r\n<b>ção</b><c/>\r<d/></é>",
         "tag<é>:-@1:1/0 tag<b>:\"ção\"@2:1/5 tag<c>:-@2:11/15 tag<d>:-@3:1/20"},
        {"<a>x\r\ny\rz</a>", "tag<a>:\"x\ny\nz\"@1:1/0"},
    };
    for (const auto& c : cases) {
        const auto document = Parse(c.Xml);
        ASSERT_TRUE(document) << c.Xml;
        EXPECT_EQ(Dump(*document), c.Tree) << c.Xml;
    }
}

TEST(XmlTree, RefusesBadTextWithPlaceAndReason) {
    const struct {
        std::string Xml;
        int Line;
        int Column;
        const char* Reason;
    } cases[] = {
        {"", 1, 1, "nenhum elemento"},
        {"  \n ", 2, 1, "nenhum elemento"},
        {"texto", 1, 1, "não é XML"},
        {"<a>\n  <b>\n</a>", 3, 1, "<b>, aberta na linha 2"},
        {"<a><b>", 1, 1, "sem fechar a tag <b>"},
        {"<a><b", 1, 4, "no meio de uma tag"},
        {"<a>&nbsp;</a>", 1, 4, "entidade"},
        {"<a x='1' x='2'/>", 1, 10, "duas vezes"},
        {"<a/><b/>", 1, 5, "depois do fim"},
        {"\n<?xml version='1.0'?><a/>", 2, 1, "espaço ou linha em branco antes da declaração XML"},
        {"<!--x-->\n<?xml version='1.0'?><a/>", 2, 1, "início do arquivo, sem nada antes dela"},
        {std::string("<a>\0</a>", 8), 1, 4, "controle invisível (U+0000)"},
        {"<a>\n\x1F</a>", 2, 1, "controle invisível (U+001F)"},
        {"<a>\xEF\xBF\xBE</a>", 1, 4, "caractere invisível (U+FFFE)"},
        {"<a>\n<!-- x -- y --></a>", 2, 10, "não pode conter \"--\""},
        {"<a><!-- - ---></a>", 1, 12, "não pode conter \"--\""},
        {"<!-- - --><a>&</a>", 1, 15, "&amp;"},
        {"<a>1 & 2</a>", 1, 6, "&amp;"},
        {"<a><![CDATA[x</a>", 1, 1, "CDATA"},
        {"<a>&#0;</a>", 1, 4, "não permite"},
        {"<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>&e;</a>", 1, 1, "DOCTYPE"},
        {"<!DOCTYPE a [<!ENTITY b 'x'><!ENTITY c '&b;&b;'>]><a>&c;</a>", 1, 1, "DOCTYPE"},
    };
    for (const auto& c : cases) {
        const TXmlParseResult result = TXmlParser::Parse(c.Xml);
        EXPECT_FALSE(result.Document) << c.Xml;
        ASSERT_EQ(result.Messages.size(), 1U) << c.Xml;
        const TXmlMessage& message = *result.Messages.front();
        EXPECT_EQ(message.MsgType(), TMessageType::mtError);
        EXPECT_THAT(message.Reason(), HasSubstr(c.Reason)) << c.Xml;
        EXPECT_EQ(message.Line(), c.Line) << c.Xml << message.Reason();
        EXPECT_GE(message.LinePos(), 1);
        if (c.Column > 1) {
            EXPECT_NEAR(message.LinePos(), c.Column, 2) << c.Xml << message.Reason();
        }
    }
}

TEST(XmlTree, LooksUpByLocalName) {
    const auto document =
        Parse("<r xmlns:n='u'><n:a><b>1</b><n:b>2</n:b></n:a><a><b>3</b><c><b>4</b></c></a></r>");
    const TXmlNode& root = *document->Element();
    EXPECT_EQ(ValueOf(root.Find("a/b")), "1");
    EXPECT_EQ(root.Find("a/c"), nullptr); // the first <a> has none
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
    const auto document = Parse("<r>" + text + "</r>");
    std::uint32_t next = 0;
    for (const TXmlNode& node : document->Element()->ChildTags()) {
        EXPECT_EQ(node.LocalName(), "n" + std::to_string(next % kNames));
        EXPECT_EQ(node.Name().Id, 2 + next++ % kNames); // after the document's and the root's
    }
    EXPECT_EQ(document->NameCount(), 2 + kNames);
}

TEST(XmlTree, WalkStopsOnDemandAndStaysBelowItsRoot) {
    const auto document = Parse("<r><a><b/><c/></a><d/></r>");
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
    const auto document = Parse("<r>\r\n <é>x</é>\n</r>");
    const struct {
        std::int64_t Line, Column;
        std::uint32_t Offset;
    } cases[] = {{1, 1, 0},  {1, 99, 3}, {2, 1, 5}, {2, 2, 6}, {2, 4, 9},
                 {3, 1, 17}, {9, 1, 21}, {0, 0, 0}, {-5, 3, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(document->OffsetOf(c.Line, c.Column), c.Offset) << c.Line << ":" << c.Column;
}

TEST(XmlTree, SurvivesAMillionNestedElementsAndALongAttribute) {
    constexpr int kDepth = 1000000;
    std::string deep;
    for (int i = 0; i < kDepth; ++i)
        deep += "<a>";
    deep += "x";
    for (int i = 0; i < kDepth; ++i)
        deep += "</a>";
    const auto document = Parse(std::move(deep));
    int count = 0;
    TXmlMappingScanner::Scan(document->Root(), [&](const TXmlNode&, bool&) { ++count; });
    EXPECT_EQ(count, kDepth + 1);
    const auto wide = Parse("<a b='" + std::string(20000000, 'x') + "'/>");
    EXPECT_EQ(wide->Element()->Attribute("b")->Value().size(), 20000000U);
}

} // namespace
} // namespace conferix
