#include "app/text_changes.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace conferix {

namespace {

/// Cells of the table of common subsequences that are worth their memory.
constexpr std::size_t kMaxCells = 4'000'000;
/// A part of a text that is replaced as a whole rather than compared line by line, in bytes.
constexpr std::size_t kWholeEdit = 4096;

/// Collects changes, joining those that touch.
class TChanges {
  public:
    void Add(const TLineChange& change) {
        if (!all_.empty() && all_.back().BeforeEnd == change.BeforeStart &&
            all_.back().AfterEnd == change.AfterStart) {
            all_.back().BeforeEnd = change.BeforeEnd;
            all_.back().AfterEnd = change.AfterEnd;
        } else {
            all_.push_back(change);
        }
    }
    const std::vector<TLineChange>& All() const { return all_; }

  private:
    std::vector<TLineChange> all_;
};

void AddLineByLine(TChanges& changes, const TTextLines& before, const TTextLines& after,
                   const TLineChange& region) {
    for (std::size_t i = 0; i < region.BeforeEnd - region.BeforeStart; ++i) {
        const std::size_t b = region.BeforeStart + i;
        const std::size_t a = region.AfterStart + i;
        if (before[b] != after[a])
            changes.Add({b, b + 1, a, a + 1});
    }
}

void AddByCommonSubsequence(TChanges& changes, const TTextLines& before, const TTextLines& after,
                            const TLineChange& region) {
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

std::string_view WithoutEnd(std::string_view line) {
    while (line.ends_with('\n') || line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

} // namespace

TTextLines SplitLines(std::string_view text) {
    TTextLines lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

std::vector<TLineChange> FindLineChanges(const TTextLines& before, const TTextLines& after) {
    const std::size_t shorter = std::min(before.size(), after.size());
    std::size_t head = 0;
    while (head < shorter && before[head] == after[head])
        ++head;
    std::size_t tail = 0;
    while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
        ++tail;
    const TLineChange region = {head, before.size() - tail, head, after.size() - tail};
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

std::vector<TTextEdit> FindEdits(std::string_view before, std::string_view after) {
    const std::size_t shorter = std::min(before.size(), after.size());
    const auto head = static_cast<std::size_t>(
        std::mismatch(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(shorter), after.begin())
            .first -
        before.begin());
    std::size_t start = head; // characters stay whole
    while (start > 0 && (static_cast<unsigned char>(before[start - 1]) & 0x80U) != 0)
        --start;
    std::size_t tail = 0;
    while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
        ++tail;
    while (tail > 0 && (static_cast<unsigned char>(before[before.size() - tail]) & 0x80U) != 0)
        --tail;
    const std::string_view oldPart = before.substr(start, before.size() - tail - start);
    const std::string_view newPart = after.substr(start, after.size() - tail - start);
    if (oldPart.empty() && newPart.empty())
        return {};
    if (oldPart.size() <= kWholeEdit && newPart.size() <= kWholeEdit)
        return {{start, start + oldPart.size(), newPart}};
    const TTextLines oldLines = SplitLines(oldPart);
    const TTextLines newLines = SplitLines(newPart);
    const auto place = [](std::string_view part, const TTextLines& lines, std::size_t line) {
        return line == lines.size() ? part.size()
                                    : static_cast<std::size_t>(lines[line].data() - part.data());
    };
    std::vector<TTextEdit> edits;
    for (const TLineChange& change : FindLineChanges(oldLines, newLines)) {
        const std::size_t newStart = place(newPart, newLines, change.AfterStart);
        edits.push_back({start + place(oldPart, oldLines, change.BeforeStart),
                         start + place(oldPart, oldLines, change.BeforeEnd),
                         newPart.substr(newStart, place(newPart, newLines, change.AfterEnd) - newStart)});
    }
    return edits;
}

std::vector<TLinePair> SideBySide(const TTextLines& before, const TTextLines& after,
                                  const std::vector<TLineChange>& changes, std::size_t context) {
    std::vector<TLinePair> pairs;
    const auto addSame = [&](std::size_t first, std::size_t last, std::size_t afterFirst) {
        for (std::size_t line = first; line < last; ++line, ++afterFirst)
            pairs.push_back(
                {line + 1, afterFirst + 1, WithoutEnd(before[line]), WithoutEnd(after[afterFirst]), false});
    };
    std::size_t told = 0; // lines of the old text up to which all is told
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const TLineChange& change = changes[i];
        const std::size_t lead = std::min(context, change.BeforeStart - told);
        if (!pairs.empty() && change.BeforeStart - lead > told)
            pairs.push_back({});
        addSame(change.BeforeStart - lead, change.BeforeStart, change.AfterStart - lead);
        const std::size_t lines =
            std::max(change.BeforeEnd - change.BeforeStart, change.AfterEnd - change.AfterStart);
        for (std::size_t line = 0; line < lines; ++line) {
            TLinePair pair;
            pair.Changed = true;
            if (const std::size_t old = change.BeforeStart + line; old < change.BeforeEnd) {
                pair.BeforeNumber = old + 1;
                pair.Before = WithoutEnd(before[old]);
            }
            if (const std::size_t now = change.AfterStart + line; now < change.AfterEnd) {
                pair.AfterNumber = now + 1;
                pair.After = WithoutEnd(after[now]);
            }
            pairs.push_back(pair);
        }
        const std::size_t next = i + 1 < changes.size() ? changes[i + 1].BeforeStart : before.size();
        told = std::min(change.BeforeEnd + context, next);
        addSame(change.BeforeEnd, told, change.AfterEnd);
    }
    return pairs;
}

} // namespace conferix
