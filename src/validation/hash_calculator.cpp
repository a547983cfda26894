#include "validation/hash_calculator.h"

#include "platform/utf8.h"
#include "xml/xml_encoding.h"
#include "xml/xml_scanner.h"

#include <nettle/md5.h>

#include <array>
#include <cstdint>
#include <optional>

namespace conferix {

namespace {

class TMd5 {
  public:
    TMd5() { nettle_md5_init(&state_); }
    void Add(std::string_view bytes) {
        nettle_md5_update(&state_, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
    }
    std::string Digest() {
        std::array<std::uint8_t, MD5_DIGEST_SIZE> digest{};
        nettle_md5_digest(&state_, digest.size(), digest.data());
        static constexpr char kDigits[] = "0123456789abcdef";
        std::string text;
        for (const std::uint8_t byte : digest) {
            text += kDigits[byte >> 4U];
            text += kDigits[byte & 15U];
        }
        return text;
    }

  private:
    md5_ctx state_{};
};

/// What is digested at a time, in bytes.
constexpr std::size_t kPiece = std::size_t{64} * 1024;

/// Hands the hash text to `take` in pieces of whole values, each of at least some bytes.
template<class Take>
void ForEachPiece(const TXmlDocument& document, std::size_t least, Take&& take) {
    std::string buffer;
    TXmlMappingScanner::Scan(document.Root(), [&](const TXmlNode& node, bool& stop) {
        if (node.LocalName() == "epilogo") {
            stop = true;
        } else if (node.IsTag() && node.HasValue()) {
            buffer += node.Value();
            if (buffer.size() >= least) {
                take(buffer);
                buffer.clear();
            }
        }
    });
    take(buffer);
}

/// Both digests of what `textOf` makes of the pieces.
template<class TextOf>
THashes BothOf(const TXmlDocument& document, std::size_t least, TextOf&& textOf) {
    TMd5 iso;
    std::optional<TMd5> utf8; // begins where the two texts first differ
    ForEachPiece(document, least, [&](const std::string& piece) {
        const std::string& text = textOf(piece);
        if (FindNonAscii(text) == text.size()) {
            iso.Add(text);
            if (utf8)
                utf8->Add(text);
            return;
        }
        const std::string ansi = EncodeAnsi(text);
        if (!utf8 && ansi != text)
            utf8.emplace(iso);
        iso.Add(ansi);
        if (utf8)
            utf8->Add(text);
    });
    const std::string digest = iso.Digest();
    return {digest, utf8 ? utf8->Digest() : digest};
}

} // namespace

std::string THashCalculator::Calculate(const TXmlDocument& document, THashEncoding encoding) {
    TMd5 md5;
    ForEachPiece(document, kPiece, [&](const std::string& piece) {
        md5.Add(encoding == THashEncoding::Utf8 ? piece : EncodeAnsi(piece));
    });
    return md5.Digest();
}

THashes THashCalculator::CalculateBoth(const TXmlDocument& document) {
    return BothOf(document, kPiece, [](const std::string& piece) -> const std::string& { return piece; });
}

THashes THashCalculator::CalculateMeant(const TXmlDocument& document) {
    const TXmlMisreading* misreading = document.Misreading();
    return misreading != nullptr && misreading->OfLetters()
               ? BothOf(document, 0, // what a value was meant to be depends on nothing around it
                        [&](const std::string& piece) { return MeantText(piece, *misreading); })
               : CalculateBoth(document);
}

} // namespace conferix
