#include "validator/rule_list.h"

#include "validator/tiss_validator.h"
#include "xml/lower_case.h"
#include "xml/name_likeness.h"
#include "xml/xml_node.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace conferix {

namespace {

void Add(std::vector<TListedRule>& rules, const TValidation& rule, std::size_t depth) {
    rules.push_back({rule.Identity(), depth});
    for (const auto& child : rule.Validations())
        Add(rules, *child, depth + 1);
}

/// A name as those of rules are written.
std::string AsWritten(std::string_view given) {
    return LowerCase(TrimXmlSpace(given));
}

/// The last parts of a name between points; all of it where it has no more.
std::string_view LastParts(std::string_view name, std::size_t parts) {
    std::size_t begin = name.size();
    for (; parts != 0; --parts) {
        begin = begin == 0 ? std::string_view::npos : name.rfind('.', begin - 1);
        if (begin == std::string_view::npos)
            return name;
    }
    return name.substr(begin + 1);
}

std::size_t PartsOf(std::string_view name) {
    return static_cast<std::size_t>(std::ranges::count(name, '.')) + 1;
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

std::vector<std::size_t> RulesNamed(const std::vector<TListedRule>& rules, std::string_view given) {
    const std::string name = AsWritten(given);
    if (const std::optional<std::size_t> exact = FindRule(rules, name))
        return {*exact};
    std::vector<std::size_t> ending;
    for (std::size_t i = 0; i < rules.size(); ++i)
        if (LastParts(rules[i].Rule->Name, PartsOf(name)) == name)
            ending.push_back(i);
    return ending;
}

std::vector<std::string> RulesAlike(const std::vector<TListedRule>& rules, std::string_view given) {
    const std::string name = AsWritten(given);
    const std::size_t most = std::min<std::size_t>(3, name.size() / 3);
    std::vector<std::pair<std::size_t, std::string>> alike;
    for (const TListedRule& rule : rules)
        if (const std::size_t slips = EditDistance(LastParts(rule.Rule->Name, PartsOf(name)), name, most);
            slips <= most)
            alike.emplace_back(slips, rule.Rule->Name);
    std::ranges::sort(alike);
    std::vector<std::string> names;
    for (auto& [slips, rule] : alike)
        names.push_back(std::move(rule));
    return names;
}

std::string WrongRuleText(const std::vector<TListedRule>& rules, std::string_view given,
                          const std::vector<std::size_t>& named, const std::vector<std::string>& alike) {
    constexpr std::size_t kOffered = 6;
    std::string text;
    if (!named.empty()) {
        for (const std::size_t rule : named)
            text += (text.empty() ? "" : ", ") + rules[rule].Rule->Name;
        return fmt::format("\"{}\" termina o nome de várias regras: {}", given, text);
    }
    for (std::size_t i = 0; i < std::min(alike.size(), kOffered); ++i)
        text += fmt::format("{}\"{}\"", i == 0 ? " Você quis dizer " : " ou ", alike[i]);
    return fmt::format("a regra \"{}\" não existe.{}{}", given, text, text.empty() ? "" : "?");
}

std::size_t EndOfGroup(const std::vector<TListedRule>& rules, std::size_t group) {
    std::size_t end = group + 1;
    while (end < rules.size() && rules[end].Depth > rules[group].Depth)
        ++end;
    return end;
}

} // namespace conferix
