#include "platform/utf8.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace conferix {

namespace {

const std::uint8_t* BytesAt(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

} // namespace

std::size_t FindNonAscii(std::string_view text) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::array<std::uint64_t, 8> block{};
    std::size_t at = 0;
    for (; at + sizeof block <= text.size(); at += sizeof block) {
        std::memcpy(block.data(), text.data() + at, sizeof block);
        std::uint64_t all = 0;
        for (const std::uint64_t bytes : block)
            all |= bytes;
        if ((all & kHighBits) != 0)
            break;
    }
    for (std::uint64_t bytes = 0; at + sizeof bytes <= text.size(); at += sizeof bytes) {
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        if ((bytes & kHighBits) != 0)
            break;
    }
    while (at < text.size() && static_cast<signed char>(text[at]) >= 0)
        ++at;
    return at;
}

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
    while (true) {
        at += static_cast<std::int32_t>(FindNonAscii(text.substr(static_cast<std::size_t>(at))));
        if (at == length)
            return text.size();
        const std::int32_t start = at;
        UChar32 c = 0;
        U8_NEXT(bytes, at, length, c);
        if (c < 0)
            return static_cast<std::size_t>(start);
    }
}

} // namespace conferix
