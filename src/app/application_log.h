// The application log: "conferix.log" in the data folder.
#pragma once

#include <cstddef>
#include <string>

namespace conferix {

/// Records corrections of a file's text under the category "solver". `rule`: name of the rule whose findings
/// were corrected; `solver`: class name of the correction. Of the file the log keeps the name without folder,
/// of what was corrected the number alone: nothing that a bill says stands in it.
///
/// Each entry opens the log, makes the data folder where it is missing, and changes to a new file where the
/// present one is full. Where that fails there is no entry, and nothing else: no program depends on its log.
void LogCorrections(const std::string& fileName, const std::string& rule, const std::string& solver,
                    std::size_t count);

/// Records under the category "configuracao" that the user switched a rule on or off.
void LogRuleSwitched(const std::string& rule, bool enabled);

} // namespace conferix
