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
    std::string Bytes; ///< in a code page; 0 for a character that it does not have

    /// The first run of a text from a place on; an empty one behind the last.
    static TRun From(std::string_view text, std::size_t at, const TCodePage& page) {
        TRun run;
        run.At = at + FindNonAscii(text.substr(at));
        for (at = run.At; at < text.size() && static_cast<unsigned char>(text[at]) >= 0x80;)
            run.Bytes += static_cast<char>(page.ByteOf(static_cast<char32_t>(NextCharacter(text, at))));
        run.Size = at - run.At;
        return run;
    }
    std::size_t End() const { return At + Size; }
};

enum class TWriting {
    Utf8,
    UsualUtf8, ///< letters of Portuguese whose bytes, read as single letters, nobody writes side by side
    Utf8WithOtherLetters,
    NoUtf8
};

/// Letters and signs beyond ASCII that are usual in Portuguese.
bool IsUsual(UChar32 c) {
    constexpr std::u32string_view kUsual = U"áàâãéêíóôõúüçñÁÀÂÃÉÊÍÓÔÕÚÜÇÑªº°";
    return kUsual.find(static_cast<char32_t>(c)) != std::u32string_view::npos;
}

/// True of a usual character whose bytes, behind a text, may be meant as they read one by one: "Ã" at
/// the end of a word with a space that does not break, or with a quotation mark that closes what one opened.
bool MayBeMeantAsItReads(UChar32 c, std::string_view before) {
    if (c == U'à')
        return !before.empty() && (static_cast<unsigned char>(before.back()) >= 0x80 ||
                                   u_isalpha(static_cast<unsigned char>(before.back())) != 0);
    const std::size_t value = before.rfind('>');
    return c == U'Ô' &&
           before.substr(value == std::string_view::npos ? 0 : value).find("“") != std::string_view::npos;
}

/// `before`: the text before the run.
TWriting WritingOf(const TRun& run, std::string_view before) {
    TWriting writing = TWriting::Utf8;
    for (std::size_t at = 0; at < run.Bytes.size();) {
        const bool first = at == 0;
        const UChar32 c = NextCharacter(run.Bytes, at);
        if (c < 0x80) // not UTF-8, or none of the code page
            return TWriting::NoUtf8;
        if (u_isalpha(c) != 0 && TCodePage::Ansi().ByteOf(static_cast<char32_t>(c)) == 0)
            writing = TWriting::Utf8WithOtherLetters;
        else if (writing == TWriting::Utf8 && IsUsual(c) && !(first && MayBeMeantAsItReads(c, before)))
            writing = TWriting::UsualUtf8;
    }
    return writing;
}

/// True where only blanks stand between a place and the end of a value.
bool EndsValue(std::string_view bytes, std::size_t at) {
    const std::size_t next = bytes.find_first_not_of(" \t\r\n", at);
    return next == std::string_view::npos ||
           std::string_view("<\"'").find(bytes[next]) != std::string_view::npos;
}

/// True of a byte that is no UTF-8 where it is certain what it stands for in Windows-1252: a usual letter
/// that cannot be what was left of a letter of UTF-8 which was cut with its value.
bool IsUsualByte(std::string_view bytes, std::size_t at) {
    const auto byte = static_cast<unsigned char>(bytes[at]);
    if (byte < 0xA0 || !IsUsual(byte))
        return false;
    if (byte < 0xC0) { // the second half of a letter, or "1º"
        const auto before = static_cast<unsigned char>(at > 0 ? bytes[at - 1] : ' ');
        return before < 0x80 && u_isalnum(before) != 0;
    }
    const bool begins = byte == 0xC2 || byte == 0xC3 || byte == 0xE2; // usual letters and signs
    if (!begins)
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
    std::size_t misread = 0;
    std::size_t kept = 0;
    for (TRun run = TRun::From(text, 0, page); run.Size > 0; run = TRun::From(text, run.End(), page)) {
        const TWriting writing = WritingOf(run, text.substr(0, run.At));
        if ((writing == TWriting::Utf8 || writing == TWriting::UsualUtf8) && ++misread == 1)
            found.First = run.At;
        if (writing == TWriting::UsualUtf8)
            certain = std::min(certain, run.At);
        if (writing == TWriting::NoUtf8 && ++kept == 1)
            found.Kept = run.At;
    }
    found.Mostly = misread > 0 && misread >= kept * kSlip;
    if (certain != TMisreadUtf8::kNone)
        found.First = certain;
    return found.Mostly || certain != TMisreadUtf8::kNone ? std::optional(found) : std::nullopt;
}

std::string MeantAsUtf8(std::string_view text, const TCodePage& page) {
    std::string meant;
    meant.reserve(text.size());
    std::size_t done = 0;
    for (TRun run = TRun::From(text, 0, page); run.Size > 0; run = TRun::From(text, run.End(), page)) {
        meant.append(text, done, run.At - done);
        done = run.At;
        for (std::size_t at = 0; at < run.Bytes.size();) {
            const std::size_t start = at;
            const bool isUtf8 = NextCharacter(run.Bytes, at) >= 0x80;
            at = isUtf8 ? at : start + 1;
            const std::size_t from = done;
            for (std::size_t i = start; i < at; ++i)
                NextCharacter(text, done);
            meant.append(isUtf8 ? std::string_view(run.Bytes).substr(start, at - start)
                                : text.substr(from, done - from));
        }
    }
    meant.append(text, done);
    return meant;
}

TMixedText ReadMixed(std::string_view bytes) {
    TMixedText mixed;
    mixed.Text.reserve(bytes.size() + bytes.size() / 8);
    std::size_t done = 0; // before it all is taken over
    for (std::size_t at = FindNonAscii(bytes); at < bytes.size(); at += FindNonAscii(bytes.substr(at))) {
        const std::size_t start = at;
        if (NextCharacter(bytes, at) >= 0)
            continue;
        at = start + 1;
        if (!IsUsualByte(bytes, start))
            mixed.Unknown.push_back(start);
        mixed.Text.append(bytes, done, start - done);
        mixed.Text += AnsiToUtf8(bytes.substr(start, 1));
        done = at;
    }
    mixed.Text.append(bytes, done);
    return mixed;
}

} // namespace conferix
