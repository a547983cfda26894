#include "app/unified_diff.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace conferix {

namespace {

constexpr std::size_t kContext = 3;
/// Cells of the table of common subsequences that are worth their memory.
constexpr std::size_t kMaxCells = 4'000'000;

using TLines = std::vector<std::string_view>;

/// Lines with their ends; the last one may have none.
TLines SplitLines(std::string_view text) {
    TLines lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

/// Lines [BeforeStart, BeforeEnd) of the old text that lines [AfterStart, AfterEnd) of the new one replace.
struct TChange {
    std::size_t BeforeStart;
    std::size_t BeforeEnd;
    std::size_t AfterStart;
    std::size_t AfterEnd;
};

/// Collects changes, joining those that touch.
class TChanges {
  public:
    void Add(const TChange& change) {
        if (!all_.empty() && all_.back().BeforeEnd == change.BeforeStart &&
            all_.back().AfterEnd == change.AfterStart) {
            all_.back().BeforeEnd = change.BeforeEnd;
            all_.back().AfterEnd = change.AfterEnd;
        } else {
            all_.push_back(change);
        }
    }
    const std::vector<TChange>& All() const { return all_; }

  private:
    std::vector<TChange> all_;
};

void AddLineByLine(TChanges& changes, const TLines& before, const TLines& after, const TChange& region) {
    for (std::size_t i = 0; i < region.BeforeEnd - region.BeforeStart; ++i) {
        const std::size_t b = region.BeforeStart + i;
        const std::size_t a = region.AfterStart + i;
        if (before[b] != after[a])
            changes.Add({b, b + 1, a, a + 1});
    }
}

void AddByCommonSubsequence(TChanges& changes, const TLines& before, const TLines& after,
                            const TChange& region) {
    const std::size_t rows = region.BeforeEnd - region.BeforeStart;
    const std::size_t columns = region.AfterEnd - region.AfterStart;
    // common[i][j]: length of the longest common subsequence of what follows i and j.
    std::vector<std::uint32_t> common((rows + 1) * (columns + 1), 0);
    const auto at = [&](std::size_t i, std::size_t j) -> std::uint32_t& {
        return common[i * (columns + 1) + j];
    };
    const auto equal = [&](std::size_t i, std::size_t j) {
        return before[region.BeforeStart + i] == after[region.AfterStart + j];
    };
    for (std::size_t i = rows; i-- > 0;)
        for (std::size_t j = columns; j-- > 0;)
            at(i, j) = equal(i, j) ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < rows || j < columns) {
        const std::size_t b = region.BeforeStart + i;
        const std::size_t a = region.AfterStart + j;
        if (i < rows && j < columns && equal(i, j)) {
            ++i;
            ++j;
        } else if (i < rows && (j == columns || at(i + 1, j) >= at(i, j + 1))) {
            changes.Add({b, b + 1, a, a});
            ++i;
        } else {
            changes.Add({b, b, a, a + 1});
            ++j;
        }
    }
}

std::vector<TChange> FindChanges(const TLines& before, const TLines& after) {
    const std::size_t shorter = std::min(before.size(), after.size());
    std::size_t head = 0;
    while (head < shorter && before[head] == after[head])
        ++head;
    std::size_t tail = 0;
    while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
        ++tail;
    const TChange region = {head, before.size() - tail, head, after.size() - tail};
    const std::size_t rows = region.BeforeEnd - region.BeforeStart;
    const std::size_t columns = region.AfterEnd - region.AfterStart;
    TChanges changes;
    if (rows == columns)
        AddLineByLine(changes, before, after, region);
    else if (rows + 1 <= kMaxCells / (columns + 1))
        AddByCommonSubsequence(changes, before, after, region);
    else
        changes.Add(region);
    return changes.All();
}

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
void AppendHunk(std::string& diff, const TLines& before, const TLines& after,
                std::vector<TChange>::const_iterator first, std::vector<TChange>::const_iterator last) {
    const std::size_t lead = std::min(first->BeforeStart, kContext);
    const TChange& final = *std::prev(last);
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
    const TLines beforeLines = SplitLines(before);
    const TLines afterLines = SplitLines(after);
    const std::vector<TChange> changes = FindChanges(beforeLines, afterLines);
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
