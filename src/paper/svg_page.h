#pragma once

#include "paper/drawing.h"

#include <string>

namespace conferix {

/// A page as an SVG document of its size. Texts are stretched to their width where the viewer has other
/// faces.
std::string SvgPage(const TPaperPage& page);

} // namespace conferix
