// Lines, columns and positions of a text.
#pragma once

#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace conferix {

/// A place in the text of a file.
struct TXmlPlace {
    std::int32_t Line = 0;    ///< 1-based; 0 for none
    std::int32_t LinePos = 0; ///< 1-based, in characters
    std::int32_t FilePos = 0; ///< 0-based, in characters
};

/// Follows a position through a text in UTF-8 whose places are asked for in rising order.
class TPositionCounter {
  public:
    explicit TPositionCounter(std::string_view text) : text_(text) {}

    /// Place of a byte, not before the last one asked for.
    TXmlPlace PlaceOf(std::size_t offset) {
        MoveTo(std::min(offset, text_.size()));
        return {static_cast<std::int32_t>(Line()), static_cast<std::int32_t>(LinePos()),
                static_cast<std::int32_t>(FilePos())};
    }

    void MoveTo(std::size_t offset) {
        while (at_ < offset) {
            if (SkipPlain(offset))
                continue;
            const auto c = static_cast<unsigned char>(text_[at_]);
            if (StartsCharacter(text_[at_]))
                ++characters_;
            if (c == '\n' || (c == '\r' && (at_ + 1 == text_.size() || text_[at_ + 1] != '\n'))) {
                ++line_;
                lineStart_ = characters_;
            }
            ++at_;
        }
    }
    std::uint32_t Line() const { return line_; }
    std::uint32_t LinePos() const { return characters_ - lineStart_ + 1; }
    std::uint32_t FilePos() const { return characters_; }

  private:
    /// Passes many bytes at once that are all ASCII and no line ends, as most are.
    bool SkipPlain(std::size_t offset) { return SkipWords<8>(offset) || SkipWords<1>(offset); }

    template<std::size_t Words>
    bool SkipWords(std::size_t offset) {
        constexpr std::uint64_t kHighBits = 0x8080808080808080U;
        constexpr std::uint64_t kAboveLineEnds = 0x0E0E0E0E0E0E0E0EU;
        std::array<std::uint64_t, Words> block;
        if (offset - at_ < sizeof block)
            return false;
        std::memcpy(block.data(), text_.data() + at_, sizeof block);
        std::uint64_t found = 0;
        for (const std::uint64_t bytes : block)
            found |= bytes | (bytes - kAboveLineEnds);
        if ((found & kHighBits) != 0)
            return false;
        at_ += sizeof block;
        characters_ += sizeof block;
        return true;
    }

    friend class TPlaceIndex;

    std::string_view text_;
    std::size_t at_ = 0;
    std::uint32_t line_ = 1;
    std::uint32_t characters_ = 0;
    std::uint32_t lineStart_ = 0;
};

/// Tells the places of a text in UTF-8 in any order: what was passed once is kept in marks not far from each
/// other. Used by one thread at a time.
class TPlaceIndex {
  public:
    explicit TPlaceIndex(std::string_view text) : latest_(text) {}

    /// Place of a byte, 0-based; of the end for one beyond it.
    TXmlPlace PlaceOf(std::size_t offset) {
        offset = std::min(offset, latest_.text_.size());
        if (offset < latest_.at_ || offset - latest_.at_ > kStep)
            GoTo(offset / kStep);
        return latest_.PlaceOf(offset);
    }

  private:
    static constexpr std::size_t kStep = 1024; ///< bytes between two marks

    struct TMark {
        std::uint32_t Line;
        std::uint32_t Characters;
        std::uint32_t LineStart;
    };

    /// Moves to a mark, of which all up to it are made.
    void GoTo(std::size_t mark) {
        if (mark < marks_.size()) {
            Take(mark);
            return;
        }
        if (!marks_.empty())
            Take(marks_.size() - 1);
        else
            latest_ = TPositionCounter(latest_.text_);
        while (marks_.size() <= mark) {
            latest_.MoveTo(marks_.size() * kStep);
            marks_.push_back({latest_.line_, latest_.characters_, latest_.lineStart_});
        }
    }

    void Take(std::size_t mark) {
        latest_.at_ = mark * kStep;
        latest_.line_ = marks_[mark].Line;
        latest_.characters_ = marks_[mark].Characters;
        latest_.lineStart_ = marks_[mark].LineStart;
    }

    std::vector<TMark> marks_;
    TPositionCounter latest_;
};

} // namespace conferix
