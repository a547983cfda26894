#include "report/file_uri.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace conferix {

std::string PercentEncoded(std::string_view bytes) {
    std::string encoded;
    encoded.reserve(bytes.size());
    for (const char c : bytes) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                           std::string_view("-._~/").find(c) != std::string_view::npos;
        if (plain)
            encoded += c;
        else
            encoded += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return encoded;
}

std::string FileUri(std::string_view fileName) {
    std::string name(fileName);
    if (std::filesystem::path::preferred_separator == '\\')
        std::ranges::replace(name, '\\', '/');
    const bool drive =
        std::filesystem::path::preferred_separator == '\\' && name.size() > 1 && name[1] == ':';
    if (drive)
        return "file:///" + name.substr(0, 2) + PercentEncoded(std::string_view(name).substr(2));
    if (name.starts_with("//")) // a file of another machine, which the address names
        return "file:" + PercentEncoded(name);
    return (name.starts_with('/') ? "file://" : "") + PercentEncoded(name);
}

} // namespace conferix
