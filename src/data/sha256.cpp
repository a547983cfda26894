#include "data/sha256.h"

#include "platform/platform.h"

#include <nettle/base64.h>
#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <fstream>

namespace conferix {

std::string Sha256OfFile(const std::filesystem::path& file) {
    sha256_ctx context{};
    sha256_init(&context);
    std::ifstream stream(file, std::ios::binary);
    std::array<char, 65536> buffer{};
    while (stream) {
        stream.read(buffer.data(), buffer.size());
        sha256_update(&context, static_cast<std::size_t>(stream.gcount()),
                      reinterpret_cast<const std::uint8_t*>(buffer.data()));
    }
    if (!stream.eof())
        throw EFileNotRead(file, "não pôde ser lido até o fim");
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&context, digest.size(), digest.data());
    constexpr std::string_view kHex = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : digest)
        (text += kHex[byte >> 4U]) += kHex[byte & 0xFU];
    return text;
}

std::string Sha256Base64(std::string_view text) {
    sha256_ctx context{};
    sha256_init(&context);
    sha256_update(&context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&context, digest.size(), digest.data());
    std::array<char, BASE64_ENCODE_RAW_LENGTH(SHA256_DIGEST_SIZE)> encoded{};
    base64_encode_raw(encoded.data(), digest.size(), digest.data());
    return {encoded.data(), encoded.size()};
}

} // namespace conferix
