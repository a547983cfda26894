#include "data/plain_text.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace conferix {

std::string PlainText(std::string_view text) {
    static const icu::Normalizer2* const decompose = [] {
        UErrorCode status = U_ZERO_ERROR;
        return icu::Normalizer2::getNFDInstance(status);
    }();
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString composed =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    const icu::UnicodeString letters =
        decompose != nullptr ? decompose->normalize(composed, status) : composed;
    icu::UnicodeString plain;
    for (std::int32_t i = 0; i < letters.length(); i = letters.moveIndex32(i, 1)) {
        const UChar32 c = letters.char32At(i);
        if (u_isalnum(c)) {
            plain.append(u_tolower(c));
        } else if (u_charType(c) != U_NON_SPACING_MARK && !plain.isEmpty() && !plain.endsWith(u' ')) {
            plain.append(u' ');
        }
    }
    plain.trim();
    std::string utf8;
    return plain.toUTF8String(utf8);
}

} // namespace conferix
