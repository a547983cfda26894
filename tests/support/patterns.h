// Regular expressions of POSIX, which those of GoogleTest are only where the system has them.
#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace conferix {

MATCHER_P(MatchesPattern, pattern, "matches " + std::string(pattern)) {
    const std::string text(arg);
    return std::regex_match(text, std::regex(std::string(pattern), std::regex::extended));
}

MATCHER_P(ContainsPattern, pattern, "contains " + std::string(pattern)) {
    const std::string text(arg);
    return std::regex_search(text, std::regex(std::string(pattern), std::regex::extended));
}

} // namespace conferix
