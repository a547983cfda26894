#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/message_json.h"
#include "data/tuss_connection.h"
#include "validation/validator/tiss_validator.h"

#include <fmt/format.h>

#include <functional>
#include <ostream>

namespace conferix {

namespace {

struct TListedRule {
    IValidationIdentity Rule;
    bool Active;
    std::size_t Depth;
};

std::vector<TListedRule> ListRules(const TConfig& config) {
    const TTissValidator validator(nullptr, {}, TTussConnection::InMemory());
    std::vector<TListedRule> rules;
    const std::function<void(const TValidation&, std::size_t)> add = [&](const TValidation& rule,
                                                                         std::size_t depth) {
        const IValidationIdentity& identity = rule.Identity();
        rules.push_back({identity, identity->Required || config.IsEnabled(identity->Name), depth});
        for (const auto& child : rule.Validations())
            add(*child, depth + 1);
    };
    for (const auto& root : validator.Validations())
        add(*root, 0);
    return rules;
}

const char* StateText(const TListedRule& rule) {
    if (rule.Rule->Required)
        return "obrigatória";
    return rule.Active ? "ativa" : "desativada";
}

} // namespace

int RunRegras(const TCliContext& context) {
    const std::vector<TListedRule> rules = ListRules(context.LoadConfig());
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        TJson json = TJson::array();
        for (const TListedRule& rule : rules)
            json.push_back({{"nome", rule.Rule->Name},
                            {"descricao", rule.Rule->Description},
                            {"obrigatoria", rule.Rule->Required},
                            {"ativa", rule.Active},
                            {"profundidade", rule.Depth}});
        out << JsonText(json) << '\n';
    } else if (context.Formato == "markdown") {
        out << "| Regra | Descrição | Situação |\n|---|---|---|\n";
        for (const TListedRule& rule : rules)
            out << fmt::format("| `{}` | {} | {} |\n", rule.Rule->Name, rule.Rule->Description,
                               StateText(rule));
    } else {
        const TPalette palette(context.Streams.OutIsTerminal);
        for (const TListedRule& rule : rules)
            out << std::string(2 * rule.Depth, ' ') << palette.Bold(rule.Rule->Name) << "  "
                << rule.Rule->Description << "  " << palette.Dim(fmt::format("({})", StateText(rule)))
                << '\n';
    }
    return kExitValid;
}

} // namespace conferix
