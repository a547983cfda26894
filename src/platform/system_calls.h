// What the shared sources of this folder ask of the system, beyond what everybody may. For the sources of
// this folder.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace conferix {

/// The folder of the user's application data; empty where nothing tells it.
std::filesystem::path UserDataFolder();

/// The reason that an error of this system alone has, in Portuguese, in lower case and without full stop;
/// nothing where the standard library's name of the error says enough.
std::optional<std::string> SystemReason(const std::error_code& error);
/// What the system says of an error.
std::string SystemMessage(const std::error_code& error);

/// Has a function called when a signal is about to end the process, unless that signal is to be ignored.
/// Writing beyond the permitted size of files becomes an error.
void HandleEndingSignals(void (*handler)(int));

/// Removes a file, calling nothing but what a signal handler may.
void RemoveNow(const std::filesystem::path::value_type* file);

} // namespace conferix
