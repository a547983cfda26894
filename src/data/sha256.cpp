#include "data/sha256.h"

#include "platform/platform.h"

#include <openssl/evp.h>

#include <array>
#include <fstream>
#include <memory>
#include <string_view>

namespace conferix {

std::string Sha256OfFile(const std::filesystem::path& file) {
    const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr);
    std::ifstream stream(file, std::ios::binary);
    std::array<char, 65536> buffer{};
    while (stream) {
        stream.read(buffer.data(), buffer.size());
        EVP_DigestUpdate(context.get(), buffer.data(), static_cast<std::size_t>(stream.gcount()));
    }
    if (!stream.eof())
        throw EFileNotRead(file, "não pôde ser lido até o fim");
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    EVP_DigestFinal_ex(context.get(), digest.data(), &length);
    constexpr std::string_view kHex = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < length; ++i)
        (text += kHex[digest[i] >> 4U]) += kHex[digest[i] & 0xFU];
    return text;
}

} // namespace conferix
