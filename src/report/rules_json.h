#pragma once

#include "app/configuracao_validacoes.h"
#include "report/message_json.h"

namespace conferix {

/// The rules in the order of the tree, with their state, as programs read them.
TJson RulesJson(const TConfiguracaoValidacoes& rules);

} // namespace conferix
