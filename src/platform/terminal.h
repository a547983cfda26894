#pragma once

namespace conferix {

/// Whether the environment lets expect a terminal that knows colours: not where TERM is "dumb", nor where it
/// tells nothing on a system on which terminals set it.
bool TerminalKnowsColours();

} // namespace conferix
