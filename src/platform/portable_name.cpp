#include "platform/portable_name.h"

#include <algorithm>
#include <array>
#include <string>

namespace conferix {

namespace {

constexpr std::string_view kSeparators = "/\\";

template<class TPredicate>
bool AllNames(std::string_view path, TPredicate holds) {
    while (!path.empty()) {
        const std::size_t length = std::min(path.find_first_of(kSeparators), path.size());
        if (!holds(path.substr(0, length))) {
            return false;
        }
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return true;
}

} // namespace

bool IsDeviceName(std::string_view name) {
    std::string stem(name.substr(0, name.find_first_of(".:")));
    stem.erase(stem.find_last_not_of(' ') + 1);
    std::ranges::transform(stem, stem.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; });
    constexpr std::array<std::string_view, 6> kDevices = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    if (std::ranges::find(kDevices, stem) != kDevices.end()) {
        return true;
    }
    if (!stem.starts_with("COM") && !stem.starts_with("LPT")) {
        return false;
    }
    constexpr std::array<std::string_view, 3> kRaised = {"\u00B9", "\u00B2", "\u00B3"};
    const std::string_view number = std::string_view(stem).substr(3);
    return (number.size() == 1 && number[0] >= '0' && number[0] <= '9') ||
           std::ranges::find(kRaised, number) != kRaised.end();
}

bool IsPortableName(std::string_view name) {
    return name.find(':') == std::string_view::npos && !IsDeviceName(name);
}

bool LeavesFolder(std::string_view path) {
    const bool absolute = path.empty() || kSeparators.find(path.front()) != std::string_view::npos;
    return absolute || (path.size() > 1 && path[1] == ':') ||
           !AllNames(path, [](std::string_view name) { return name != ".."; });
}

bool IsPortablePath(std::string_view path) {
    return AllNames(path, &IsPortableName);
}

} // namespace conferix
