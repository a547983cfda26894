#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace conferix {

/// Exit statuses of the command line; scripts rely on them.
enum TExitStatus : int {
    kExitValid = 0,      ///< all valid, or done
    kExitInvalid = 1,    ///< a file is invalid, or the verdict asked for is negative
    kExitUsage = 2,      ///< the command line is wrong
    kExitUnreadable = 3, ///< something could not be read or written, or a file could not be checked
};

/// Where a run of the command line reads and writes.
struct TCliStreams {
    std::istream& In;
    std::ostream& Out;
    std::ostream& Err;
    bool OutIsTerminal = false;
    bool ErrIsTerminal = false;
};

/// Runs the `conferix` command with the words after the program's name. Never raises.
int RunCli(const std::vector<std::string>& words, TCliStreams streams);

} // namespace conferix
