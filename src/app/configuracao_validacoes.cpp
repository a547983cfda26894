#include "app/configuracao_validacoes.h"

#include "xml/name_likeness.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace conferix {

namespace {

/// A question for the rule that a name is nearest to; empty where none is near.
std::string RuleMeant(const std::vector<TListedRule>& rules, std::string_view name) {
    std::size_t least = std::min<std::size_t>(4, name.size() / 3 + 1);
    std::string_view nearest;
    for (const TListedRule& rule : rules)
        if (const std::size_t slips = EditDistance(rule.Rule->Name, name, least); slips < least) {
            least = slips;
            nearest = rule.Rule->Name;
        }
    return nearest.empty() ? std::string() : fmt::format("você quis dizer \"{}\"? ", nearest);
}

} // namespace

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
    const std::optional<std::size_t> node = Find(name);
    if (!node)
        throw ERuleNotSwitched(
            fmt::format("a regra \"{}\" não existe; {}\"conferix regras\" mostra as que existem", name,
                        RuleMeant(rules_, name)));
    return SetChecked(*node, checked);
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
