// What tests ask of the system and not of the program, where systems differ.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace conferix {

/// Runs a program, found as the system finds programs, with its arguments. What it writes goes to the files
/// given, or nowhere. Its exit status; nothing where there is no such program.
std::optional<int> RunProgram(const std::vector<std::string>& words, const std::filesystem::path& output = {},
                              const std::filesystem::path& errors = {});

/// Makes a pipe with a name; false on a system that has none in folders.
bool MakePipe(const std::filesystem::path& file);
/// Makes a symbolic link, to a folder with `toFolder`; false on a system on which a user may not.
bool MakeLink(const std::filesystem::path& target, const std::filesystem::path& link, bool toFolder = false);

/// Whether names of files may hold control characters and what is no UTF-8.
bool NamesHoldAnything();

/// Whether TERM tells what terminal it is.
bool TerminalsHaveNames();

/// Whether the user may write whatever is write-protected, as an administrator may on some systems.
bool NothingIsWriteProtected();

/// What takes everything and gives nothing.
extern const char* const kNullDevice;

} // namespace conferix
