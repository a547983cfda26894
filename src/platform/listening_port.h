#pragma once

#include <cstdint>

namespace conferix {

/// Lets a socket listen on a port on which a program has just ended, and no other program beside it.
void ClaimPort(std::uintptr_t socket);

} // namespace conferix
