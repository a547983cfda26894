// What a correction changed and left, for people.
#pragma once

#include "app/execute_solver.h"

#include <iosfwd>

namespace conferix {

/// Writes a line a change, with its place, its old and new value, then what was left as it is and why. Of
/// many of one kind, the first stands for all of them, unless `all`.
void ListCorrections(std::ostream& out, const TCorrectionResult& result, bool all);

} // namespace conferix
