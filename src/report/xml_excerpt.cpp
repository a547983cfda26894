#include "report/xml_excerpt.h"

#include "platform/utf8.h"

#include <algorithm>

namespace conferix {

namespace {

constexpr std::size_t kBlock = 4096;
constexpr int kContextLines = 2;
// What is shown of a line, in bytes.
constexpr std::size_t kBefore = 80;
constexpr std::size_t kAfter = 160;
constexpr std::string_view kBreaks = "\r\n";

/// The nearest beginning of a character, not after `at`.
std::size_t CharacterAt(std::string_view text, std::size_t at) {
    while (at > 0 && at < text.size() && !StartsCharacter(text[at]))
        --at;
    return at;
}

/// Where the line that holds `at` begins, or its shown part, which begins `most` bytes before.
std::size_t BeginOfLine(std::string_view text, std::size_t at, std::size_t most, bool& cut) {
    const std::size_t from = CharacterAt(text, at - std::min(at, most));
    const std::size_t found = text.substr(from, at - from).find_last_of(kBreaks);
    cut = found == std::string_view::npos && from != 0 &&
          kBreaks.find(text[from - 1]) == std::string_view::npos;
    return found == std::string_view::npos ? from : from + found + 1;
}

std::size_t EndOfLine(std::string_view text, std::size_t at, std::size_t most, bool& cut) {
    const std::string_view shown = text.substr(at, most);
    const std::size_t found = shown.find_first_of(kBreaks);
    const std::size_t end = at + shown.size();
    cut = found == std::string_view::npos && end != text.size() &&
          kBreaks.find(text[end]) == std::string_view::npos;
    return found == std::string_view::npos ? CharacterAt(text, end) : at + found;
}

/// Bytes of the line break that ends at, or begins at, a place.
std::size_t BreakBefore(std::string_view text, std::size_t at) {
    return at >= 2 && text.substr(at - 2, 2) == kBreaks ? 2 : std::min<std::size_t>(at, 1);
}
std::size_t BreakAfter(std::string_view text, std::size_t at) {
    return text.substr(at, 2) == kBreaks ? 2 : std::min<std::size_t>(text.size() - at, 1);
}

/// Length of what a finding at the beginning of `text` is about: a tag, with value and end where they follow.
std::size_t MarkedLength(std::string_view text) {
    if (!text.starts_with('<')) {
        std::string_view rest = text;
        if (!rest.empty())
            TakeCharacter(rest);
        return text.size() - rest.size();
    }
    const std::size_t tag = text.find('>');
    if (tag == std::string_view::npos)
        return text.size();
    const std::size_t next = text.find('<', tag);
    if (next == std::string_view::npos || !text.substr(next).starts_with("</"))
        return tag + 1;
    return std::min(text.find('>', next), text.size() - 1) + 1;
}

} // namespace

std::size_t TXmlExcerpts::OffsetOf(std::int32_t filePos) {
    if (blocks_.empty())
        for (std::size_t at = 0; at < text_.size() || blocks_.empty();) {
            blocks_.push_back(at);
            at += std::max<std::size_t>(BytesOfCharacters(text_.substr(at), kBlock), 1);
        }
    const auto position = static_cast<std::size_t>(std::max(filePos, 0));
    const std::size_t block = std::min(position / kBlock, blocks_.size() - 1);
    return blocks_[block] + BytesOfCharacters(text_.substr(blocks_[block]), position - block * kBlock);
}

std::vector<TExcerptLine> TXmlExcerpts::Around(const TXmlMessage& message) {
    std::vector<TExcerptLine> lines;
    const std::size_t at = message.Line() > 0 ? OffsetOf(message.FilePos()) : text_.size();
    if (at >= text_.size())
        return lines;
    TExcerptLine line;
    line.Number = message.Line();
    const std::size_t begin = BeginOfLine(text_, at, kBefore, line.CutBefore);
    const std::size_t end = EndOfLine(text_, at, kAfter, line.CutAfter);
    const std::size_t marked = MarkedLength(text_.substr(at, end - at));
    line.Before = text_.substr(begin, at - begin);
    line.Marked = text_.substr(at, marked);
    line.After = text_.substr(at + marked, end - at - marked);
    lines.push_back(line);

    // Around a part of a long line there are no lines to be shown.
    bool cut = line.CutBefore;
    std::size_t top = begin;
    for (int i = 1; i <= kContextLines && !cut && top != 0; ++i) {
        const std::size_t last = top - BreakBefore(text_, top);
        TExcerptLine before;
        before.Number = message.Line() - i;
        top = BeginOfLine(text_, last, kAfter, before.CutBefore);
        before.Before = text_.substr(top, last - top);
        cut = before.CutBefore;
        lines.insert(lines.begin(), before);
    }
    cut = line.CutAfter;
    std::size_t bottom = end;
    for (int i = 1; i <= kContextLines && !cut && bottom != text_.size(); ++i) {
        const std::size_t first = bottom + BreakAfter(text_, bottom);
        if (first == text_.size())
            break;
        TExcerptLine after;
        after.Number = message.Line() + i;
        bottom = EndOfLine(text_, first, kAfter, after.CutAfter);
        after.Before = text_.substr(first, bottom - first);
        cut = after.CutAfter;
        lines.push_back(after);
    }
    return lines;
}

} // namespace conferix
