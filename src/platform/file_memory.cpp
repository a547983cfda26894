#include "platform/file_memory.h"

namespace conferix {

TFileStamp StampOf(const std::filesystem::path& path) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path, error);
    const auto size = error ? std::uintmax_t{0} : std::filesystem::file_size(path, error);
    return error ? TFileStamp{path, std::filesystem::file_time_type::min(), 0} : TFileStamp{path, time, size};
}

} // namespace conferix
