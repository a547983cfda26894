#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace conferix {

/// A text with the letters A to Z in lower case, whatever the locale; others stay as they are.
inline std::string LowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

} // namespace conferix
