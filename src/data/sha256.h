// Sums by which files are told apart.
#pragma once

#include <filesystem>
#include <string>

namespace conferix {

/// SHA-256 of a file as lower-case hexadecimal. Raises EFileNotRead.
std::string Sha256OfFile(const std::filesystem::path& file);

} // namespace conferix
