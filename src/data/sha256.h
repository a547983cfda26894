// Sums by which files are told apart.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace conferix {

/// SHA-256 of a file as lower-case hexadecimal. Raises EFileNotRead.
std::string Sha256OfFile(const std::filesystem::path& file);
/// SHA-256 of a text in Base64, as content security policies name what may run.
std::string Sha256Base64(std::string_view text);

} // namespace conferix
