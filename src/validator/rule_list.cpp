#include "validator/rule_list.h"

#include "validator/tiss_validator.h"

#include <algorithm>

namespace conferix {

namespace {

void Add(std::vector<TListedRule>& rules, const TValidation& rule, std::size_t depth) {
    rules.push_back({rule.Identity(), depth});
    for (const auto& child : rule.Validations())
        Add(rules, *child, depth + 1);
}

} // namespace

std::vector<TListedRule> ListRules() {
    const TTissValidator validator(nullptr, {}, nullptr);
    std::vector<TListedRule> rules;
    for (const auto& root : validator.Validations())
        Add(rules, *root, 0);
    return rules;
}

std::optional<std::size_t> FindRule(const std::vector<TListedRule>& rules, std::string_view name) {
    const auto found = std::find_if(rules.begin(), rules.end(),
                                    [name](const TListedRule& rule) { return rule.Rule->Name == name; });
    if (found == rules.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - rules.begin());
}

std::size_t EndOfGroup(const std::vector<TListedRule>& rules, std::size_t group) {
    std::size_t end = group + 1;
    while (end < rules.size() && rules[end].Depth > rules[group].Depth)
        ++end;
    return end;
}

} // namespace conferix
