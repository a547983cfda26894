#include "app/line_layout.h"

#include "platform/utf8.h"

#include <algorithm>

namespace conferix {

namespace {

/// Deeper elements are indented no further, lest a text of nested elements grow with the square of its depth.
constexpr std::size_t kMaxDepth = 40;
/// Bytes of a line that no screen shows at once.
constexpr std::size_t kWideLine = 600;

enum class TMarkup { Open, Close, Empty, Data, Other };

struct TToken {
    TMarkup Kind = TMarkup::Other;
    std::size_t End = 0; ///< one past it
};

std::size_t EndAfter(std::string_view text, std::string_view mark, std::size_t from) {
    const std::size_t found = text.find(mark, from);
    return found == std::string_view::npos ? text.size() : found + mark.size();
}

/// One past the ">" of a tag; what stands in quotes is passed over.
std::size_t EndOfTag(std::string_view text, std::size_t from) {
    for (;;) {
        const std::size_t at = text.find_first_of(">\"'", from);
        if (at == std::string_view::npos)
            return text.size();
        if (text[at] == '>')
            return at + 1;
        from = EndAfter(text, text.substr(at, 1), at + 1);
    }
}

/// The markup at a "<".
TToken MarkupAt(std::string_view text, std::size_t at) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--"))
        return {TMarkup::Other, EndAfter(text, "-->", at + 4)};
    if (rest.starts_with("<![CDATA["))
        return {TMarkup::Data, EndAfter(text, "]]>", at)};
    if (rest.starts_with("<?"))
        return {TMarkup::Other, EndAfter(text, "?>", at)};
    const std::size_t end = EndOfTag(text, at);
    if (rest.starts_with("<!"))
        return {TMarkup::Other, end};
    if (rest.starts_with("</"))
        return {TMarkup::Close, end};
    return {text.substr(0, end).ends_with("/>") ? TMarkup::Empty : TMarkup::Open, end};
}

std::string_view LongestLineOf(std::string_view text) {
    std::string_view longest;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (end > longest.size())
            longest = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return longest;
}

} // namespace

std::size_t LongestLine(std::string_view text) {
    return LongestLineOf(text).size();
}

bool HasCrowdedLine(std::string_view text) {
    const std::string_view line = LongestLineOf(text);
    return line.size() > kWideLine && LongestLine(FormatXml(line)) < line.size() / 2;
}

std::string FormatXml(std::string_view text) {
    const std::string_view lineEnd = text.find("\r\n") != std::string_view::npos ? "\r\n" : "\n";
    std::string formatted;
    formatted.reserve(text.size() + text.size() / 4);
    std::size_t depth = 0;
    std::size_t at = 0;
    TMarkup last = TMarkup::Data;     // before the first markup nothing is broken
    TMarkup lastTag = TMarkup::Close; // outside the root as between two elements
    while (at < text.size()) {
        const std::size_t start = std::min(text.find('<', at), text.size());
        const std::string_view gap = text.substr(at, start - at);
        if (start == text.size()) {
            formatted += gap;
            break;
        }
        const TToken token = MarkupAt(text, start);
        if (token.Kind == TMarkup::Close && depth > 0)
            --depth;
        // After a start tag what follows may be its value, comments included, unless it is an element.
        const bool startsChild = token.Kind == TMarkup::Open || token.Kind == TMarkup::Empty;
        const bool ofValue = last == TMarkup::Data || token.Kind == TMarkup::Data ||
                             (lastTag == TMarkup::Open && !startsChild) ||
                             gap.find_first_not_of(" \t\r\n") != std::string_view::npos;
        if (ofValue) {
            formatted += gap;
        } else {
            formatted += lineEnd;
            formatted.append(2 * std::min(depth, kMaxDepth), ' ');
        }
        formatted += text.substr(start, token.End - start);
        if (token.Kind == TMarkup::Open)
            ++depth;
        last = token.Kind;
        if (last != TMarkup::Other && last != TMarkup::Data)
            lastTag = last;
        at = token.End;
    }
    return formatted;
}

std::string WrapLines(std::string_view text, std::size_t width) {
    std::string wrapped;
    wrapped.reserve(text.size() + text.size() / width);
    std::size_t column = 0;
    for (const char byte : text) {
        if (column >= width && StartsCharacter(byte)) {
            wrapped += '\n';
            column = 0;
        }
        wrapped += byte;
        column = byte == '\n' ? 0 : column + 1;
    }
    return wrapped;
}

} // namespace conferix
