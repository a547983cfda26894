#pragma once

#include <span>
#include <string_view>

namespace conferix {

/// What the page of the service is made of: content, stylesheet, script.
std::span<const std::string_view> PageParts();

} // namespace conferix
