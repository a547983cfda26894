#pragma once

#include "paper/drawing.h"

class QPainter;

namespace conferix {

/// Draws what stands on a page, on a screen or a printer; the ground of the page is left as it is. `scale`:
/// units of the painter a millimetre. Each text is as wide as it was laid out, whatever face stands for
/// Helvetica.
void DrawPaper(QPainter& painter, const TPaperPage& page, double scale);

} // namespace conferix
