// Texts in their rectangles, and pages as PDF and SVG.
#include "forms/pdf_text.h"
#include "paper/pdf_writer.h"
#include "paper/svg_page.h"
#include "paper/text_fit.h"
#include "paper/text_metrics.h"
#include "support/parsed.h"

#include <gmock/gmock.h>

#include <sstream>

namespace conferix {
namespace {

using testing::HasSubstr;

struct TFit {
    const char* Text;
    float Width;
    float Height;
    std::vector<std::string> Lines;
    float Size; ///< of the type
};

TEST(TextFit, ShrinksThenWrapsThenCuts) {
    const TFit kCases[] = {
        {"", 10, 5, {}, 0},
        {" a  b\n c ", 30, 5, {"a b c"}, 8},
        {"AAAAAAAAAA", 16, 5, {"AAAAAAAAAA"}, 6.75F},                          // smaller
        {"palavra palavra palavra", 20, 5, {"palavra palavra", "palavra"}, 6}, // two lines
        {"palavracomprida", 8, 5.2F, {"palavrac", "omprida"}, 6},              // within the word
        {"palavra palavra palavra palavra", 10, 2, {"palavra palav..."}, 4},   // what is left
        {"\xC3\x87\xC3\x83\xC3\x87\xC3\x83\xC3\x87\xC3\x83",
         5,
         1.5F,
         {"\xC3\x87\xC3\x83\xC3\x87..."},
         4}, // whole characters
    };
    for (const TFit& fit : kCases) {
        TDrawing drawing;
        const TPaperRect area{10, 10, fit.Width, fit.Height};
        const bool whole = AddText(drawing, area, fit.Text, {});
        std::vector<std::string> lines;
        for (const TPaperText& text : drawing.Texts) {
            lines.push_back(text.Text);
            EXPECT_FLOAT_EQ(text.Size, fit.Size) << fit.Text;
            EXPECT_LE(text.X + TextWidth(text.Text, text.Face, text.Size), area.Right() + 0.01F) << fit.Text;
            EXPECT_GE(text.Baseline - kAscent * text.Size * kMillimetresPerPoint, area.Y - 0.01F) << fit.Text;
            EXPECT_LE(text.Baseline + kDescent * text.Size * kMillimetresPerPoint, area.Bottom() + 0.01F)
                << fit.Text;
        }
        EXPECT_EQ(lines, fit.Lines);
        EXPECT_EQ(whole, lines.empty() || !lines.back().ends_with("...")) << fit.Text;
    }
}

TPaperPage SomePage(const std::shared_ptr<const TDrawing>& common, const std::string& text) {
    TPaperPage page;
    page.Common = {common};
    page.Own.Frames = {{{10, 10, 50, 20}, 0.2F, 204}};
    page.Own.Lines = {{10, 40, 60, 40, 0.1F}};
    page.Own.Texts = {{12, 20, 8, TPaperFace::Regular, text}, {12, 30, 10, TPaperFace::Bold, "(a\\b) <&>"}};
    return page;
}

TEST(Pdf, HoldsPagesBookmarksAndTexts) {
    std::ostringstream out;
    TPdfWriter pdf(out, "T\xC3\xADtulo");
    auto common = std::make_shared<TDrawing>();
    common->Texts = {{5, 5, 6, TPaperFace::Regular, "comum"}};
    constexpr int kPages = 130; // more than two nodes of the page tree hold
    for (int i = 0; i < kPages; ++i) {
        if (i == 0 || i == 129)
            pdf.AddBookmark("Guia " + std::to_string(i));
        if (i == 1)
            pdf.AddBookmark("Anexo", 1);
        pdf.AddPage(SomePage(common, "A\xC3\xA7\xC3\xA3o \xE2\x82\xAC \xE2\x98\x83 " + std::to_string(i)));
    }
    pdf.Finish();
    const std::string bytes = out.str();
    const std::string texts = PdfTexts(bytes);
    EXPECT_THAT(texts, HasSubstr("A\xE7\xE3o \x80 ? 129\n(a\\b) <&>\n"));
    EXPECT_EQ(texts.find("comum"), texts.rfind("comum")); // written once
    for (const char* part :
         {"%PDF-1.5", "/Type/Pages/Count 130/", "/Parent 2 0 R/Count 64/", "/Parent 2 0 R/Count 2/",
          "<FEFF005400ED", "/Type/Outlines", "/Count -1/Dest[", "/Count 2>>", "/Lang(pt-BR)"})
        EXPECT_NE(bytes.find(part), std::string::npos) << part;
    // Every entry of the table leads to its object.
    const std::size_t table = std::stoul(bytes.substr(bytes.rfind("startxref\n") + 10));
    std::istringstream lines(bytes.substr(table));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "xref");
    std::getline(lines, line);
    const int objects = std::stoi(line.substr(2));
    std::getline(lines, line);
    for (int object = 1; object < objects && std::getline(lines, line); ++object)
        EXPECT_EQ(bytes.compare(std::stoul(line), std::to_string(object).size() + 6,
                                std::to_string(object) + " 0 obj"),
                  0)
            << object;
}

TEST(Svg, DrawsWhatStandsOnThePage) {
    auto common = std::make_shared<TDrawing>();
    common->Texts = {{5, 5, 6, TPaperFace::Regular, "comum"}};
    const auto svg = Parsed(SvgPage(SomePage(common, "A\xC3\xA7\xC3\xA3o")));
    std::vector<std::string> texts;
    for (const TXmlNode* text : svg->Element()->Descendants("text"))
        texts.emplace_back(text->TextWithCData());
    EXPECT_THAT(texts, testing::ElementsAre("comum", "A\xC3\xA7\xC3\xA3o", "(a\\b) <&>"));
    EXPECT_EQ(svg->Element()->Descendants("rect").size(), 2U); // one is the paper
    EXPECT_EQ(svg->Element()->Descendants("line").size(), 1U);
}

} // namespace
} // namespace conferix
