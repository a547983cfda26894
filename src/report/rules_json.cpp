#include "report/rules_json.h"

namespace conferix {

TJson RulesJson(const TConfiguracaoValidacoes& rules) {
    TJson json = TJson::array();
    for (std::size_t i = 0; i < rules.Rules().size(); ++i) {
        const TListedRule& listed = rules.Rules()[i];
        json.push_back({{"nome", listed.Rule->Name},
                        {"descricao", listed.Rule->Description},
                        {"obrigatoria", listed.Rule->Required},
                        {"ativa", listed.Rule->Required || rules.Checked(i)},
                        {"profundidade", listed.Depth}});
    }
    return json;
}

} // namespace conferix
