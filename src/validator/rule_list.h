// The rules as users see them: one list in the order of the tree.
#pragma once

#include "validation/identity.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace conferix {

/// A rule of the tree.
struct TListedRule {
    IValidationIdentity Rule;
    std::size_t Depth = 0; ///< 0: root of a kind of file
};

/// All rules of all kinds of file in pre-order of the tree.
std::vector<TListedRule> ListRules();

/// Index of the rule of that name; nothing when there is none.
std::optional<std::size_t> FindRule(const std::vector<TListedRule>& rules, std::string_view name);

/// One past the last rule below `group` in the tree; `group + 1` for a rule without others below it. The tree
/// decides, not the names: fields of a guide stand below a group whose name theirs does not begin with.
std::size_t EndOfGroup(const std::vector<TListedRule>& rules, std::size_t group);

} // namespace conferix
