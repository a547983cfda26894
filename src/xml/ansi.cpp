#include "xml/ansi.h"

#include "platform/utf8.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace conferix {

namespace {

/// What Windows-1252 has at 0x80 to 0x9F.
constexpr std::array<char16_t, 32> kSpecials = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
/// One letter that is no UTF-8 is a slip among so many that are.
constexpr std::size_t kSlip = 3;
/// How far a value is looked at around a letter; those of the standard are shorter.
constexpr std::size_t kValueSeen = 4096;

UChar32 NextCharacter(std::string_view text, std::size_t& at) {
    std::int32_t length = 0;
    UChar32 c = 0;
    const std::string_view rest = text.substr(at, 4);
    U8_NEXT(reinterpret_cast<const std::uint8_t*>(rest.data()), length,
            static_cast<std::int32_t>(rest.size()), c);
    at += static_cast<std::size_t>(length);
    return c;
}

/// Characters beyond ASCII that follow each other.
struct TRun {
    std::size_t At = 0;
    std::size_t Size = 0;
    std::u32string Read;
    std::string Bytes; ///< of each in a code page; 0 for a character that it does not have

    /// The first run of a text from a place on; an empty one behind the last.
    static TRun From(std::string_view text, std::size_t at, const TCodePage& page) {
        TRun run;
        run.At = at + FindNonAscii(text.substr(at));
        for (at = run.At; at < text.size() && static_cast<unsigned char>(text[at]) >= 0x80;) {
            run.Read += static_cast<char32_t>(NextCharacter(text, at));
            run.Bytes += static_cast<char>(page.ByteOf(run.Read.back()));
        }
        run.Size = at - run.At;
        return run;
    }
    std::size_t End() const { return At + Size; }
};

enum class TWriting {
    Utf8,
    SignInUtf8, ///< only signs as "®", each after a letter that may have been meant
    UsualUtf8,  ///< letters of Portuguese whose bytes, read as single letters, nobody writes side by side
    OtherUtf8,  ///< with letters of other scripts
    Doubtful,   ///< UTF-8, or meant as it reads
    Unlikely,   ///< the same, where UTF-8 would be a small letter behind a capital one
    NoUtf8
};

/// Letters and signs beyond ASCII that are usual in Portuguese.
bool IsUsual(UChar32 c) {
    constexpr std::u32string_view kUsual = U"áàâãéêíóôõúüçñÁÀÂÃÉÊÍÓÔÕÚÜÇÑªº°";
    return kUsual.find(static_cast<char32_t>(c)) != std::u32string_view::npos;
}

/// True where the value around a place has one of some characters before it.
bool HasBefore(std::string_view text, std::size_t at, std::string_view one, std::string_view other) {
    const std::size_t near = std::min(at, kValueSeen);
    const std::string_view before = text.substr(at - near, near);
    const std::size_t start = before.rfind('>');
    const std::string_view value = before.substr(start == std::string_view::npos ? 0 : start);
    return value.find(one) != std::string_view::npos || value.find(other) != std::string_view::npos;
}

/// True where the two characters of a run from an index on may be meant as they read: "Ã" at the end of a
/// word in capitals, and what stands behind words: a space that does not break, a dash, dots, a mark, a
/// quotation mark that closes what another one opened.
bool MayBeMeantAsItReads(std::string_view text, const TRun& run, std::size_t index) {
    const auto inText = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    if (run.Read[index] != U'Ã' || (index == 0 && run.At == 0))
        return false;
    const auto before = static_cast<UChar32>(index > 0 ? run.Read[index - 1] : inText(run.At - 1));
    const char32_t sign = run.Read[index + 1];
    if (u_isupper(before) == 0)
        return sign == U'\u00A0' && u_isalpha(before) != 0;
    const bool last = index + 2 == run.Read.size();
    const auto after = static_cast<UChar32>(!last                     ? run.Read[index + 2]
                                            : run.End() < text.size() ? inText(run.End())
                                                                      : ' ');
    switch (sign) {
    case U'“':
    case U'”':
        return HasBefore(text, run.At, "“", "„");
    case U'‘':
        return HasBefore(text, run.At, "‘", "‚");
    case U'•':
        return after != U'E'; // "ÕE" is Portuguese
    case U'\u00AD':
        return u_islower(after) == 0;
    default:
        return std::u32string_view(U"\u00A0–—…’»›·®™").find(sign) != std::u32string_view::npos;
    }
}

/// A character of UTF-8 in the bytes of a run, or one byte that is none.
struct TLetter {
    std::size_t At = 0; ///< in the bytes
    std::size_t End = 0;
    UChar32 Character = 0; ///< below 0x80 for none
    bool Doubtful = false; ///< may be meant as it reads

    bool IsUtf8() const { return Character >= 0x80; }
};

/// True of a letter or mark that Windows-1252 does not have.
bool IsOther(UChar32 c) {
    return (U_GET_GC_MASK(c) & (U_GC_L_MASK | U_GC_M_MASK)) != 0 &&
           TCodePage::Ansi().ByteOf(static_cast<char32_t>(c)) == 0;
}

/// The letter of a run that begins at one of its bytes.
TLetter LetterAt(std::string_view text, const TRun& run, std::size_t at) {
    TLetter letter{at, at, 0, false};
    letter.Character = NextCharacter(run.Bytes, letter.End);
    // "É’" or "Ó”": nobody writes what a capital letter of Portuguese and a sign would be in UTF-8.
    if (letter.IsUtf8() && IsOther(letter.Character) &&
        std::u32string_view(U"ÇÉÊÍÓÔÕÚ").find(run.Read[at]) != std::u32string_view::npos)
        letter.Character = 0;
    if (!letter.IsUtf8())
        letter.End = at + 1;
    letter.Doubtful = letter.IsUtf8() && letter.End == at + 2 && MayBeMeantAsItReads(text, run, at);
    return letter;
}

TWriting WritingOf(std::string_view text, const TRun& run) {
    TWriting writing = TWriting::Utf8;
    bool onlySigns = true;
    for (std::size_t at = 0; at < run.Bytes.size();) {
        const TLetter letter = LetterAt(text, run, at);
        const UChar32 c = letter.Character;
        if (!letter.IsUtf8())
            return TWriting::NoUtf8;
        at = letter.End;
        onlySigns = onlySigns && c < 0x100 && u_isgraph(c) != 0 && u_isalpha(c) == 0 && !IsUsual(c);
        if (IsOther(c))
            writing = TWriting::OtherUtf8;
        else if (letter.Doubtful && writing == TWriting::Utf8)
            writing = u_islower(c) != 0 ? TWriting::Unlikely : TWriting::Doubtful;
        else if (!letter.Doubtful && writing != TWriting::OtherUtf8 && IsUsual(c))
            writing = TWriting::UsualUtf8;
    }
    return writing == TWriting::Utf8 && onlySigns ? TWriting::SignInUtf8 : writing;
}

/// True where only blanks stand between a place and the end of a value.
bool EndsValue(std::string_view bytes, std::size_t at) {
    const std::size_t next = bytes.find_first_not_of(" \t\r\n", at);
    return next == std::string_view::npos ||
           std::string_view("<\"'").find(bytes[next]) != std::string_view::npos;
}

/// True of the first byte of a usual letter or sign in UTF-8.
bool BeginsUsualUtf8(unsigned char byte) {
    return byte == 0xC2 || byte == 0xC3 || byte == 0xE2;
}

/// True of a sign of Windows-1252 where it stands for itself: quotation marks around something, and what is
/// no first character of a value, for the second half of a letter may have been left there.
bool IsUsualSign(std::string_view bytes, std::size_t at) {
    constexpr std::string_view kSigns = "\x80\x85\x91\x92\x93\x94\x95\x96\x97\x99"; // € … ‘ ’ “ ” • – — ™
    const char before = at > 0 ? bytes[at - 1] : '>';
    const auto byte = static_cast<unsigned char>(before);
    const bool goesOn = byte >= 0x80 && (byte < 0xC0 || BeginsUsualUtf8(byte) || byte == 0xF0);
    if (kSigns.find(bytes[at]) == std::string_view::npos || goesOn)
        return false;
    if (before != '>')
        return true;
    const std::string_view rest = bytes.substr(at, kValueSeen);
    const std::string_view value = rest.substr(0, rest.find('<'));
    return (value[0] == '\x93' && value.find('\x94') != std::string_view::npos) ||
           (value[0] == '\x91' && value.find('\x92') != std::string_view::npos);
}

/// True of a byte that is no UTF-8 where it is certain what it stands for in Windows-1252: a usual character
/// that cannot be what was left of a letter of UTF-8 which was cut with its value.
bool IsUsualByte(std::string_view bytes, std::size_t at) {
    const auto byte = static_cast<unsigned char>(bytes[at]);
    if (byte < 0xA0)
        return IsUsualSign(bytes, at);
    if (!IsUsual(byte))
        return false;
    if (byte < 0xC0) { // the second half of a letter, or "1º"
        const auto before = static_cast<unsigned char>(at > 0 ? bytes[at - 1] : ' ');
        return before < 0x80 && u_isalnum(before) != 0;
    }
    if (!BeginsUsualUtf8(byte))
        return true;
    const bool goesOn = at + 1 < bytes.size() && (static_cast<unsigned char>(bytes[at + 1]) & 0xC0U) == 0x80;
    return !goesOn && !EndsValue(bytes, at + 1);
}

} // namespace

TAnsiText DecodeAnsi(std::string&& bytes) {
    const auto codeAt = [&bytes](std::size_t at) -> unsigned {
        const auto byte = static_cast<unsigned char>(bytes[at]);
        return byte < 0x80 ? byte : byte < 0xA0 ? kSpecials[byte - 0x80U] : byte;
    };
    const auto lengthOf = [](unsigned c) -> std::size_t { return c < 0x800 ? 2 : 3; };
    const auto plainFrom = [&bytes](std::size_t at) {
        return FindNonAscii(std::string_view(bytes).substr(at));
    };

    TAnsiText result;
    const std::size_t first = plainFrom(0);
    std::size_t more = 0; // bytes that UTF-8 takes beside one a character
    for (std::size_t at = first; at < bytes.size(); at += 1 + plainFrom(at + 1)) {
        more += lengthOf(codeAt(at)) - 1;
        // What begins a character of UTF-8, and what goes on with it.
        result.MayBeUtf8 = result.MayBeUtf8 || (at > first && static_cast<unsigned char>(bytes[at]) < 0xC0 &&
                                                static_cast<unsigned char>(bytes[at - 1]) >= 0xC0);
    }
    // The rest moves to the end and comes forward again as it grows.
    const std::size_t size = bytes.size();
    bytes.resize(size + more);
    std::memmove(bytes.data() + first + more, bytes.data() + first, size - first);
    std::size_t to = first;
    for (std::size_t from = first + more; from < bytes.size();) {
        const unsigned c = codeAt(from++);
        if (lengthOf(c) == 3) {
            bytes[to++] = static_cast<char>(0xE0U | (c >> 12U));
            bytes[to++] = static_cast<char>(0x80U | ((c >> 6U) & 0x3FU));
        } else {
            bytes[to++] = static_cast<char>(0xC0U | (c >> 6U));
        }
        bytes[to++] = static_cast<char>(0x80U | (c & 0x3FU));
        const std::size_t plain = plainFrom(from);
        std::memmove(bytes.data() + to, bytes.data() + from, plain);
        to += plain;
        from += plain;
    }
    result.Text = std::move(bytes);
    return result;
}

TAnsiText DecodeAnsi(std::string_view bytes) {
    std::string copy;
    copy.reserve(bytes.size() + bytes.size() / 16);
    copy = bytes;
    return DecodeAnsi(std::move(copy));
}

std::string AnsiToUtf8(std::string_view bytes) {
    return DecodeAnsi(bytes).Text;
}

TCodePage::TCodePage(const std::array<char32_t, kSize>& characters) {
    for (std::size_t i = 0; i < kSize; ++i) {
        const char32_t c = characters[i];
        const auto byte = static_cast<unsigned char>(0x80 + i);
        if (c >= 0x80 && c < low_.size())
            low_[c] = byte;
        else if (c >= low_.size())
            others_.emplace_back(c, byte);
    }
    std::ranges::sort(others_);
}

const TCodePage& TCodePage::Ansi() {
    static const TCodePage page = [] {
        std::array<char32_t, kSize> characters{};
        for (std::size_t i = 0; i < kSize; ++i)
            characters[i] = i < kSpecials.size() ? kSpecials[i] : static_cast<char32_t>(0x80 + i);
        TCodePage ansi(characters);
        for (std::size_t i = 0x80; i < 0xA0; ++i)
            ansi.low_[i] = static_cast<unsigned char>(i);
        return ansi;
    }();
    return page;
}

unsigned char TCodePage::ByteOf(char32_t c) const {
    if (c < low_.size())
        return low_[c];
    const auto found = std::ranges::lower_bound(others_, c, {}, &std::pair<char32_t, unsigned char>::first);
    return found != others_.end() && found->first == c ? found->second : 0;
}

TUtf8Look LookAtUtf8(std::string_view bytes) {
    TUtf8Look look{bytes.size()};
    std::size_t end = 0; // of a letter that has the lead byte of one in UTF-8
    for (std::size_t at = FindNonAscii(bytes); at < bytes.size(); at += FindNonAscii(bytes.substr(at))) {
        const std::size_t start = at;
        const UChar32 c = NextCharacter(bytes, at);
        if (c < 0) {
            look.Malformed = start;
            return look;
        }
        look.MayBeTwice = look.MayBeTwice || (end == start && (c < 0xC0 || c > 0xFF));
        end = c >= 0xC2 && c <= 0xF4 ? at : 0;
    }
    return look;
}

std::optional<TMisreadUtf8> FindMisreadUtf8(std::string_view text, const TCodePage& page) {
    TMisreadUtf8 found;
    std::size_t certain = TMisreadUtf8::kNone;
    std::size_t doubtful = TMisreadUtf8::kNone;
    std::size_t misread = 0;
    std::size_t signs = 0;
    std::size_t firstSign = TMisreadUtf8::kNone;
    std::size_t against = 0;
    for (TRun run = TRun::From(text, 0, page); run.Size > 0; run = TRun::From(text, run.End(), page)) {
        const TWriting writing = WritingOf(text, run);
        if (writing == TWriting::SignInUtf8 && ++signs == 1)
            firstSign = run.At;
        if ((writing == TWriting::Utf8 || writing == TWriting::UsualUtf8) && ++misread == 1)
            found.First = run.At;
        if (writing == TWriting::UsualUtf8)
            certain = std::min(certain, run.At);
        if (writing == TWriting::Doubtful || writing == TWriting::Unlikely)
            doubtful = std::min(doubtful, run.At);
        if (writing == TWriting::NoUtf8)
            found.Kept = std::min(found.Kept, run.At);
        if (writing == TWriting::NoUtf8 || writing == TWriting::Unlikely)
            ++against;
    }
    found.OnlySigns = misread == 0 && signs > 0;
    if (found.OnlySigns)
        found.First = firstSign;
    found.Mostly = found.OnlySigns ? against == 0 && doubtful == TMisreadUtf8::kNone
                                   : misread > 0 && misread + signs >= against * kSlip;
    if (!found.Mostly)
        found.Kept = std::min(found.Kept, doubtful);
    if (certain != TMisreadUtf8::kNone)
        found.First = certain;
    return found.Mostly || certain != TMisreadUtf8::kNone ? std::optional(found) : std::nullopt;
}

namespace {

/// The value around a place of a text.
std::string_view ValueAround(std::string_view text, std::size_t at) {
    const std::size_t tag = text.rfind('>', at);
    const std::size_t start = tag == std::string_view::npos ? 0 : tag + 1;
    return text.substr(start, std::min(text.find('<', at), text.size()) - start);
}

} // namespace

std::string MeantAsUtf8(std::string_view text, const TCodePage& page, TKeptUtf8 kept) {
    std::string meant;
    meant.reserve(text.size());
    std::size_t done = 0;
    for (TRun run = TRun::From(text, 0, page); run.Size > 0; run = TRun::From(text, run.End(), page)) {
        meant.append(text, done, run.At - done);
        done = run.At;
        bool keepSigns = kept == TKeptUtf8::Signs && WritingOf(text, run) == TWriting::SignInUtf8;
        if (keepSigns) {
            const auto around = FindMisreadUtf8(ValueAround(text, run.At), page);
            keepSigns = !around || around->OnlySigns;
        }
        for (std::size_t at = 0; at < run.Bytes.size();) {
            const TLetter letter = LetterAt(text, run, at);
            const bool isKept = keepSigns || (kept != TKeptUtf8::Nothing && letter.Doubtful);
            const std::size_t from = done;
            for (; at < letter.End; ++at)
                NextCharacter(text, done);
            meant.append(letter.IsUtf8() && !isKept
                             ? std::string_view(run.Bytes).substr(letter.At, letter.End - letter.At)
                             : text.substr(from, done - from));
        }
    }
    meant.append(text, done);
    return meant;
}

bool IsPlainlyAnsi(std::string_view bytes) {
    constexpr std::string_view kUnused = "\x81\x8D\x8F\x90\x9D";
    if (bytes.find_first_of(kUnused) != std::string_view::npos)
        return false;
    const std::string text = AnsiToUtf8(bytes);
    const TCodePage& page = TCodePage::Ansi();
    for (TRun run = TRun::From(text, 0, page); run.Size > 0; run = TRun::From(text, run.End(), page))
        for (std::size_t at = 0; at < run.Bytes.size();) {
            const TLetter letter = LetterAt(text, run, at);
            if (letter.IsUtf8() && !letter.Doubtful)
                return false;
            at = letter.End;
        }
    return true;
}

TMixedText ReadMixed(std::string_view bytes) {
    TMixedText mixed;
    const std::string text = AnsiToUtf8(bytes);
    const auto misread = FindMisreadUtf8(text, TCodePage::Ansi());
    mixed.Text = MeantAsUtf8(text, TCodePage::Ansi(),
                             misread && misread->Mostly ? TKeptUtf8::Nothing : TKeptUtf8::Doubtful);
    for (std::size_t at = FindNonAscii(bytes); at < bytes.size(); at += FindNonAscii(bytes.substr(at))) {
        const std::size_t start = at;
        if (NextCharacter(bytes, at) >= 0)
            continue;
        at = start + 1;
        if (!IsUsualByte(bytes, start))
            mixed.Unknown.push_back(start);
    }
    return mixed;
}

} // namespace conferix
