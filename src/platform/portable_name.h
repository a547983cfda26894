// Names that some system takes for more than those of files.
#pragma once

#include <filesystem>
#include <string_view>

namespace conferix {

/// Whether a name without folder stands for a device on Windows: "NUL", "com1.xsd".
bool IsDeviceName(std::string_view name);

/// Whether a name without folder means a file on every system: no device, and no ":", behind which Windows
/// looks for another stream of the file or, before it, for a drive.
bool IsPortableName(std::string_view name);

/// Whether a path, with either separator, could end outside of the folder into which it is unpacked.
bool LeavesFolder(std::string_view path);

/// Whether all names of a path, with either separator, are portable.
bool IsPortablePath(std::string_view path);

/// Whether a path names a device and no file on the system that runs the program, as "C:\\pasta\\nul.xml"
/// does on Windows. Reading it would wait for ever, and writing it would lose the text.
bool NamesDevice(const std::filesystem::path& file);
/// What the user is told of such a path.
inline constexpr const char* kDeviceReason = "é o nome de um dispositivo do Windows, não o de um arquivo";

} // namespace conferix
