// The stylesheet of reports in HTML, which the build puts into the program.
#pragma once

#include <span>
#include <string_view>

namespace conferix {

/// The parts of the stylesheet, in order.
std::span<const std::string_view> HtmlStyle();

} // namespace conferix
