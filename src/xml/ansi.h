// Encodings of one byte a character, Windows-1252 before all, and what was written in UTF-8 and is read in
// one.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// A text that was read as Windows-1252.
struct TAnsiText {
    std::string Text;       ///< in UTF-8
    bool MayBeUtf8 = false; ///< some of its letters may have been meant as UTF-8: FindMisreadUtf8 decides
};
/// Decodes Windows-1252, which every byte is: its five free places are the control characters of Unicode
/// there. Needs no second text where the string has room for what its letters need more.
TAnsiText DecodeAnsi(std::string&& bytes);
TAnsiText DecodeAnsi(std::string_view bytes);
std::string AnsiToUtf8(std::string_view bytes);

/// The characters beyond ASCII of an encoding of one byte a character.
class TCodePage {
  public:
    static constexpr std::size_t kSize = 128;
    /// `characters`: those of the bytes 0x80 to 0xFF; 0 for a byte that is none.
    explicit TCodePage(const std::array<char32_t, kSize>& characters);
    /// Windows-1252, and the control characters that readers of the strict ISO-8859-1 make of 0x80 to 0x9F.
    static const TCodePage& Ansi();

    /// The byte of a character; 0 for one that is not in it, and for ASCII.
    unsigned char ByteOf(char32_t c) const;

  private:
    std::array<unsigned char, 256> low_{};                   ///< of the characters up to U+00FF
    std::vector<std::pair<char32_t, unsigned char>> others_; ///< ascending
};

/// Where a text that was read in a code page shows that it was written in UTF-8, or parts of it.
struct TMisreadUtf8 {
    static constexpr std::size_t kNone = std::string_view::npos;

    std::size_t First = kNone; ///< its first letter that was misread, a certain one where there is one
    std::size_t Kept = kNone;  ///< its first letter that is none of UTF-8, and was read as it was meant
    bool Mostly = false;       ///< letters of the latter sort are slips among many of the former
    bool OnlySigns = false;    ///< signs as "®" were misread, and no letter tells of it
};
/// Nothing for a text that was meant as it reads. The letters decide: one that is, byte for byte, a usual
/// letter of Portuguese in UTF-8, and nothing that people write ("Ã§", "Ãº"), tells by itself. One that may
/// be meant as it reads ("IRMÃ" before a dash) tells nothing, and speaks against it where it would be a small
/// letter behind a capital one. Where there are only other letters and signs, those that are UTF-8 have to
/// outnumber by far what is against it; signs alone ("Â®") tell only where nothing is.
std::optional<TMisreadUtf8> FindMisreadUtf8(std::string_view text, const TCodePage& page);

/// A quick look at bytes that should be UTF-8.
struct TUtf8Look {
    std::size_t Malformed; ///< offset of the first byte that is no text; the size where all is
    bool MayBeTwice =
        false; ///< letters before it may be UTF-8 in Windows-1252 once more: FindMisreadUtf8 decides
};
TUtf8Look LookAtUtf8(std::string_view bytes);
/// What stays as it reads though it is UTF-8 byte for byte.
enum class TKeptUtf8 {
    Nothing,
    Doubtful, ///< what may be meant as it reads
    Signs     ///< that, and signs ("Â®") in values that do not show that they were misread
};
/// The text that was meant: what is UTF-8 byte for byte as such, all else as it reads.
std::string MeantAsUtf8(std::string_view text, const TCodePage& page, TKeptUtf8 kept);

/// True when each byte is a character in Windows-1252, and none of the letters beyond doubt one in UTF-8.
bool IsPlainlyAnsi(std::string_view bytes);

/// Bytes of which some are text in UTF-8 and others in Windows-1252.
struct TMixedText {
    std::string Text;                 ///< what is UTF-8 as such, all else as Windows-1252
    std::vector<std::size_t> Unknown; ///< offsets of bytes that are no UTF-8 and no usual character either
};
TMixedText ReadMixed(std::string_view bytes);

} // namespace conferix
