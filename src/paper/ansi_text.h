#pragma once

#include <string>
#include <string_view>

namespace conferix {

/// Appends a text in Windows-1252, "?" for what that does not hold.
void AppendAnsi(std::string& to, std::string_view text);

} // namespace conferix
