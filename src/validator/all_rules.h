#pragma once

#include "model/tiss_enums.h"
#include "rules/rule_table.h"

#include <string>
#include <string_view>

namespace conferix {

/// The rules of all kinds of file: the structural ones and, below the rules about lots, those about what the
/// lots hold. A root a kind of file.
const TRuleTable& AllRules();

/// Name of the rule that files of a kind have in common with those of others: "schema", "namespace", "hash".
std::string RuleOfKind(TEnumTipoArquivoTiss tipo, std::string_view rule);
/// Name of the root under which the rules of a kind of file stand.
std::string_view RootOf(TEnumTipoArquivoTiss tipo);

} // namespace conferix
