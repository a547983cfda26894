// What several commands of the terminology show of its imports.
#pragma once

#include "data/import/tuss_importer.h"
#include "report/message_json.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace conferix {

/// A warning for each table that rules use and whose newest import is older than six months.
std::vector<std::string> OldImports(const std::vector<TTableImport>& imports);
TJson ImportsJson(const std::vector<TTableImport>& imports);
void WriteImports(std::ostream& out, const std::vector<TTableImport>& imports);

} // namespace conferix
