// Texts in their rectangles, and pages as PDF and SVG.
#include "forms/pdf_text.h"
#include "paper/paper_image.h"
#include "paper/pdf_writer.h"
#include "paper/svg_page.h"
#include "paper/text_fit.h"
#include "paper/text_metrics.h"
#include "support/parsed.h"

#include <gmock/gmock.h>
#include <png.h>
#include <turbojpeg.h>

#include <array>
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

/// A picture of three by two points, half of it transparent.
std::string SomePng() {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = 3;
    png.height = 2;
    png.format = PNG_FORMAT_RGBA;
    const std::array<unsigned char, 24> pixels = {255, 0, 0, 255, 0, 255, 0, 255};
    png_alloc_size_t size = 0;
    png_image_write_get_memory_size(png, size, 0, pixels.data(), 0, nullptr);
    std::string bytes(size, '\0');
    EXPECT_NE(png_image_write_to_memory(&png, bytes.data(), &size, 0, pixels.data(), 0, nullptr), 0);
    bytes.resize(size);
    return bytes;
}

std::string SomeJpeg(int colours) {
    const std::array<unsigned char, 24> pixels{};
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const tjhandle coder = tjInitCompress();
    EXPECT_EQ(tjCompress2(coder, pixels.data(), 3, 0, 2, colours, &data, &size,
                          colours == TJPF_GRAY ? TJSAMP_GRAY : TJSAMP_444, 90, 0),
              0);
    std::string bytes(reinterpret_cast<const char*>(data), size);
    tjFree(data);
    tjDestroy(coder);
    return bytes;
}

TEST(Images, AreReadOrRefusedWithAReason) {
    EXPECT_EQ(ReadImage(SomePng())->Pixels,
              "\xFF" + std::string(3, '\0') + "\xFF" + std::string(1, '\0') + std::string(12, '\xFF'));
    EXPECT_EQ(ReadImage(SomeJpeg(TJPF_RGB))->Pixels, std::string(18, '\0'));
    EXPECT_EQ(ReadImage(SomeJpeg(TJPF_GRAY))->Width, 3U);
    const std::string png = SomePng();
    const std::string jpeg = SomeJpeg(TJPF_RGB);
    const std::pair<std::string, const char*> refused[] = {
        {"", "não é PNG nem JPEG"},
        {"GIF89a", "não é PNG nem JPEG"},
        {png.substr(0, png.size() / 2), "está danificada ("},
        {jpeg.substr(0, jpeg.size() - 20), "está danificada ("},
        {SomeJpeg(TJPF_CMYK), "tem as cores de impressão (CMYK); grave-a em RGB"}};
    for (const auto& [bytes, reason] : refused)
        try {
            ReadImage(bytes);
            ADD_FAILURE() << reason;
        } catch (const EInvalidImage& error) {
            EXPECT_THAT(error.what(), HasSubstr(reason));
        }
}

TEST(Images, StandOncePerFileOnAllPages) {
    auto common = std::make_shared<TDrawing>();
    common->Pictures.push_back({{10, 10, 30, 20}, ReadImage(SomePng())});
    TPaperPage page = SomePage(common, "a");
    page.Own.Pictures = common->Pictures;
    std::ostringstream out;
    TPdfWriter pdf(out, "Imagens");
    pdf.AddPage(page);
    pdf.AddPage(page);
    pdf.Finish();
    const std::string bytes = out.str();
    const std::size_t at = bytes.find("/Subtype/Image/Width 3/Height 2");
    EXPECT_NE(at, std::string::npos);
    EXPECT_EQ(bytes.find("/Subtype/Image", at + 1), std::string::npos);
    EXPECT_THAT(PdfStreams(bytes), testing::Contains(HasSubstr("q 85.04 0 0 56.69 28.35 756.85 cm /X")));
    EXPECT_THAT(SvgPage(page), HasSubstr("href=\"data:image/png;base64,iVBORw0KGgo"));
}

} // namespace
} // namespace conferix
