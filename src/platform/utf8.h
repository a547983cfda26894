// Text in UTF-8, which all text in memory is. A character is a code point.
#pragma once

#include <cstddef>
#include <string_view>

namespace conferix {

/// True for the first byte of a character, false for those that go on with one.
inline bool StartsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

/// Offset of the first byte that is not ASCII; the text's size when all are.
std::size_t FindNonAscii(std::string_view text);

/// Number of characters of a text.
std::size_t CountCharacters(std::string_view text);

/// Bytes of the first characters of a text, all when it has no more of them.
std::size_t BytesOfCharacters(std::string_view text, std::size_t characters);

/// Takes the first character off a text that is not empty. U+FFFD for what is no UTF-8.
char32_t TakeCharacter(std::string_view& text);

/// Offset of the first byte that is no UTF-8; the text's size when there is none. Texts of up to 2^31 - 1
/// bytes.
std::size_t FindMalformedUtf8(std::string_view text);

} // namespace conferix
