// Memory in large pages, where the system has them.
#pragma once

#include <cstddef>

namespace conferix {

/// Size of a large page; memory that is aligned to it gains most.
inline constexpr std::size_t kLargePage = std::size_t{2} * 1024 * 1024;

/// Asks for large pages under memory that is not used yet, since each page costs an interruption when it is
/// first touched. Does nothing for memory smaller than one, or where there are none.
void PreferLargePages(void* memory, std::size_t size);

} // namespace conferix
