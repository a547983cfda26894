// The rules as users see them: one list in the order of the tree.
#pragma once

#include "validation/identity.h"

#include <cstddef>
#include <optional>
#include <string>
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

/// Indices of the rules that a user may mean by a name: the rule of that name, whatever its case, else those
/// whose names end with it, a part between points being whole.
std::vector<std::size_t> RulesNamed(const std::vector<TListedRule>& rules, std::string_view given);

/// Names of rules of which a name that is no rule's may be a slip, or a slip of their ends; the nearest
/// first.
std::vector<std::string> RulesAlike(const std::vector<TListedRule>& rules, std::string_view given);

/// What the user is told of a name that is not one rule's: the rules that it names (several or none), and
/// those that it may have been meant for.
std::string WrongRuleText(const std::vector<TListedRule>& rules, std::string_view given,
                          const std::vector<std::size_t>& named, const std::vector<std::string>& alike);

/// One past the last rule below `group` in the tree; `group + 1` for a rule without others below it. The tree
/// decides, not the names: fields of a guide stand below a group whose name theirs does not begin with.
std::size_t EndOfGroup(const std::vector<TListedRule>& rules, std::size_t group);

} // namespace conferix
