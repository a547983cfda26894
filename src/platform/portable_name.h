// Names of files that come from others, in packages and in schemas.
#pragma once

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

} // namespace conferix
