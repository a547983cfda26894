// The texts of docs/regras, which the build puts into the program.
#pragma once

#include <span>
#include <string_view>

namespace conferix {

/// The files in the order in which people read them, each in the Markdown that TRuleGuide takes apart.
std::span<const std::string_view> RuleTexts();

} // namespace conferix
