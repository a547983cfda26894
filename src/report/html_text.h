// Pieces of HTML.
#pragma once

#include "report/rule_guide.h"
#include "report/xml_excerpt.h"

#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A text from outside as HTML: made visible (Visible) and escaped, also for attribute values.
std::string HtmlText(std::string_view text);
/// The same of a message, whose "\r\n" breaks the line.
std::string HtmlLines(std::string_view text);
/// Paragraphs, lists, excerpts and quotations of a text about a rule.
std::string HtmlBlocks(const std::vector<TGuideBlock>& blocks);
/// An excerpt with the numbers of its lines, the one of the finding marked; empty for none.
std::string HtmlExcerpt(const std::vector<TExcerptLine>& lines);

} // namespace conferix
