#include "platform/share_folder.h"

#include "platform/platform.h"

namespace conferix {

std::filesystem::path ShareFolder() {
    return ExecutablePath().parent_path().parent_path() / "share" / "conferix";
}

} // namespace conferix
