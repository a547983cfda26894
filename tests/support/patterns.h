// Regular expressions of the standard library: those of GoogleTest are the system's, where it has any.
#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace conferix {

MATCHER_P(MatchesPattern, pattern, "matches " + std::string(pattern)) {
    const std::string text(arg);
    return std::regex_match(text, std::regex(std::string(pattern)));
}

MATCHER_P(ContainsPattern, pattern, "contains " + std::string(pattern)) {
    const std::string text(arg);
    return std::regex_search(text, std::regex(std::string(pattern)));
}

} // namespace conferix
