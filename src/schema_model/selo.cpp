#include "schema_model/selo.h"

#include <cstdint>

namespace conferix {

namespace {

constexpr std::string_view kInicio = "<!-- Conferix ";
constexpr std::string_view kFim = " -->\n";
constexpr std::size_t kDigitos = 16;

/// FNV-1a over 64 bits: tells changes apart; nobody gains anything by forging it.
std::string Digest(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    std::string digits(kDigitos, '0');
    for (std::size_t i = kDigitos; i-- > 0; hash >>= 4U)
        digits[i] = "0123456789abcdef"[hash & 0xFU];
    return digits;
}

} // namespace

std::string ComSelo(std::string text) {
    const std::string digest = Digest(text);
    text.append(kInicio).append(digest).append(kFim);
    return text;
}

bool SeloIntacto(std::string_view text) {
    constexpr std::size_t kLength = kInicio.size() + kDigitos + kFim.size();
    if (text.size() < kLength)
        return false;
    const std::string_view seal = text.substr(text.size() - kLength);
    return seal.starts_with(kInicio) && seal.ends_with(kFim) &&
           seal.substr(kInicio.size(), kDigitos) == Digest(text.substr(0, text.size() - kLength));
}

} // namespace conferix
