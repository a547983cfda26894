#include "report/console.h"

#include "platform/format_settings.h"
#include "platform/platform.h"
#include "platform/terminal.h"
#include "platform/utf8.h"

#include <fmt/format.h>

#include <algorithm>

namespace conferix {

TPalette::TPalette(bool terminal)
    : enabled_(terminal && GetEnvironment("NO_COLOR").empty() && TerminalKnowsColours()) {}

std::string TPalette::Paint(std::string_view code, std::string_view text) const {
    return enabled_ && !text.empty() ? fmt::format("\x1B[{}m{}\x1B[0m", code, text) : std::string(text);
}

std::string TPalette::Severity(TMessageType type, std::string_view text) const {
    switch (type) {
    case TMessageType::mtInformation:
        return Paint("36", text);
    case TMessageType::mtWarning:
        return Paint("33", text);
    case TMessageType::mtError:
        return Paint("31", text);
    case TMessageType::mtFatal:
        return Paint("1;31", text);
    case TMessageType::mtSuccess:
        return Paint("32", text);
    }
    return std::string(text);
}

std::string_view SeverityLabel(TMessageType type) {
    static constexpr std::string_view kLabels[] = {"informação", "aviso", "erro", "erro fatal", "sucesso"};
    return kLabels[static_cast<std::size_t>(type)];
}

std::string_view NameOf(TMessageType type) {
    static constexpr std::string_view kNames[] = {"mtInformation", "mtWarning", "mtError", "mtFatal",
                                                  "mtSuccess"};
    return kNames[static_cast<std::size_t>(type)];
}

namespace {

/// True for characters that move the cursor, steer the terminal or turn the direction of the text round.
bool Steers(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x061C || c == 0x200E || c == 0x200F || c == 0x2028 ||
           c == 0x2029 || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

std::string Escape(char32_t c) {
    switch (c) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return c < 0x80 ? fmt::format("\\x{:02X}", static_cast<unsigned>(c))
                        : fmt::format("\\u{:04X}", static_cast<unsigned>(c));
    }
}

} // namespace

std::string Visible(std::string_view text) {
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~'; };
    if (std::ranges::all_of(text, isPlain)) // as nearly all texts are
        return std::string(text);
    std::string visible;
    visible.reserve(text.size());
    while (!text.empty()) {
        std::string_view good = text.substr(0, FindMalformedUtf8(text));
        text.remove_prefix(good.size());
        while (!good.empty()) {
            const std::string_view from = good;
            const char32_t c = TakeCharacter(good);
            if (Steers(c))
                visible += Escape(c);
            else
                visible += from.substr(0, from.size() - good.size());
        }
        if (!text.empty()) {
            visible += fmt::format("\\x{:02X}", static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
        }
    }
    return visible;
}

std::string OneLine(std::string_view text) {
    std::string line(text);
    for (std::size_t at = line.find("\r\n"); at != std::string::npos; at = line.find("\r\n", at))
        line.replace(at, 2, " ");
    return line;
}

std::string IndentLines(std::string_view text, std::size_t indent) {
    std::string out;
    for (;;) {
        const std::size_t end = text.find("\r\n");
        out += Visible(text.substr(0, end));
        if (end == std::string_view::npos)
            return out;
        out.append("\n").append(indent, ' ');
        text.remove_prefix(end + 2);
    }
}

std::string Counted(std::size_t count, std::string_view one, std::string_view many) {
    return fmt::format("{} {}", TFormatSettings::Regional().Count(static_cast<std::int64_t>(count)),
                       count == 1 ? one : many);
}

} // namespace conferix
