#pragma once

#include "rules/rule_table.h"

namespace conferix {

/// Adds the rules about monitoring lots, below the rule "tiss.monitoramento.loteguias".
void AddMonitoringRules(TRuleTable& rules);

} // namespace conferix
