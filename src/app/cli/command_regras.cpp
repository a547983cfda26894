#include "app/application_log.h"
#include "app/cli/commands.h"
#include "report/console.h"
#include "report/message_json.h"
#include "app/configuracao_validacoes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>

namespace conferix {

namespace {

bool IsActive(const TConfiguracaoValidacoes& rules, std::size_t node) {
    return rules.Rules()[node].Rule->Required || rules.Checked(node);
}

const char* StateText(const TConfiguracaoValidacoes& rules, std::size_t node) {
    if (rules.Rules()[node].Rule->Required)
        return "obrigatória";
    return rules.Checked(node) ? "ativa" : "desativada";
}

/// The rules in the order of the tree, with their state.
void PrintList(const TCliContext& context, const TConfiguracaoValidacoes& rules) {
    std::ostream& out = context.Streams.Out;
    const std::vector<TListedRule>& list = rules.Rules();
    if (context.Json()) {
        TJson json = TJson::array();
        for (std::size_t i = 0; i < list.size(); ++i)
            json.push_back({{"nome", list[i].Rule->Name},
                            {"descricao", list[i].Rule->Description},
                            {"obrigatoria", list[i].Rule->Required},
                            {"ativa", IsActive(rules, i)},
                            {"profundidade", list[i].Depth}});
        out << JsonText(json) << '\n';
    } else if (context.Formato == "markdown") {
        out << "| Regra | Descrição | Situação |\n|---|---|---|\n";
        for (std::size_t i = 0; i < list.size(); ++i)
            out << fmt::format("| `{}` | {} | {} |\n", list[i].Rule->Name, list[i].Rule->Description,
                               StateText(rules, i));
    } else {
        const TPalette palette(context.Streams.OutIsTerminal);
        for (std::size_t i = 0; i < list.size(); ++i)
            out << std::string(2 * list[i].Depth, ' ') << palette.Bold(list[i].Rule->Name) << "  "
                << list[i].Rule->Description << "  " << palette.Dim(fmt::format("({})", StateText(rules, i)))
                << '\n';
    }
}

/// What a switch has changed, rule by rule.
void PrintChanges(const TCliContext& context, const TConfiguracaoValidacoes& rules, const TConfig& before) {
    std::size_t changes = 0;
    std::ostream& out = context.Streams.Out;
    for (std::size_t i = 0; i < rules.Rules().size(); ++i) {
        const TValidationIdentity& rule = *rules.Rules()[i].Rule;
        if (rules.Checked(i) == before.IsEnabled(rule.Name))
            continue;
        ++changes;
        out << fmt::format("{}: {}  {}\n", rules.Checked(i) ? "ativada" : "desativada", rule.Name,
                           rule.Description);
    }
    out << (changes == 0 ? "Nenhuma regra mudou.\n"
                         : Counted(changes, "regra mudou", "regras mudaram") + ".\n");
}

/// Records the rules that two sorted lists of enabled ones do not share.
void LogSwitches(const std::vector<std::string>& before, const std::vector<std::string>& after) {
    std::vector<std::string> switched;
    std::set_symmetric_difference(before.begin(), before.end(), after.begin(), after.end(),
                                  std::back_inserter(switched));
    for (const std::string& rule : switched)
        LogRuleSwitched(rule, std::binary_search(after.begin(), after.end(), rule));
}

} // namespace

std::vector<std::string> SwitchRules(TConfig& config, const std::vector<std::string>& names, bool on) {
    std::vector<TRuleSwitch> switches;
    for (const std::string& name : names)
        switches.push_back({name, on});
    return SwitchRules(config, std::move(switches));
}

std::vector<std::string> SwitchRules(TConfig& config, std::vector<TRuleSwitch> switches) {
    TConfiguracaoValidacoes rules(std::move(config));
    // Groups come first, so that what is said of a rule below one holds whatever the order was.
    const auto depth = [&rules](const TRuleSwitch& asked) {
        const std::optional<std::size_t> node = rules.Find(asked.Nome);
        return node ? rules.Rules()[*node].Depth : 0;
    };
    std::stable_sort(
        switches.begin(), switches.end(),
        [&](const TRuleSwitch& left, const TRuleSwitch& right) { return depth(left) < depth(right); });
    try {
        for (const TRuleSwitch& asked : switches)
            rules.SetChecked(asked.Nome, asked.Ativa);
    } catch (const ERuleNotSwitched& error) {
        throw EUsage(error.what());
    }
    config = rules.Config();
    return config.EnabledValidations();
}

int RunRegras(const TCliContext& context, const TRegrasOptions& options) {
    const bool changes = options.Padrao || !options.Ativar.empty() || !options.Desativar.empty();
    const std::unique_ptr<TFileLock> lock = changes ? TConfig::Lock(context.ConfigFile()) : nullptr;
    const TConfig before = context.LoadConfig();
    TConfig config = before;
    std::vector<TRuleSwitch> switches;
    for (const std::string& name : options.Ativar) {
        if (std::find(options.Desativar.begin(), options.Desativar.end(), name) != options.Desativar.end())
            throw EUsage(
                fmt::format("a regra \"{}\" não pode ser ativada e desativada ao mesmo tempo", name));
        switches.push_back({name, true});
    }
    for (const std::string& name : options.Desativar)
        switches.push_back({name, false});
    if (options.Padrao)
        config.SetDefaultInitialConfig();
    SwitchRules(config, std::move(switches));
    if (config.EnabledValidations() != before.EnabledValidations()) {
        config.Save(context.ConfigFile());
        LogSwitches(before.EnabledValidations(), config.EnabledValidations());
    }
    const TConfiguracaoValidacoes rules(config);
    if (changes && context.Formato == "texto")
        PrintChanges(context, rules, before);
    else
        PrintList(context, rules);
    return kExitValid;
}

} // namespace conferix
