#include "support/parsed.h"
#include "xml/xml_writer.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace conferix {
namespace {

struct TEditCase {
    const char* Name;
    std::string Before;
    std::function<void(TXmlDocument&)> Edit;
    std::string After;
};

TXmlNode& Element(TXmlDocument& document) {
    return *document.Element();
}

TEST(XmlWriter, ChangesOnlyWhatWasChanged) {
    const std::vector<TEditCase> cases = {
        {"nothing", "<?xml version='1.0'?>\r\n<!-- c -->\n<a  b = '1'><c ></c ></a >\n\n",
         [](TXmlDocument&) {}, "<?xml version='1.0'?>\r\n<!-- c -->\n<a  b = '1'><c ></c ></a >\n\n"},
        {"value", "<a>\n  <b>1</b >\n  <c>é</c>\n</a>",
         [](TXmlDocument& d) { Element(d).Child("b")->SetValue("2 < 3 & \"x\""); },
         "<a>\n  <b>2 &lt; 3 &amp; \"x\"</b >\n  <c>é</c>\n</a>"},
        {"value of empty tags", "<a><b/><c></c><d /></a>",
         [](TXmlDocument& d) {
             for (const char* name : {"b", "c", "d"})
                 Element(d).Child(name)->SetValue(name);
         },
         "<a><b>b</b><c>c</c><d>d</d></a>"},
        {"value removed", "<a><b>1</b></a>", [](TXmlDocument& d) { Element(d).Child("b")->SetValue(""); },
         "<a><b></b></a>"},
        {"value among comments, instructions and CDATA",
         "<a>"
         "<b>x<![CDATA[1]]></b><b>1<!-- é -->0<?p q?>0</b><b><!-- c --> 1 <?p?></b><b>\n<!-- c -->\n</b>"
         "<b><!-- c --></b><b><![CDATA[1]]></b></a>",
         [](TXmlDocument& d) {
             for (TXmlNode* node : Element(d).Descendants("b")) {
                 node->SetValue("9");
                 node->SetValue("2&");
                 EXPECT_EQ(node->Value(), "2&");
             }
         },
         "<a>"
         "<b>2&amp;<![CDATA[1]]></b><b>2&amp;<!-- é --><?p q?></b><b><!-- c -->2&amp;<?p?></b>"
         "<b>2&amp;<!-- c --></b><b>2&amp;<!-- c --></b><b>2&amp;<![CDATA[1]]></b></a>"},
        {"no value beside child tags", "<a><b/></a>", [](TXmlDocument& d) { Element(d).SetValue("x"); },
         "<a><b/></a>"},
        {"prefix", "<x:a xmlns:x=\"u\"\n   xmlns:y='v'>\n <x:b>1</x:b><c/>\n</x:a>",
         [](TXmlDocument& d) {
             Element(d).SetPrefix("n");
             Element(d).RenameAttribute("xmlns:x", "xmlns:n");
             Element(d).Child("b")->SetPrefix("");
             Element(d).Child("c")->SetPrefix("n");
         },
         "<n:a xmlns:n=\"u\"\n   xmlns:y='v'>\n <b>1</b><n:c/>\n</n:a>"},
        {"attributes", "<a p='1'  q=\"2\" r='3' />",
         [](TXmlDocument& d) {
             Element(d).SetAttribute("q", "a\"b<\n");
             Element(d).RemoveAttribute("p");
             Element(d).SetAttribute("s", "4");
         },
         "<a  q=\"a&quot;b&lt;&#10;\" r='3' s=\"4\" />"},
        {"attributes beside values", "<a><b>1</b><c k='1'>2</c><d>3<!-- --></d><e k='1'/></a>",
         [](TXmlDocument& d) {
             Element(d).Child("b")->SetAttribute("k", "2");
             Element(d).Child("b")->SetAttribute("l", std::string(Element(d).Child("b")->Value()));
             Element(d).Child("c")->SetValue(std::string(Element(d).Child("c")->Value()) + "!");
             Element(d).Child("c")->RemoveAttribute("k");
             Element(d).Child("d")->SetAttribute("k", std::string(Element(d).Child("d")->Value()));
             Element(d).Child("e")->SetValue("4");
             Element(d).InsertChild(*d.NewTag("f", "5"), nullptr);
             Element(d).Child("f")->SetAttribute("k", "6");
         },
         "<a><b k=\"2\" l=\"1\">1</b><c>2!</c><d k=\"3\">3<!-- --></d><e k='1'>4</e><f k=\"6\">5</f></a>"},
        {"removal takes the layout before it", "<a>\n  <b/>\n  <c>1</c>\n  <d/>\n</a>",
         [](TXmlDocument& d) { Element(d).Child("c")->Remove(); }, "<a>\n  <b/>\n  <d/>\n</a>"},
        {"removal of all leaves nothing", "<a>\n  <b>\n    <c/>\n  </b>\n</a>",
         [](TXmlDocument& d) { Element(d).Child("b")->Child("c")->Remove(); }, "<a>\n  <b></b>\n</a>"},
        {"insertion takes over the layout", "<a>\n  <b/>\n  <d/>\n</a>",
         [](TXmlDocument& d) {
             Element(d).InsertChild(*d.NewTag("c", "1"), Element(d).Child("d"));
             Element(d).InsertChild(*d.NewTag("z"), nullptr);
             Element(d).InsertChild(*d.NewTag("first"), Element(d).FirstChild());
         },
         "<a>\n  <first/>\n  <b/>\n  <c>1</c>\n  <d/>\n  <z/>\n</a>"},
        {"insertion into an empty tag", "<a><b/></a>",
         [](TXmlDocument& d) {
             TXmlNode* added = d.NewTag("c");
             Element(d).Child("b")->InsertChild(*added, nullptr);
             added->InsertChild(*d.NewTag("d", "&"), nullptr);
             added->InsertChild(*d.NewTag("e"), nullptr);
         },
         "<a><b><c><d>&amp;</d><e/></c></b></a>"},
        {"replace a child", "<a>\n <b>1</b>\n</a>",
         [](TXmlDocument& d) {
             TXmlNode* old = Element(d).Child("b");
             Element(d).InsertChild(*d.NewTag("c", "2"), old);
             old->Remove();
         },
         "<a>\n <c>2</c>\n</a>"},
        {"what is moved takes its content and its layout along",
         "<a>\n  <b>1</b>\n\n  <c><!-- x --> <d >2</d ></c>\n  <e/>\n</a>",
         [](TXmlDocument& d) {
             TXmlNode* moved = Element(d).Child("c");
             moved->Remove();
             Element(d).InsertChild(*moved, Element(d).Child("b"));
             moved->Child("d")->SetValue("3");
             moved = Element(d).Child("b");
             moved->Remove();
             Element(d).InsertChild(*moved, nullptr);
             moved->SetName("bb");
         },
         "<a>\n\n  <c><!-- x --> <d >3</d ></c>\n  <e/>\n  <bb>1</bb>\n</a>"},
        {"on another level it is indented anew, but for what values hold",
         "<a>\n  <b/>\n  <c>\n    <d>1\n    2</d>\n    <e>\n    </e>\n  </c>\n  <f>9</f>\n</a>",
         [](TXmlDocument& d) {
             TXmlNode* wrap = d.NewTag("w");
             Element(d).InsertChild(*wrap, Element(d).Child("c"));
             for (const char* name : {"c", "f"}) {
                 TXmlNode* moved = Element(d).Child(name);
                 moved->Remove();
                 wrap->InsertChild(*moved, nullptr);
             }
             TXmlNode* out = wrap->Child("c")->Child("d");
             out->Remove();
             Element(d).InsertChild(*out, Element(d).FirstChild());
         },
         "<a>\n  <d>1\n    2</d>\n  <b/>\n  <w>\n    <c>\n      <e>\n    </e>\n    </c>\n    <f>9</f>\n  "
         "</w>\n</a>"},
        {"into an empty tag on lines, in what is moved too",
         "<a>\n  <b></b>\n  <c/>\n  <d>1</d>\n  <e>2</e>\n</a>",
         [](TXmlDocument& d) {
             TXmlNode* wrap = d.NewTag("w");
             Element(d).InsertChild(*wrap, Element(d).FirstChild());
             for (const auto& [name, into] : {std::pair("d", "b"), std::pair("e", "c")}) {
                 TXmlNode* moved = Element(d).Child(name);
                 moved->Remove();
                 Element(d).Child(into)->InsertChild(*moved, nullptr);
             }
             TXmlNode* moved = Element(d).Child("b");
             moved->Remove();
             wrap->InsertChild(*moved, nullptr);
         },
         "<a>\n  <w>\n    <b>\n      <d>1</d>\n    </b>\n  </w>\n  <c>\n    <e>2</e>\n  </c>\n</a>"},
        {"into an empty tag, and out of what goes", "<a><b/><c><d>1</d><e/></c></a>",
         [](TXmlDocument& d) {
             TXmlNode* old = Element(d).Child("c");
             for (const char* name : {"d", "e"}) {
                 TXmlNode* moved = old->Child(name);
                 moved->Remove();
                 Element(d).Child("b")->InsertChild(*moved, nullptr);
             }
             old->Remove();
         },
         "<a><b><d>1</d><e/></b></a>"},
    };
    for (const TEditCase& c : cases) {
        const auto document = Parsed(c.Before);
        c.Edit(*document);
        const std::string written = WriteXml(*document);
        EXPECT_EQ(written, c.After) << c.Name;
        EXPECT_EQ(WriteXml(*Parsed(written)), written) << c.Name;
    }
}

TEST(XmlWriter, ValuesAndAttributesSurviveARoundTrip) {
    const std::string hard = " <&>\"'\t\r\n]]> é€😀 ";
    const auto document = Parsed("<a k=''><b>1</b></a>");
    document->Element()->SetAttribute("k", hard);
    document->Element()->Child("b")->SetValue(hard);
    const auto again = Parsed(WriteXml(*document));
    EXPECT_EQ(again->Element()->Attribute("k")->Value(), hard);
    EXPECT_EQ(again->Element()->Child("b")->Value(), hard);
}

} // namespace
} // namespace conferix
