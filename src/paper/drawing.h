// What stands on a page, apart from how it gets onto paper or a screen. Lengths are millimetres from the
// upper left corner of the page, sizes of type are points, texts are UTF-8.
#pragma once

#include "paper/paper_image.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace conferix {

/// The two faces that every back end has: Helvetica or what has its measures.
enum class TPaperFace : std::uint8_t { Regular, Bold };

struct TPaperRect {
    float X = 0;
    float Y = 0;
    float Width = 0;
    float Height = 0;

    float Right() const { return X + Width; }
    float Bottom() const { return Y + Height; }
};

/// A picture that fills a rectangle.
struct TPaperPicture {
    TPaperRect Place;
    std::shared_ptr<const TPaperImage> Image;
};

/// A rectangle with an outline, a ground, or both.
struct TPaperFrame {
    TPaperRect Place;
    float Pen = 0;             ///< width of the outline; 0: none
    std::uint8_t Ground = 255; ///< grey of the ground, 0 black; 255: none
};

struct TPaperLine {
    float X1;
    float Y1;
    float X2;
    float Y2;
    float Pen; ///< width

    bool operator==(const TPaperLine&) const = default;
};

/// One line of text that begins at X.
struct TPaperText {
    float X;
    float Baseline;
    float Size;
    TPaperFace Face;
    std::string Text;
};

/// Grounds and outlines are drawn first, then pictures, then lines, then texts.
struct TDrawing {
    std::vector<TPaperFrame> Frames;
    std::vector<TPaperPicture> Pictures = {};
    std::vector<TPaperLine> Lines;
    std::vector<TPaperText> Texts;

    void Clear() {
        Frames.clear();
        Pictures.clear();
        Lines.clear();
        Texts.clear();
    }
};

/// A page: drawings that many pages have in common, drawn first, and its own. A back end may keep what a
/// common drawing became and use it again as long as the drawing lives.
struct TPaperPage {
    float Width = 210;
    float Height = 297;
    std::vector<std::shared_ptr<const TDrawing>> Common;
    TDrawing Own;
};

inline constexpr float kMillimetresPerPoint = 25.4F / 72.0F;

} // namespace conferix
