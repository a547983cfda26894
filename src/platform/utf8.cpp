#include "platform/utf8.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

namespace conferix {

namespace {

const std::uint8_t* BytesAt(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

} // namespace

std::size_t CountCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), StartsCharacter));
}

std::size_t BytesOfCharacters(std::string_view text, std::size_t characters) {
    if (text.size() <= characters)
        return text.size();
    std::size_t count = 0;
    std::size_t at = 0;
    while (at < text.size() && !(StartsCharacter(text[at]) && count++ == characters))
        ++at;
    return at;
}

char32_t TakeCharacter(std::string_view& text) {
    constexpr std::size_t kLongest = 4;
    std::int32_t at = 0;
    UChar32 c = 0;
    U8_NEXT_OR_FFFD(BytesAt(text), at, static_cast<std::int32_t>(std::min(text.size(), kLongest)), c);
    text.remove_prefix(static_cast<std::size_t>(at));
    return static_cast<char32_t>(c);
}

std::size_t FindMalformedUtf8(std::string_view text) {
    const std::uint8_t* bytes = BytesAt(text);
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t at = 0;
    while (at < length) {
        if (bytes[at] < 0x80) {
            ++at;
            continue;
        }
        const std::int32_t start = at;
        UChar32 c = 0;
        U8_NEXT(bytes, at, length, c);
        if (c < 0)
            return static_cast<std::size_t>(start);
    }
    return text.size();
}

} // namespace conferix
