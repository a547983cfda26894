#pragma once

#include "report/rule_guide.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace conferix {

/// The texts of a guide that hold all words of a search, or words that begin so, whatever their accents and
/// case: those that hold them in their title first, each kind in the order of the guide. Names of rules count
/// as well. All texts for a search without words.
std::vector<const TRuleText*> SearchRuleTexts(const TRuleGuide& guide, std::string_view words);

/// The texts whose title holds all words of a search, in the same way; none for a search without words.
std::vector<const TRuleText*> SearchRuleTitles(const TRuleGuide& guide, std::string_view words);

} // namespace conferix
