// Codes that were probably meant by a value that is not in a list of codes.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// The code that a value stands for when only leading zeros, case or a point are wrong, empty for none; and
/// the codes that look like the value, the nearest first, at most five.
struct TLikelyCodes {
    std::string Meant;
    std::vector<std::string> Similar;
};
TLikelyCodes LikelyCodes(std::span<const std::string> codes, std::string_view value);

} // namespace conferix
