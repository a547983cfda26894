// What differs between two texts.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace conferix {

using TTextLines = std::vector<std::string_view>;

/// The lines of a text with their ends; the last one may have none.
TTextLines SplitLines(std::string_view text);

/// Lines [BeforeStart, BeforeEnd) of the old text that lines [AfterStart, AfterEnd) of the new one replace;
/// 0-based.
struct TLineChange {
    std::size_t BeforeStart = 0;
    std::size_t BeforeEnd = 0;
    std::size_t AfterStart = 0;
    std::size_t AfterEnd = 0;
};

/// The changes of a text in order, no two of which touch. Texts of equally many lines are compared line by
/// line; others by the longest common subsequence of the part that differs, where that part is not too long,
/// else as one block.
std::vector<TLineChange> FindLineChanges(const TTextLines& before, const TTextLines& after);

/// Bytes [Start, End) of the old text that `Text`, a part of the new one, replaces.
struct TTextEdit {
    std::size_t Start = 0;
    std::size_t End = 0;
    std::string_view Text;
};

/// What has to be replaced in a text to make another of it, in order; empty for equal texts.
std::vector<TTextEdit> FindEdits(std::string_view before, std::string_view after);

/// A line of two texts side by side: numbers 1-based, 0 and no text where a text has no such line.
struct TLinePair {
    std::size_t BeforeNumber = 0;
    std::size_t AfterNumber = 0;
    std::string_view Before; ///< without line end
    std::string_view After;
    bool Changed = false;
};

/// The changed lines of a text side by side with the new ones, each change with up to `context` unchanged
/// lines around it. A pair without any number stands between two places.
std::vector<TLinePair> SideBySide(const TTextLines& before, const TTextLines& after,
                                  const std::vector<TLineChange>& changes, std::size_t context = 2);

} // namespace conferix
