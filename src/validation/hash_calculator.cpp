#include "validation/hash_calculator.h"

#include "xml/xml_encoding.h"
#include "xml/xml_scanner.h"

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <stdexcept>

namespace conferix {

namespace {

class TMd5 {
  public:
    TMd5() : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free) {
        Require(context_ != nullptr && EVP_DigestInit_ex(context_.get(), EVP_md5(), nullptr) == 1);
    }
    void Add(std::string_view bytes) {
        Require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1);
    }
    std::string Digest() {
        std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
        unsigned int length = 0;
        Require(EVP_DigestFinal_ex(context_.get(), digest.data(), &length) == 1);
        static constexpr char kDigits[] = "0123456789abcdef";
        std::string text;
        for (unsigned int i = 0; i < length; ++i) {
            text += kDigits[digest[i] >> 4U];
            text += kDigits[digest[i] & 15U];
        }
        return text;
    }

  private:
    static void Require(bool done) {
        if (!done)
            throw std::runtime_error("o cálculo de MD5 não está disponível na biblioteca de criptografia");
    }
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
};

} // namespace

std::string THashCalculator::Calculate(const TXmlDocument& document, THashEncoding encoding) {
    constexpr std::size_t kChunk = 64 * 1024;
    TMd5 md5;
    std::string buffer;
    const auto flush = [&] {
        md5.Add(encoding == THashEncoding::Utf8 ? buffer : EncodeAnsi(buffer));
        buffer.clear();
    };
    TXmlMappingScanner::Scan(document.Root(), [&](const TXmlNode& node, bool& stop) {
        if (node.LocalName() == "epilogo") {
            stop = true;
        } else if (node.IsTag() && node.HasValue()) {
            buffer += node.Value();
            if (buffer.size() >= kChunk)
                flush();
        }
    });
    flush();
    return md5.Digest();
}

} // namespace conferix
