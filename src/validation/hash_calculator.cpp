#include "validation/hash_calculator.h"

#include "xml/xml_encoding.h"
#include "xml/xml_scanner.h"

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <optional>
#include <stdexcept>

namespace conferix {

namespace {

class TMd5 {
  public:
    TMd5() : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free) {
        Require(context_ != nullptr && EVP_DigestInit_ex(context_.get(), EVP_md5(), nullptr) == 1);
    }
    TMd5(const TMd5& other) : TMd5() {
        Require(EVP_MD_CTX_copy_ex(context_.get(), other.context_.get()) == 1);
    }
    TMd5& operator=(const TMd5&) = delete;
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

namespace {

/// Hands the hash text to `take` in pieces of whole characters.
template<class Take>
void ForEachPiece(const TXmlDocument& document, Take&& take) {
    constexpr std::size_t kPiece = std::size_t{64} * 1024;
    std::string buffer;
    TXmlMappingScanner::Scan(document.Root(), [&](const TXmlNode& node, bool& stop) {
        if (node.LocalName() == "epilogo") {
            stop = true;
        } else if (node.IsTag() && node.HasValue()) {
            buffer += node.Value();
            if (buffer.size() >= kPiece) {
                take(buffer);
                buffer.clear();
            }
        }
    });
    take(buffer);
}

} // namespace

std::string THashCalculator::Calculate(const TXmlDocument& document, THashEncoding encoding) {
    TMd5 md5;
    ForEachPiece(document, [&](const std::string& piece) {
        md5.Add(encoding == THashEncoding::Utf8 ? piece : EncodeAnsi(piece));
    });
    return md5.Digest();
}

THashes THashCalculator::CalculateBoth(const TXmlDocument& document) {
    TMd5 iso;
    std::optional<TMd5> utf8; // begins where the two texts first differ
    ForEachPiece(document, [&](const std::string& piece) {
        const std::string ansi = EncodeAnsi(piece);
        if (!utf8 && ansi != piece)
            utf8.emplace(iso);
        iso.Add(ansi);
        if (utf8)
            utf8->Add(piece);
    });
    const std::string digest = iso.Digest();
    return {digest, utf8 ? utf8->Digest() : digest};
}

} // namespace conferix
