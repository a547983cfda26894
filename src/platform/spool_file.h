#pragma once

#include <cstdio>

namespace conferix {

/// A new file for reading and writing bytes in the folder of temporary files, which is gone once it is
/// closed; null where that folder takes none.
std::FILE* OpenSpoolFile();

} // namespace conferix
