// How wide texts are, the same for every back end.
#pragma once

#include "paper/drawing.h"

#include <string_view>

namespace conferix {

/// Width of a line of text in millimetres. A character that the faces do not have (all but those of
/// Windows-1252) counts as the "?" that is printed for it.
float TextWidth(std::string_view text, TPaperFace face, float size);

} // namespace conferix
