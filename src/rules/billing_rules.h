#pragma once

#include "rules/rule_table.h"

namespace conferix {

/// Adds the rules about lots of guides, below the rule "tiss.mensagem.loteguias".
void AddBillingRules(TRuleTable& rules);

} // namespace conferix
