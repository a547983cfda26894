#include "app/unified_diff.h"

#include "app/text_changes.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace conferix {

namespace {

constexpr std::size_t kContext = 3;

void AppendLine(std::string& diff, char mark, std::string_view line) {
    diff += mark;
    diff += line;
    if (!line.ends_with('\n'))
        diff += "\n\\ No newline at end of file\n";
}

/// "first,count", as a hunk's head names a range of lines; an empty range names the line before it.
std::string RangeText(std::size_t start, std::size_t count) {
    const std::size_t first = count == 0 ? start : start + 1;
    return count == 1 ? fmt::format("{}", first) : fmt::format("{},{}", first, count);
}

/// Writes the hunk of changes [first, last).
void AppendHunk(std::string& diff, const TTextLines& before, const TTextLines& after,
                std::vector<TLineChange>::const_iterator first,
                std::vector<TLineChange>::const_iterator last) {
    const std::size_t lead = std::min(first->BeforeStart, kContext);
    const TLineChange& final = *std::prev(last);
    const std::size_t start = first->BeforeStart - lead;
    const std::size_t end = std::min(final.BeforeEnd + kContext, before.size());
    const std::size_t afterStart = first->AfterStart - lead;
    const std::size_t afterEnd = final.AfterEnd + (end - final.BeforeEnd);
    diff += fmt::format("@@ -{} +{} @@\n", RangeText(start, end - start),
                        RangeText(afterStart, afterEnd - afterStart));
    std::size_t line = start;
    for (auto change = first; change != last; ++change) {
        for (; line < change->BeforeStart; ++line)
            AppendLine(diff, ' ', before[line]);
        for (; line < change->BeforeEnd; ++line)
            AppendLine(diff, '-', before[line]);
        for (std::size_t added = change->AfterStart; added < change->AfterEnd; ++added)
            AppendLine(diff, '+', after[added]);
    }
    for (; line < end; ++line)
        AppendLine(diff, ' ', before[line]);
}

} // namespace

std::string UnifiedDiff(std::string_view before, std::string_view after, const std::string& beforeName,
                        const std::string& afterName) {
    const TTextLines beforeLines = SplitLines(before);
    const TTextLines afterLines = SplitLines(after);
    const std::vector<TLineChange> changes = FindLineChanges(beforeLines, afterLines);
    if (changes.empty())
        return {};
    std::string diff = fmt::format("--- {}\n+++ {}\n", beforeName, afterName);
    for (auto first = changes.begin(); first != changes.end();) {
        auto last = std::next(first);
        while (last != changes.end() && last->BeforeStart - std::prev(last)->BeforeEnd <= 2 * kContext)
            ++last;
        AppendHunk(diff, beforeLines, afterLines, first, last);
        first = last;
    }
    return diff;
}

} // namespace conferix
