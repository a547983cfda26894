#pragma once

#include <span>
#include <string_view>

namespace conferix {

/// What the stylesheet of listings adds to the one of reports.
std::span<const std::string_view> ListingStyle();

} // namespace conferix
