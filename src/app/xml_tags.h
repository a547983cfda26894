// Tags of a text that is being edited, and so may be no XML.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace conferix {

/// Bytes [Start, End) of a text.
struct TTextRange {
    std::size_t Start = 0;
    std::size_t End = 0;
    bool operator==(const TTextRange&) const = default;
};

/// The names of the tag at a place and of the tag that belongs to it; the same one twice for an element
/// without content. Nothing where there is no tag, or its other one is not in the text.
std::optional<std::pair<TTextRange, TTextRange>> MatchTags(std::string_view text, std::size_t place);

/// What to mark for a finding at the "<" of a start tag: the element to its end where that is on the same
/// line, else the tag; the rest of the line where no tag stands there.
TTextRange MarkedRange(std::string_view text, std::size_t place);

} // namespace conferix
