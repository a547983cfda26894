#pragma once

#include <filesystem>

namespace conferix {

/// Folder of what comes with the program and is the same on every machine: share/conferix beside the folder
/// of the executable.
std::filesystem::path ShareFolder();

} // namespace conferix
