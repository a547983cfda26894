// What a program does at its beginning.
#pragma once

#include <string>
#include <vector>

namespace conferix {

/// The words of the command line after the program's name, in UTF-8; on Windows, where no shell does it, with
/// the names of the files in place of "*.xml".
std::vector<std::string> CommandLineWords(int argc, char** argv);

/// Lets the standard streams pass bytes as they are, and a console show UTF-8 and colours until the process
/// ends.
void PrepareStandardStreams();

/// Ends the process at once: it waits for no thread and destroys nothing, but leaves the console as it was.
[[noreturn]] void EndNow(int status);

/// Whether windows can be shown; without a display the library of the window would end the program.
bool HasDisplay();

/// Whether a database can be replaced while somebody reads it, who then goes on reading the old one.
bool OpenFilesCanBeReplaced();

} // namespace conferix
