#pragma once

#include "rules/rule_table.h"

namespace conferix {

/// The rules of all kinds of file: the structural ones and, below the rules about lots, those about what the
/// lots hold. A root a kind of file.
const TRuleTable& AllRules();

} // namespace conferix
