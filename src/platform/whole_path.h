// Paths from the root on. The standard library's own functions take the network's "\\servidor\pasta" for
// "\servidor\pasta".
#pragma once

#include <filesystem>

namespace conferix {

/// The path of a file from the root on.
std::filesystem::path AbsolutePath(const std::filesystem::path& file);

/// The one path by which a file is known, which need not exist: from the root on, links resolved where the
/// system has them.
std::filesystem::path CanonicalPath(const std::filesystem::path& file);

} // namespace conferix
