// Setting a text into a rectangle that it may not leave.
#pragma once

#include "paper/drawing.h"

#include <cstdint>
#include <string_view>

namespace conferix {

enum class TAcross : std::uint8_t { Left, Centre, Right };
enum class TDown : std::uint8_t { Top, Middle, Bottom };

/// Sizes in points, from the largest down.
struct TTextStyle {
    TPaperFace Face = TPaperFace::Regular;
    float Preferred = 8;
    float OneLine = 6; ///< what does not fit in one line of this size is broken into several
    float Smallest = 4;
    TAcross Across = TAcross::Left;
    TDown Down = TDown::Bottom;
};

/// Distance of baselines, and how far letters reach above and below theirs, in sizes.
inline constexpr float kLeading = 1.12F;
inline constexpr float kAscent = 0.74F;
inline constexpr float kDescent = 0.21F;

/// Adds a text to a drawing, inside an area: in the preferred size, else smaller, else in several lines, else
/// as much of it as the area holds, with "..." at its end. White space counts as single blanks. False where
/// something was left out.
bool AddText(TDrawing& drawing, const TPaperRect& area, std::string_view text, const TTextStyle& style);

/// The height that a text of a width takes in the preferred size, in millimetres.
float TextHeight(std::string_view text, float width, const TTextStyle& style);

} // namespace conferix
