#pragma once

#include <string>
#include <string_view>

namespace conferix {

/// The bytes of a file name as part of an address: letters, digits and "-._~/" as they are, all others as "%"
/// and two hexadecimal digits.
std::string PercentEncoded(std::string_view bytes);

/// The address of a file: relative as its name is, else "file:///...".
std::string FileUri(std::string_view fileName);

} // namespace conferix
