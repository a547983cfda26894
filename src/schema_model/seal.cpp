#include "schema_model/seal.h"

#include <cstdint>

namespace conferix {

namespace {

constexpr std::string_view kStart = "<!-- Conferix ";
constexpr std::string_view kApproximation = "aproximado ";
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

/// True for a text that ends with the seal that begins so, and is as it was.
bool EndsWithSeal(std::string_view text, const std::string& start) {
    const std::size_t length = start.size() + kDigits + kEnd.size();
    if (text.size() < length)
        return false;
    const std::string_view seal = text.substr(text.size() - length);
    return seal.starts_with(start) && seal.ends_with(kEnd) &&
           seal.substr(start.size(), kDigits) == Digest(text.substr(0, text.size() - length));
}

const std::string kPlainStart(kStart);
const std::string kApproximationStart = kPlainStart + std::string(kApproximation);

} // namespace

std::string WithSeal(std::string text, bool approximation) {
    const std::string digest = Digest(text);
    text.append(approximation ? kApproximationStart : kPlainStart).append(digest).append(kEnd);
    return text;
}

bool HasIntactSeal(std::string_view text) {
    return EndsWithSeal(text, kPlainStart) || IsSealedApproximation(text);
}

bool IsSealedApproximation(std::string_view text) {
    return EndsWithSeal(text, kApproximationStart);
}

} // namespace conferix
