#include "xml/cut_text.h"

#include "platform/utf8.h"

#include <fmt/format.h>

namespace conferix {

namespace {

std::string LengthOf(std::string_view text) {
    return fmt::format(" ({} caracteres)", CountCharacters(text));
}

} // namespace

std::string CutText(std::string_view text, std::size_t characters) {
    const std::size_t shown = BytesOfCharacters(text, characters);
    if (shown == text.size())
        return std::string(text);
    return std::string(text.substr(0, shown)) + "..." + LengthOf(text);
}

std::string QuoteText(std::string_view text, std::size_t characters) {
    const std::size_t shown = BytesOfCharacters(text, characters);
    if (shown == text.size())
        return fmt::format("\"{}\"", text);
    return fmt::format("\"{}...\"{}", text.substr(0, shown), LengthOf(text));
}

} // namespace conferix
