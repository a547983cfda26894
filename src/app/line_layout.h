// The lines into which a text is broken, for people who read it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace conferix {

/// Bytes from which on a line is too long to be read or worked on.
inline constexpr std::size_t kLongLine = 20'000;

/// Bytes of the longest line of a text.
std::size_t LongestLine(std::string_view text);

/// True where the longest line is wider than any screen and holds many elements, which FormatXml would part;
/// a long value alone is no reason.
bool HasCrowdedLine(std::string_view text);

/// The same XML with a line an element and its children indented by two blanks. Only white space between one
/// tag and another changes: no value of an element does, and so no hash. What is no well-formed XML keeps all
/// that is no white space.
std::string FormatXml(std::string_view text);

/// The text with a line break after every `width` bytes of a line, between characters: for showing alone.
std::string WrapLines(std::string_view text, std::size_t width);

} // namespace conferix
