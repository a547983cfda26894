#include "schema_model/seal.h"

#include <cstdint>

namespace conferix {

namespace {

constexpr std::string_view kStart = "<!-- Conferix ";
constexpr std::string_view kEnd = " -->\n";
constexpr std::size_t kDigits = 16;

/// FNV-1a over 64 bits: tells changes apart; nobody gains anything by forging it.
std::string Digest(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    std::string digits(kDigits, '0');
    for (std::size_t i = kDigits; i-- > 0; hash >>= 4U)
        digits[i] = "0123456789abcdef"[hash & 0xFU];
    return digits;
}

} // namespace

std::string WithSeal(std::string text) {
    const std::string digest = Digest(text);
    text.append(kStart).append(digest).append(kEnd);
    return text;
}

bool HasIntactSeal(std::string_view text) {
    constexpr std::size_t kLength = kStart.size() + kDigits + kEnd.size();
    if (text.size() < kLength)
        return false;
    const std::string_view seal = text.substr(text.size() - kLength);
    return seal.starts_with(kStart) && seal.ends_with(kEnd) &&
           seal.substr(kStart.size(), kDigits) == Digest(text.substr(0, text.size() - kLength));
}

} // namespace conferix
