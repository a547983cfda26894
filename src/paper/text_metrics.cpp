#include "paper/text_metrics.h"

#include "paper/ansi_text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace conferix {

namespace {

constexpr std::size_t kFirst = 32;
using TWidths = std::array<std::uint16_t, 256 - kFirst>;

// Thousandths of the size, for the characters 32 to 255 of Windows-1252; every viewer of PDF files has faces
// of these widths.
constexpr TWidths kRegular = {
    278, 278, 355, 556, 556, 889,  667,  191,  333, 333, 389,  584, 278, 333,  278,  278, 556, 556, 556,
    556, 556, 556, 556, 556, 556,  556,  278,  278, 584, 584,  584, 556, 1015, 667,  667, 722, 722, 667,
    611, 778, 722, 278, 500, 667,  556,  833,  722, 778, 667,  778, 722, 667,  611,  722, 667, 944, 667,
    667, 611, 278, 278, 278, 469,  556,  333,  556, 556, 500,  556, 556, 278,  556,  556, 222, 222, 500,
    222, 833, 556, 556, 556, 556,  333,  500,  278, 556, 500,  722, 500, 500,  500,  334, 260, 334, 584,
    278, 556, 278, 222, 556, 333,  1000, 556,  556, 333, 1000, 667, 333, 1000, 278,  611, 278, 278, 222,
    222, 333, 333, 350, 556, 1000, 333,  1000, 500, 333, 944,  278, 500, 667,  278,  333, 556, 556, 556,
    556, 260, 556, 333, 737, 370,  556,  584,  278, 737, 333,  400, 584, 333,  333,  333, 556, 537, 278,
    333, 333, 365, 556, 834, 834,  834,  611,  667, 667, 667,  667, 667, 667,  1000, 722, 667, 667, 667,
    667, 278, 278, 278, 278, 722,  722,  778,  778, 778, 778,  778, 584, 778,  722,  722, 722, 722, 667,
    667, 611, 556, 556, 556, 556,  556,  556,  889, 500, 556,  556, 556, 556,  278,  278, 278, 278, 556,
    556, 556, 556, 556, 556, 556,  584,  611,  556, 556, 556,  556, 500, 556,  500};

constexpr TWidths kBold = {
    278, 333, 474, 556, 556, 889,  722,  238,  333, 333, 389,  584, 278, 333,  278,  278, 556, 556, 556,
    556, 556, 556, 556, 556, 556,  556,  333,  333, 584, 584,  584, 611, 975,  722,  722, 722, 722, 667,
    611, 778, 722, 278, 556, 722,  611,  833,  722, 778, 667,  778, 722, 667,  611,  722, 667, 944, 667,
    667, 611, 333, 278, 333, 584,  556,  333,  556, 611, 556,  611, 556, 333,  611,  611, 278, 278, 556,
    278, 889, 611, 611, 611, 611,  389,  556,  333, 611, 556,  778, 556, 556,  500,  389, 280, 389, 584,
    278, 556, 278, 278, 556, 500,  1000, 556,  556, 333, 1000, 667, 333, 1000, 278,  611, 278, 278, 278,
    278, 500, 500, 350, 556, 1000, 333,  1000, 556, 333, 944,  278, 500, 667,  278,  333, 556, 556, 556,
    556, 280, 556, 333, 737, 370,  556,  584,  278, 737, 333,  400, 584, 333,  333,  333, 611, 556, 278,
    333, 333, 365, 556, 834, 834,  834,  611,  722, 722, 722,  722, 722, 722,  1000, 722, 667, 667, 667,
    667, 278, 278, 278, 278, 722,  722,  778,  778, 778, 778,  778, 584, 778,  722,  722, 722, 722, 667,
    667, 611, 556, 556, 556, 556,  556,  556,  889, 556, 556,  556, 556, 556,  278,  278, 278, 278, 611,
    611, 611, 611, 611, 611, 611,  584,  611,  611, 611, 611,  611, 556, 611,  556};

/// The widths of all bytes, those of control characters 0.
using TByteWidths = std::array<std::uint32_t, 256>;
constexpr TByteWidths ByteWidths(const TWidths& widths) {
    TByteWidths all{};
    std::copy(widths.begin(), widths.end(), all.begin() + kFirst);
    return all;
}
constexpr TByteWidths kRegularBytes = ByteWidths(kRegular);
constexpr TByteWidths kBoldBytes = ByteWidths(kBold);

std::uint32_t SumOf(std::string_view ansi, TPaperFace face) {
    const TByteWidths& widths = face == TPaperFace::Bold ? kBoldBytes : kRegularBytes;
    std::uint32_t sum = 0;
    for (const char c : ansi)
        sum += widths[static_cast<unsigned char>(c)];
    return sum;
}

} // namespace

float TextWidth(std::string_view text, TPaperFace face, float size) {
    std::string ansi;
    if (FindNonAscii(text) != text.size()) {
        AppendAnsi(ansi, text);
        text = ansi;
    }
    return static_cast<float>(SumOf(text, face)) * size * kMillimetresPerPoint / 1000.0F;
}

} // namespace conferix
