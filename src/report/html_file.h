#pragma once

#include "report/report_writer.h"
#include "report/rule_guide.h"

#include <set>
#include <string>
#include <string_view>

namespace conferix {

/// What a verdict is called, with a sign of its own: nothing is told by colour alone.
std::string_view HtmlVerdict(TVerdict verdict);
/// The class of the stylesheet that goes with it.
std::string_view HtmlVerdictClass(TVerdict verdict);

/// Name of the anchor at which the appendix explains a rule.
std::string HtmlAnchor(const TRuleText& text);

/// What a report tells of one file: verdict, counts, what the file is, and its findings: those of the file,
/// those of several guides, then guide by guide. `explained`: takes the texts that the appendix has to hold.
std::string HtmlFile(const TFileResult& file, const TReportOptions& options,
                     std::set<const TRuleText*>& explained);

} // namespace conferix
