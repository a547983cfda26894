#include "rules/rule_table.h"

#include <stdexcept>

namespace conferix {

void TRuleTable::AddRow(std::string_view parent, std::string_view name, std::string_view description,
                        bool required, TMake make) {
    std::string fullName = name.starts_with('.') ? std::string(parent).append(name) : std::string(name);
    if (parent.empty())
        roots_.push_back(fullName);
    else if (const auto group = rows_.find(parent); group != rows_.end())
        group->second.Children.push_back(fullName);
    else
        throw std::logic_error("no group " + std::string(parent) + " for rule " + fullName);
    TRow row{std::make_shared<const TValidationIdentity>(
                 TValidationIdentity{fullName, std::string(description), required}),
             std::move(make),
             {}};
    if (!rows_.try_emplace(fullName, std::move(row)).second)
        throw std::logic_error("two rules " + fullName);
}

std::shared_ptr<TValidation> TRuleTable::MakeValidation(const std::string& name,
                                                        const TRunContextPtr& run) const {
    std::shared_ptr<TValidation> rule = MakeAlone(name, run);
    CreateValidations(*rule, rows_.at(name), run);
    return rule;
}

std::shared_ptr<TValidation> TRuleTable::MakeAlone(const std::string& name, const TRunContextPtr& run) const {
    const TRow& row = rows_.at(name);
    std::shared_ptr<TValidation> rule = row.Make(run);
    rule->SetIdentity(row.Identity);
    return rule;
}

void TRuleTable::CreateValidations(TValidation& parent, const TRow& row, const TRunContextPtr& run) const {
    for (const std::string& child : row.Children)
        parent.AddValidation(MakeValidation(child, run));
}

} // namespace conferix
