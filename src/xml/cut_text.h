// Values and names in messages, which a file can make as long as it likes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace conferix {

/// Characters (code points) shown of a value, name or number in the sentences that are the program's own.
inline constexpr std::size_t kShownText = 120;
/// Characters shown of the value that a rule found.
inline constexpr std::size_t kShownFound = 1000;

/// A text in UTF-8 cut to a number of characters; a cut one ends in "..." and its length in characters, as
/// "... (350 caracteres)".
std::string CutText(std::string_view text, std::size_t characters = kShownText);

/// The same in quotes, with the length after them.
std::string QuoteText(std::string_view text, std::size_t characters = kShownText);

} // namespace conferix
