#include "xml/ansi.h"

#include "platform/utf8.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace conferix {

namespace {

/// What Windows-1252 has at 0x80 to 0x9F.
constexpr std::array<char16_t, 32> kSpecials = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
/// So many letters tell what a text was written in.
constexpr std::size_t kRunsJudged = 20'000;
/// One letter that is no UTF-8 is a slip among so many that are.
constexpr std::size_t kSlip = 3;

/// The byte of a character beyond ASCII; 0 for one that Windows-1252 does not have.
unsigned char ByteOf(UChar32 c) {
    if (c >= 0xA0 && c <= 0xFF)
        return static_cast<unsigned char>(c);
    const auto special = std::ranges::find(kSpecials, static_cast<std::uint32_t>(c));
    return special != kSpecials.end() ? static_cast<unsigned char>(0x80 + (special - kSpecials.begin())) : 0;
}

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
    std::string Bytes; ///< in Windows-1252; 0 for a character that it does not have

    /// The first run of a text from a place on; an empty one behind the last.
    static TRun From(std::string_view text, std::size_t at) {
        TRun run;
        run.At = at + FindNonAscii(text.substr(at));
        for (at = run.At; at < text.size() && static_cast<unsigned char>(text[at]) >= 0x80;)
            run.Bytes += static_cast<char>(ByteOf(NextCharacter(text, at)));
        run.Size = at - run.At;
        return run;
    }
    std::size_t End() const { return At + Size; }
};

enum class TWriting { Utf8, Utf8WithOtherLetters, NoUtf8 };

TWriting WritingOf(const TRun& run) {
    TWriting writing = TWriting::Utf8;
    for (std::size_t at = 0; at < run.Bytes.size();) {
        const UChar32 c = NextCharacter(run.Bytes, at);
        if (c < 0x80) // not UTF-8, or none of Windows-1252
            return TWriting::NoUtf8;
        if (u_isalpha(c) != 0 && ByteOf(c) == 0)
            writing = TWriting::Utf8WithOtherLetters;
    }
    return writing;
}

} // namespace

std::string AnsiToUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    while (true) {
        const std::size_t plain = FindNonAscii(bytes);
        text.append(bytes, 0, plain);
        if (plain == bytes.size())
            return text;
        const auto byte = static_cast<unsigned char>(bytes[plain]);
        const unsigned c = byte < 0xA0 ? kSpecials[byte - 0x80U] : byte;
        if (c < 0x800) {
            text += static_cast<char>(0xC0U | (c >> 6U));
        } else {
            text += static_cast<char>(0xE0U | (c >> 12U));
            text += static_cast<char>(0x80U | ((c >> 6U) & 0x3FU));
        }
        text += static_cast<char>(0x80U | (c & 0x3FU));
        bytes.remove_prefix(plain + 1);
    }
}

std::optional<TUtf8AsAnsi> FindUtf8AsAnsi(std::string_view text) {
    TUtf8AsAnsi found;
    std::size_t misread = 0;
    std::size_t kept = 0;
    TRun run = TRun::From(text, 0);
    for (std::size_t runs = 0; run.Size > 0 && runs < kRunsJudged;
         ++runs, run = TRun::From(text, run.End())) {
        const TWriting writing = WritingOf(run);
        if (writing == TWriting::Utf8 && ++misread == 1)
            found.First = run.At;
        if (writing == TWriting::NoUtf8 && ++kept == 1)
            found.Kept = run.At;
    }
    return misread > 0 && misread >= kept * kSlip ? std::optional(found) : std::nullopt;
}

std::string MeantAsUtf8(std::string_view text) {
    std::string meant;
    meant.reserve(text.size());
    std::size_t done = 0;
    for (TRun run = TRun::From(text, 0); run.Size > 0; run = TRun::From(text, run.End())) {
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

} // namespace conferix
