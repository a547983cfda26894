#include "paper/svg_page.h"

#include "paper/text_metrics.h"

#include <fmt/format.h>
#include <nettle/base64.h>

#include <cstdint>
#include <iterator>
#include <string_view>

namespace conferix {

namespace {

void AppendEscaped(std::string& to, std::string_view text) {
    for (const char c : text)
        switch (c) {
        case '&':
            to += "&amp;";
            break;
        case '<':
            to += "&lt;";
            break;
        case '>':
            to += "&gt;";
            break;
        default:
            to += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        }
}

void AppendBase64(std::string& to, std::string_view bytes) {
    const std::size_t before = to.size();
    to.resize(before + BASE64_ENCODE_RAW_LENGTH(bytes.size()));
    base64_encode_raw(to.data() + before, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
}

void AppendDrawing(std::string& to, const TDrawing& drawing) {
    const auto out = std::back_inserter(to);
    const auto grey = [](unsigned shade) { return fmt::format("#{0:02x}{0:02x}{0:02x}", shade); };
    for (const TPaperFrame& frame : drawing.Frames) {
        const TPaperRect& place = frame.Place;
        fmt::format_to(out, R"(<rect x="{:.3f}" y="{:.3f}" width="{:.3f}" height="{:.3f}" fill="{}")",
                       place.X, place.Y, place.Width, place.Height,
                       frame.Ground != 255 ? grey(frame.Ground) : "none");
        if (frame.Pen > 0)
            fmt::format_to(out, R"( stroke="#000" stroke-width="{:.3f}")", frame.Pen);
        to += "/>\n";
    }
    for (const TPaperPicture& picture : drawing.Pictures) {
        const TPaperRect& place = picture.Place;
        fmt::format_to(
            out,
            R"(<image x="{:.3f}" y="{:.3f}" width="{:.3f}" height="{:.3f}" preserveAspectRatio="none" href="data:{};base64,)",
            place.X, place.Y, place.Width, place.Height, picture.Image->MediaType);
        AppendBase64(to, picture.Image->File);
        to += "\"/>\n";
    }
    for (const TPaperLine& line : drawing.Lines)
        fmt::format_to(
            out,
            R"(<line x1="{:.3f}" y1="{:.3f}" x2="{:.3f}" y2="{:.3f}" stroke="#000" stroke-width="{:.3f}"/>)"
            "\n",
            line.X1, line.Y1, line.X2, line.Y2, line.Pen);
    for (const TPaperText& text : drawing.Texts) {
        fmt::format_to(
            out,
            R"(<text x="{:.3f}" y="{:.3f}" font-size="{:.3f}" textLength="{:.3f}" lengthAdjust="spacingAndGlyphs"{}>)",
            text.X, text.Baseline, text.Size * kMillimetresPerPoint,
            TextWidth(text.Text, text.Face, text.Size),
            text.Face == TPaperFace::Bold ? " font-weight=\"bold\"" : "");
        AppendEscaped(to, text.Text);
        to += "</text>\n";
    }
}

} // namespace

std::string SvgPage(const TPaperPage& page) {
    std::string svg = fmt::format(
        R"(<svg xmlns="http://www.w3.org/2000/svg" width="{0:.2f}mm" height="{1:.2f}mm" viewBox="0 0 {0:.2f} {1:.2f}" font-family="Helvetica, Arial, 'Liberation Sans', sans-serif">)"
        "\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n",
        page.Width, page.Height);
    for (const auto& drawing : page.Common)
        AppendDrawing(svg, *drawing);
    AppendDrawing(svg, page.Own);
    return svg + "</svg>\n";
}

} // namespace conferix
