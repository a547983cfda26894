#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>

namespace conferix {

/// Folder of the schemas that the regulator publishes, when the machine has them.
inline std::optional<std::filesystem::path> PublishedSchemas() {
    const char* named = std::getenv("CONFERIX_ESQUEMAS_PUBLICADOS");
    const std::filesystem::path folder = named != nullptr
                                             ? std::filesystem::path(named)
                                             : std::filesystem::path(CONFERIX_FONTE) / "../shared/schemas";
    if (!std::filesystem::is_directory(folder))
        return std::nullopt;
    return folder;
}

} // namespace conferix
