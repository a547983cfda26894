// What stands in a file around a finding.
#pragma once

#include "xml/xml_message.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace conferix {

/// A line of a file, or the part of a long one that is shown. The texts are views into that of the file.
struct TExcerptLine {
    std::int32_t Number = 0; ///< 1-based
    std::string_view Before; ///< all of a line that the finding is not about
    std::string_view Marked; ///< what the finding is about
    std::string_view After;
    bool CutBefore = false; ///< more stands before what is shown
    bool CutAfter = false;
};

/// Cuts excerpts out of one text, which has to outlive them.
class TXmlExcerpts {
  public:
    explicit TXmlExcerpts(std::string_view text) : text_(text) {}

    /// The line of a finding, with up to two lines before and after it; of lines of any length about as much
    /// as fits a page. Nothing where the place is not known.
    std::vector<TExcerptLine> Around(const TXmlMessage& message);

  private:
    std::size_t OffsetOf(std::int32_t filePos);

    std::string_view text_;
    std::vector<std::size_t> blocks_; ///< where every so many characters begin; filled when first asked
};

} // namespace conferix
