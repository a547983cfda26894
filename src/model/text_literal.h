// Texts as template arguments.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace conferix {

/// A string literal that a class template can take as an argument.
template<std::size_t Size>
struct TTextLiteral {
    // NOLINTNEXTLINE(google-explicit-constructor): converts from the literal in an argument list
    constexpr TTextLiteral(const char (&text)[Size]) { std::copy_n(text, Size, Text); }
    constexpr std::string_view View() const { return {Text, Size - 1}; }

    char Text[Size] = {};
};

} // namespace conferix
