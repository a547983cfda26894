// What the editor rests on: line breaks, edits, tags, places, the list of messages, runs beside.
#include "app/config.h"
#include "app/correction_preview.h"
#include "app/installation.h"
#include "app/line_layout.h"
#include "app/message_places.h"
#include "app/message_table.h"
#include "app/text_changes.h"
#include "app/xml_tags.h"
#include "platform/platform.h"
#include "support/test_files.h"
#include "validation/validation_message.h"
#include "xml/xml_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <thread>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(LineLayout, BreaksBetweenElementsAlone) {
    const std::pair<const char*, const char*> kCases[] = {
        {"<a><b>1</b><c/></a>", "<a>\n  <b>1</b>\n  <c/>\n</a>"},
        {"<?xml version=\"1.0\"?><a><b> </b></a>", "<?xml version=\"1.0\"?>\n<a>\n  <b> </b>\n</a>"},
        {"<a>  <b></b>\n\n<c>x</c></a>\n", "<a>\n  <b></b>\n  <c>x</c>\n</a>\n"},
        {"<a>1<!-- c -->2</a>", "<a>1<!-- c -->2</a>"},
        {"<a><!-- c -->2</a>", "<a><!-- c -->2</a>"},
        {"<a><![CDATA[<b>]]><![CDATA[c]]></a>", "<a><![CDATA[<b>]]><![CDATA[c]]></a>"},
        {"<a t=\">\"><b u='</a>'>1</b></a>", "<a t=\">\">\n  <b u='</a>'>1</b>\n</a>"},
        {"<a>\r\n<b>1</b></a>", "<a>\r\n  <b>1</b>\r\n</a>"},
        {"<a>text<b/>tail</a>", "<a>text<b/>tail</a>"},
        {"</a></b><", "</a>\n</b>\n<"},
        {"", ""},
        {"no markup", "no markup"}};
    for (const auto& [text, formatted] : kCases) {
        EXPECT_EQ(FormatXml(text), formatted);
        EXPECT_EQ(FormatXml(formatted), formatted);
    }
    EXPECT_EQ(LongestLine("ab\ncdef\n"), 4U);
    EXPECT_EQ(WrapLines("abcde\nçç", 2), "ab\ncd\ne\nç\nç");
}

/// Names and values of all elements in order.
std::string ValuesOf(const std::string& text) {
    const TXmlParseResult parsed = TXmlParser::Parse(text);
    std::string values;
    if (parsed.Document == nullptr)
        return "no XML";
    const TXmlNode& root = parsed.Document->Root();
    for (const TXmlNode* node = &root; node != nullptr; node = node->NextInWalk(&root))
        if (node->IsTag())
            ((values += node->LocalName()) += '=') += std::string(node->Value()) + '\n';
    return values;
}

TEST(LineLayout, ChangesNoValueOfAnyExample) {
    for (const auto& entry : std::filesystem::directory_iterator(Example(""))) {
        if (entry.path().extension() != ".xml")
            continue;
        const std::string text = *TTissFile::Read(entry.path()).Text();
        std::string oneLine = text;
        std::erase_if(oneLine, [](char c) { return c == '\n' || c == '\r'; });
        EXPECT_EQ(ValuesOf(FormatXml(text)), ValuesOf(text)) << entry.path();
        EXPECT_EQ(ValuesOf(FormatXml(oneLine)), ValuesOf(oneLine)) << entry.path();
    }
}

TEST(TextChanges, EditsMakeTheOtherTextOfAnyText) {
    std::mt19937 random(7);
    const auto pick = [&](int below) { return std::uniform_int_distribution<int>(0, below - 1)(random); };
    for (int round = 0; round < 300; ++round) {
        std::string before;
        const int lines = pick(4) == 0 ? 2'000 : pick(30);
        for (int line = 0; line < lines; ++line)
            before += std::string(static_cast<std::size_t>(pick(4)), 'a') + (pick(5) == 0 ? "ç\n" : "\n");
        std::string after = before;
        for (int change = pick(5); change > 0 && !after.empty(); --change) {
            const auto at = static_cast<std::size_t>(pick(static_cast<int>(after.size())));
            const std::size_t lineStart = after.rfind('\n', at) + 1;
            if (pick(2) == 0)
                after.insert(lineStart, pick(2) == 0 ? "ção\n" : "b");
            else
                after.erase(lineStart, after.find('\n', lineStart) - lineStart);
        }
        std::string made = before;
        const std::vector<TTextEdit> edits = FindEdits(before, after);
        for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit)
            made.replace(edit->Start, edit->End - edit->Start, edit->Text);
        ASSERT_EQ(made, after);
        EXPECT_EQ(edits.empty(), before == after);
    }
}

TEST(TextChanges, StandSideBySide) {
    const std::string before = "1\n2\n3\n4\n5\n6\n7\n8\n9\n";
    const std::string after = "1\nzwei\n3\n4\n5\n6\n7\n9\n";
    const TTextLines old = SplitLines(before);
    const TTextLines now = SplitLines(after);
    std::string shown;
    for (const TLinePair& pair : SideBySide(old, now, FindLineChanges(old, now), 1))
        shown += std::to_string(pair.BeforeNumber) + std::string(pair.Before) + (pair.Changed ? "!" : "|") +
                 std::to_string(pair.AfterNumber) + std::string(pair.After) + "\n";
    EXPECT_EQ(shown, "11|11\n22!2zwei\n33|33\n0|0\n77|77\n88!0\n99|89\n");
}

TEST(XmlTags, BelongTogether) {
    // "|" is the place, "[" and "]" stand round the names found.
    for (const char* shown : {"<[a|] x='1'><b/>t</[a]>", "<[a]><a>1</a></[a]|>", "<a>1<[a]>|</[a]></a>",
                              "<!-- <|a> -->", "|text", "<a|", "<a>t|</b>"}) {
        std::string text;
        std::size_t place = 0;
        std::vector<std::size_t> marks;
        for (const char c : std::string(shown)) {
            if (c == '|')
                place = text.size();
            else if (c == '[' || c == ']')
                marks.push_back(text.size());
            else
                text += c;
        }
        const auto found = MatchTags(text, place);
        ASSERT_EQ(found.has_value(), marks.size() == 4) << shown;
        if (!found)
            continue;
        const auto [first, second] = std::minmax(
            found->first, found->second, [](const auto& a, const auto& b) { return a.Start < b.Start; });
        EXPECT_THAT(marks, ElementsAre(first.Start, first.End, second.Start, second.End)) << shown;
    }
    EXPECT_EQ(MarkedRange("x <a>1</a> y", 2), (TTextRange{2, 10}));
    EXPECT_EQ(MarkedRange("<a>\n<b/></a>", 0), (TTextRange{0, 3}));
    EXPECT_EQ(MarkedRange("so text\nmore", 3), (TTextRange{3, 7}));
}

std::shared_ptr<const TXmlMessage> At(std::int32_t line, std::int32_t linePos,
                                      TMessageType type = TMessageType::mtError, const char* reason = "x") {
    return std::make_shared<TXmlMessage>(type, reason, "", line, linePos);
}

TEST(MessagePlaces, MoveWithTheirLines) {
    TMessagePlaces places({At(9, 2), At(4, 1), At(0, 0), At(9, 1)});
    EXPECT_EQ(places.All().size(), 3U);
    EXPECT_THAT(places.OnLines(5, 9), Pair(1, 3));
    places.LinesChanged(4, 2);
    EXPECT_EQ(places.LineOf(1), 4);
    EXPECT_EQ(places.LineOf(0), 11);
    places.LinesChanged(2, -4); // takes line 4 along
    EXPECT_EQ(places.LineOf(1), 2);
    EXPECT_EQ(places.LineOf(0), 7);
    EXPECT_EQ(places.LineOf(2), 0);
    EXPECT_EQ(places.LineOf(99), 0);
}

TEST(MessageTable, ArrangesWhatIsAsked) {
    TMessageTable table;
    table.SetDigest(std::make_shared<const TMessageDigest>(TXmlMessages{
        At(7, 1, TMessageType::mtWarning, "Código ausente"), At(3, 1, TMessageType::mtError, "Total errado"),
        At(5, 1, TMessageType::mtError, "Total errado"),
        At(1, 1, TMessageType::mtInformation, "Versão ÀÉÎ")}));
    const auto shown = [&] {
        std::vector<std::size_t> messages;
        for (std::size_t place = 0; place < table.ShownCount(); ++place)
            messages.push_back(table.Shown(place));
        return messages;
    };
    EXPECT_EQ(table.RowCount(), 3U) << "findings of one cause are one row";
    table.SetGrouping(TMessageGrouping::None);
    EXPECT_THAT(shown(), ElementsAre(0, 1, 2, 3));
    table.Sort(TMessageColumn::Line, false);
    EXPECT_THAT(shown(), ElementsAre(3, 1, 2, 0));
    table.Sort(TMessageColumn::Severity, true);
    EXPECT_THAT(shown(), ElementsAre(3, 0, 1, 2));
    table.Sort(TMessageColumn::Text, false);
    EXPECT_THAT(shown(), ElementsAre(0, 1, 2, 3));
    TMessageFilter filter;
    filter.Text = "aei VERSAO";
    table.SetFilter(filter);
    EXPECT_THAT(shown(), ElementsAre(3));
    EXPECT_FALSE(table.Find(0).has_value());
    filter.Text = {};
    filter.Hidden[static_cast<std::size_t>(TMessageType::mtError)] = true;
    table.SetFilter(filter);
    EXPECT_THAT(shown(), ElementsAre(0, 3));
    EXPECT_EQ(table.Find(3)->Row, 1U);
    EXPECT_EQ(table.Digest().Counts().Failures(), 2U);
}

class RunBeside : public testing::Test {
  protected:
    RunBeside() : controller_(InstalledTerminology()) {
        controller_.SetSchemaFolder(InstalledSchemas());
        controller_.Events().OnValidate.Subscribe(
            [this](const TValidateArgs& result) { told_.push_back(result.Counts.Failures()); });
        controller_.LoadFromFile(Example("consulta-4.01.00-com-erros.xml").string());
    }
    const TTemporaryFolder folder_;
    const TEnvironment dados_{"CONFERIX_DADOS", (folder_ / "dados").string()};
    const TEnvironment tuss_{"CONFERIX_TUSS", CONFERIX_TUSS_DB};
    TValidadorController controller_;
    std::vector<std::size_t> told_;
    const std::shared_ptr<const std::string> text_ =
        TTissFile::Read(Example("consulta-4.01.00-com-erros.xml")).Text();
};

TEST_F(RunBeside, TellsTheSameAndOnlyTheNewest) {
    TConfig rules;
    rules.SetDefaultInitialConfig();
    const auto& enabled = rules.EnabledValidations();
    const auto isValidating = [&] {
        return controller_.FileStateFlags().Contains(TFileStateFlag::sfValidando);
    };
    controller_.Validate(text_, enabled);
    ASSERT_EQ(told_.size(), 1U);

    auto run = controller_.BeginValidation(text_);
    EXPECT_TRUE(isValidating());
    std::thread([&] { run->Run(); }).join();
    EXPECT_EQ(told_.size(), 1U) << "told only in the end";
    controller_.EndValidation(std::move(run), enabled);
    EXPECT_FALSE(isValidating());
    EXPECT_THAT(told_, ElementsAre(told_[0], told_[0]));
    EXPECT_EQ(controller_.VersaoTiss(), "4.01.00");

    auto stopped = controller_.BeginValidation(text_);
    controller_.StopValidation();
    EXPECT_FALSE(isValidating());
    EXPECT_FALSE(controller_.FileStateFlags().Contains(TFileStateFlag::sfValidado));
    auto older = controller_.BeginValidation(text_);
    auto newer = controller_.BeginValidation(text_);
    for (auto* of : {&stopped, &older}) {
        (*of)->Run();
        controller_.EndValidation(std::move(*of), enabled);
        EXPECT_EQ(told_.size(), 2U);
        EXPECT_TRUE(isValidating());
    }
    newer->Run();
    controller_.CloseFile();
    controller_.EndValidation(std::move(newer), enabled);
    EXPECT_EQ(told_.size(), 2U);
    EXPECT_FALSE(isValidating());
}

TEST_F(RunBeside, PreviewsWithoutTouchingAnything) {
    TConfig rules;
    rules.SetDefaultInitialConfig();
    const TTissFile file = TTissFile::Read(Example("spsadt-3.05.00-valores-errados.xml"));
    const auto preview = [&](const TCorrectionRequest& request) {
        return PreviewCorrections(file, InstalledSchemas(), InstalledTerminology(),
                                  rules.EnabledValidations(), request);
    };
    const TCorrectionPreview all = preview({});
    ASSERT_GT(all.Applied.size(), 2U);
    EXPECT_NE(*all.After, *all.Before);
    EXPECT_FALSE(all.Lines.empty());
    const TCorrectionRecord& first = all.Applied.front();
    TCorrectionRequest request;
    request.Refused = {KeyOf(*first.Message, first.Solver)};
    EXPECT_NE(*preview(request).After, *all.After);
    request = {};
    request.Rule = first.Message->Rule()->Name;
    for (const TCorrectionRecord& record : preview(request).Applied)
        EXPECT_EQ(record.Message->Rule()->Name, request.Rule);
    EXPECT_TRUE(preview({.Rule = "nenhuma", .Structure = false, .Refused = {}}).Applied.empty());
    EXPECT_TRUE(folder_.Names().empty()) << "nothing is noted in the log";
}

} // namespace
} // namespace conferix
