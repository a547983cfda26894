#include "xml/cut_text.h"

#include <fmt/format.h>

#include <algorithm>

namespace conferix {

namespace {

bool StartsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

/// Bytes of the first characters of a text, all when it has no more of them.
std::size_t BytesOf(std::string_view text, std::size_t characters) {
    if (text.size() <= characters)
        return text.size();
    std::size_t count = 0;
    std::size_t at = 0;
    while (at < text.size() && !(StartsCharacter(text[at]) && count++ == characters))
        ++at;
    return at;
}

std::string LengthOf(std::string_view text) {
    return fmt::format(" ({} caracteres)", std::count_if(text.begin(), text.end(), StartsCharacter));
}

} // namespace

std::string CutText(std::string_view text, std::size_t characters) {
    const std::size_t shown = BytesOf(text, characters);
    if (shown == text.size())
        return std::string(text);
    return std::string(text.substr(0, shown)) + "..." + LengthOf(text);
}

std::string QuoteText(std::string_view text, std::size_t characters) {
    const std::size_t shown = BytesOf(text, characters);
    if (shown == text.size())
        return fmt::format("\"{}\"", text);
    return fmt::format("\"{}...\"{}", text.substr(0, shown), LengthOf(text));
}

} // namespace conferix
