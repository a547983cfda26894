#include "app/application_log.h"
#include "app/cli/commands.h"
#include "app/configuracao_validacoes.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"
#include "report/rule_guide.h"
#include "report/rule_search.h"
#include "report/rules_json.h"
#include "validator/rule_list.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <ostream>

namespace conferix {

namespace {

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
        out << JsonText(RulesJson(rules)) << '\n';
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

/// Makes the configuration file that the user named, where there is none.
void CreateNamedConfig(const TCliContext& context) {
    const std::filesystem::path file = PathFromText(context.Config);
    std::error_code ignored;
    if (file.empty() || std::filesystem::exists(file, ignored))
        return;
    TConfig config;
    config.SetDefaultInitialConfig();
    config.Save(file);
    if (context.Formato == "texto")
        context.Streams.Out << fmt::format("Configuração criada em {}, com todas as regras ativas.\n",
                                           Visible(context.Config));
}

/// Where the names are that there are.
constexpr const char* kWhichRules = " \"conferix regras\" mostra a lista.";

/// The rule to be explained: by its name, or an end of it that leaves no doubt which text is meant. Raises
/// EUsage, with the names that may have been meant, also by words of what a rule is about.
std::size_t RuleToExplain(const std::vector<TListedRule>& rules, const std::string& given) {
    const std::vector<std::size_t> named = RulesNamed(rules, given);
    const TRuleGuide& guide = TRuleGuide::Instance();
    if (!named.empty() && std::ranges::all_of(named, [&](std::size_t rule) {
            return guide.Find(rules[rule].Rule->Name) == guide.Find(rules[named.front()].Rule->Name);
        }))
        return named.front();
    std::vector<std::string> alike = RulesAlike(rules, given);
    if (alike.empty())
        for (const TRuleText* text : SearchRuleTitles(guide, given))
            alike.push_back(text->Rules.front());
    throw EUsage(WrongRuleText(rules, given, named, alike) +
                 (named.empty() && alike.empty() ? kWhichRules : ""));
}

/// What a rule checks, what fails and how to mend it; of a group, also which rules stand right below it.
void PrintExplanation(const TCliContext& context, const std::string& name) {
    const std::vector<TListedRule> rules = ListRules();
    const std::size_t rule = RuleToExplain(rules, name);
    const std::size_t end = EndOfGroup(rules, rule);
    const TRuleGuide& guide = TRuleGuide::Instance();
    const TRuleText& text = *guide.Find(rules[rule].Rule->Name);
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        TJson json = {{"nome", rules[rule].Rule->Name}, {"descricao", rules[rule].Rule->Description},
                      {"titulo", text.Title},           {"resumo", text.ShortText},
                      {"regras", text.Rules},           {"abaixo", TJson::array()},
                      {"exemplos", TJson::array()},     {"markdown", text.MarkdownBody()}};
        for (std::size_t i = rule + 1; i < end; ++i)
            if (rules[i].Depth == rules[rule].Depth + 1)
                json["abaixo"].push_back(rules[i].Rule->Name);
        for (const TRuleExample& example : text.Examples())
            json["exemplos"].push_back({{"xml", example.Xml}, {"mensagens", example.Messages}});
        out << JsonText(json) << '\n';
        return;
    }
    out << (context.Formato == "markdown" ? text.Markdown() : text.PlainText());
    if (end == rule + 1)
        return;
    out << (context.Formato == "markdown" ? "\n### Regras do grupo\n\n" : "\nRegras do grupo\n");
    for (std::size_t i = rule + 1; i < end; ++i)
        if (rules[i].Depth == rules[rule].Depth + 1)
            out << fmt::format(fmt::runtime(context.Formato == "markdown" ? "- `{}`: {}\n" : "  {}  {}\n"),
                               rules[i].Rule->Name, guide.Find(rules[i].Rule->Name)->Title);
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
        const std::vector<std::size_t> named = RulesNamed(rules.Rules(), asked.Nome);
        return named.empty() ? 0 : rules.Rules()[named.front()].Depth;
    };
    std::stable_sort(
        switches.begin(), switches.end(),
        [&](const TRuleSwitch& left, const TRuleSwitch& right) { return depth(left) < depth(right); });
    try {
        for (const TRuleSwitch& asked : switches)
            rules.SetChecked(asked.Nome, asked.Ativa);
    } catch (const EUnknownRule& error) {
        throw EUsage(error.what() + std::string(kWhichRules));
    } catch (const ERuleNotSwitched& error) {
        throw EUsage(error.what());
    }
    config = rules.Config();
    return config.EnabledValidations();
}

int RunRegras(const TCliContext& context, const TRegrasOptions& options) {
    if (!options.Explicar.empty()) {
        PrintExplanation(context, options.Explicar);
        return kExitValid;
    }
    const bool changes = options.Padrao || !options.Ativar.empty() || !options.Desativar.empty();
    if (options.Padrao)
        CreateNamedConfig(context);
    const std::unique_ptr<TFileLock> lock = changes ? TConfig::Lock(context.ConfigFile()) : nullptr;
    const TConfig before = context.LoadConfig();
    TConfig config = before;
    std::vector<TRuleSwitch> switches;
    const std::vector<TListedRule> known = ListRules();
    for (const std::string& name : options.Ativar) {
        const std::vector<std::size_t> named = RulesNamed(known, name);
        if (!named.empty() && std::ranges::any_of(options.Desativar, [&](const std::string& other) {
                return RulesNamed(known, other) == named;
            }))
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
