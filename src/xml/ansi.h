// Windows-1252, and what was written in UTF-8 and is read in it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// Decodes Windows-1252, which every byte is: its five free places are the control characters of Unicode
/// there.
std::string AnsiToUtf8(std::string_view bytes);

/// Where a text that was read as Windows-1252 shows that it was written in UTF-8, or parts of it.
struct TUtf8AsAnsi {
    static constexpr std::size_t kNone = std::string_view::npos;

    std::size_t First = kNone; ///< its first letter that was misread, a certain one where there is one
    std::size_t Kept = kNone;  ///< its first letter that is none of UTF-8, and was read as it was meant
    bool Mostly = false;       ///< letters of the latter sort are slips among many of the former
};
/// Nothing for a text that was meant as it reads. The letters decide: one that is, byte for byte, a usual
/// letter of Portuguese in UTF-8, and nothing that people write ("Ã§", "Ãº"), tells by itself. Where there is
/// only such as may be meant as it reads ("Ã" before a quotation mark), those that are UTF-8 have to
/// outnumber by far those that are none.
std::optional<TUtf8AsAnsi> FindUtf8AsAnsi(std::string_view text);
/// The text that was meant: what is UTF-8 byte for byte as such, all else as it reads.
std::string MeantAsUtf8(std::string_view text);

/// Bytes of which some are text in UTF-8 and others in Windows-1252.
struct TMixedText {
    std::string Text;                 ///< what is UTF-8 as such, all else as Windows-1252
    std::vector<std::size_t> Unknown; ///< offsets of bytes that are no UTF-8 and no usual letter either
};
TMixedText ReadMixed(std::string_view bytes);

} // namespace conferix
