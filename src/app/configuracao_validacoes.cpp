#include "app/configuracao_validacoes.h"

#include <fmt/format.h>

#include <algorithm>

namespace conferix {

TConfiguracaoValidacoes::TConfiguracaoValidacoes(TConfig config, TOnSwitch onSwitch)
    : config_(std::move(config)), onSwitch_(std::move(onSwitch)), rules_(ListRules()) {}

std::string TConfiguracaoValidacoes::Refusal(std::size_t node) const {
    const TValidationIdentity& rule = *rules_[node].Rule;
    if (!rule.Required)
        return {};
    return fmt::format("A validação \"{}\" é obrigatória. Não é possível desativá-la.", rule.Description);
}

std::vector<std::size_t> TConfiguracaoValidacoes::SetChecked(std::size_t node, bool checked) {
    if (!checked && rules_[node].Rule->Required)
        throw ERuleNotSwitched(Refusal(node));
    std::vector<std::size_t> changed;
    const std::size_t end = EndOfGroup(rules_, node);
    for (std::size_t i = node; i < end; ++i) {
        const TValidationIdentity& rule = *rules_[i].Rule;
        if (Checked(i) == checked || (!checked && rule.Required))
            continue;
        if (checked)
            config_.Enable(rule.Name);
        else
            config_.Disable(rule.Name);
        changed.push_back(i);
        switches_[rule.Name] = checked;
        if (onSwitch_)
            onSwitch_(rule.Name, checked);
    }
    return changed;
}

std::vector<std::size_t> TConfiguracaoValidacoes::SetChecked(const std::string& name, bool checked) {
    const std::vector<std::size_t> named = RulesNamed(rules_, name);
    if (named.size() == 1)
        return SetChecked(named.front(), checked);
    const std::vector<std::string> alike = RulesAlike(rules_, name);
    const std::string text = WrongRuleText(rules_, name, named, alike);
    if (named.empty() && alike.empty())
        throw EUnknownRule(text);
    throw ERuleNotSwitched(text);
}

void TConfiguracaoValidacoes::SaveTo(const std::filesystem::path& file) const {
    const std::unique_ptr<TFileLock> lock = TConfig::Lock(file);
    TConfig present = TConfig::Load(file);
    for (const auto& [name, on] : switches_) {
        if (on)
            present.Enable(name);
        else
            present.Disable(name);
    }
    present.Save(file);
}

} // namespace conferix
