// Windows-1252, and what was written in UTF-8 and is read in it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// Decodes Windows-1252, which every byte is: its five free places are the control characters of Unicode
/// there.
std::string AnsiToUtf8(std::string_view bytes);

/// Where a text that was read as Windows-1252 shows that it was written in UTF-8.
struct TUtf8AsAnsi {
    static constexpr std::size_t kNone = std::string_view::npos;

    std::size_t First = kNone; ///< its first letter that was misread
    std::size_t Kept = kNone;  ///< its first letter that is none of UTF-8, and was read as it was meant
};
/// Nothing for a text that was meant as it reads. The letters decide: those that are, byte for byte, UTF-8
/// and such as Windows-1252 has too, against those that are no UTF-8. One of the latter, among many of the
/// former, is a slip; where there are as many of both, nothing is certain.
std::optional<TUtf8AsAnsi> FindUtf8AsAnsi(std::string_view text);
/// The text that was meant: what is UTF-8 byte for byte as such, all else as it reads.
std::string MeantAsUtf8(std::string_view text);

} // namespace conferix
