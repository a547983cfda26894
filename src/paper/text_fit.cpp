#include "paper/text_fit.h"

#include "paper/text_metrics.h"
#include "platform/utf8.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <vector>

namespace conferix {

namespace {

constexpr float kSizeStep = 0.25F;
constexpr std::string_view kCutMark = "...";
constexpr std::string_view kWhiteSpace = " \t\r\n";

/// Height of lines in millimetres.
float HeightOf(std::size_t lines, float size) {
    return (static_cast<float>(lines - 1) * kLeading + kAscent + kDescent) * size * kMillimetresPerPoint;
}

/// The text with runs of white space as one blank each, and none at its ends.
std::string Simplified(std::string_view text) {
    std::string simple;
    for (const char c : text)
        if (kWhiteSpace.find(c) == std::string_view::npos)
            simple += c;
        else if (!simple.empty() && simple.back() != ' ')
            simple += ' ';
    if (!simple.empty() && simple.back() == ' ')
        simple.pop_back();
    return simple;
}

bool IsSimple(std::string_view text) {
    char before = ' '; // so that a blank at the beginning counts as a second one
    for (const char c : text) {
        if (c == '\t' || c == '\r' || c == '\n' || (c == ' ' && before == ' '))
            return false;
        before = c;
    }
    return text.empty() || before != ' ';
}

/// Bytes of the beginning of a text that fit into a width; at least one character.
std::size_t FittingBytes(std::string_view text, float width, TPaperFace face, float size) {
    std::size_t fitting = 0;
    float used = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t before = rest.size();
        std::string_view after = rest;
        TakeCharacter(after);
        used += TextWidth(rest.substr(0, before - after.size()), face, size);
        if (used > width && fitting > 0)
            break;
        fitting += before - after.size();
        rest = after;
    }
    return fitting;
}

/// Lines of a simplified text, broken at blanks and, where a word is longer than a line, within words; not
/// more than one beyond `most`.
std::vector<std::string_view> Wrapped(std::string_view text, float width, TPaperFace face, float size,
                                      std::size_t most) {
    std::vector<std::string_view> lines;
    while (!text.empty() && lines.size() <= most) {
        std::size_t end = FittingBytes(text, width, face, size);
        if (end < text.size())
            if (const std::size_t blank = text.rfind(' ', end); blank != std::string_view::npos && blank > 0)
                end = blank;
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end);
        if (text.starts_with(' '))
            text.remove_prefix(1);
    }
    return lines;
}

/// How many lines of a size an area holds; at least one.
std::size_t LinesIn(float height, float size) {
    const float line = kLeading * size * kMillimetresPerPoint;
    const float more = std::floor((height - HeightOf(1, size)) / line + 0.001F);
    return more > 0 ? static_cast<std::size_t>(more) + 1 : 1;
}

void AddLines(TDrawing& drawing, const TPaperRect& area, std::span<const std::string_view> lines, float size,
              const TTextStyle& style) {
    const float height = HeightOf(lines.size(), size);
    float top = area.Y;
    if (style.Down == TDown::Bottom)
        top = area.Bottom() - height;
    else if (style.Down == TDown::Middle)
        top += (area.Height - height) / 2;
    float baseline = top + kAscent * size * kMillimetresPerPoint;
    for (const std::string_view line : lines) {
        float x = area.X;
        if (style.Across != TAcross::Left) {
            const float rest = area.Width - TextWidth(line, style.Face, size);
            x += style.Across == TAcross::Right ? rest : rest / 2;
        }
        drawing.Texts.push_back({x, baseline, size, style.Face, std::string(line)});
        baseline += kLeading * size * kMillimetresPerPoint;
    }
}

} // namespace

bool AddText(TDrawing& drawing, const TPaperRect& area, std::string_view text, const TTextStyle& style) {
    std::string simple;
    if (!IsSimple(text)) {
        simple = Simplified(text);
        text = simple;
    }
    if (text.empty())
        return true;
    // The largest size that the height allows, in steps, so that boxes of a kind look alike.
    const float highest = area.Height / ((kAscent + kDescent) * kMillimetresPerPoint);
    float size = style.Preferred;
    while (size > style.Smallest && size > highest)
        size -= kSizeStep;
    const float width = TextWidth(text, style.Face, 1);
    float single = size;
    while (single > style.OneLine && width * single > area.Width)
        single -= kSizeStep;
    if (width * single <= area.Width) {
        AddLines(drawing, area, {&text, 1}, single, style);
        return true;
    }
    size = std::min(size, style.OneLine);
    while (size > style.Smallest) {
        const std::size_t most = LinesIn(area.Height, size);
        if (const auto lines = Wrapped(text, area.Width, style.Face, size, most); lines.size() <= most) {
            AddLines(drawing, area, lines, size, style);
            return true;
        }
        size -= kSizeStep;
    }
    const std::size_t most = LinesIn(area.Height, style.Smallest);
    auto lines = Wrapped(text, area.Width, style.Face, style.Smallest, most);
    const bool cut = lines.size() > most;
    std::string last;
    if (cut) {
        lines.resize(most);
        const float room = area.Width - TextWidth(kCutMark, style.Face, style.Smallest);
        last = lines.back().substr(0, FittingBytes(lines.back(), room, style.Face, style.Smallest));
        last += kCutMark;
        lines.back() = last;
    }
    AddLines(drawing, area, lines, style.Smallest, style);
    return !cut;
}

float TextHeight(std::string_view text, float width, const TTextStyle& style) {
    const std::string simple = Simplified(text);
    const auto lines = Wrapped(simple, width, style.Face, style.Preferred, simple.size());
    return lines.empty() ? 0 : HeightOf(lines.size(), style.Preferred);
}

} // namespace conferix
