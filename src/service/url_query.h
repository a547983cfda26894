#pragma once

#include <map>
#include <string>
#include <string_view>

namespace conferix {

/// The target of a request, taken apart.
struct TRequestTarget {
    std::string Path; ///< to the letter: nothing is decoded, so that one path has one spelling
    std::map<std::string, std::string> Query;
};

/// Takes a target as "/validar?todas=sim" apart, one with scheme and host included. Raises EHttpRefusal (400)
/// for another form, an escape that is none, and a parameter that is given twice.
TRequestTarget ParseTarget(std::string_view target);

} // namespace conferix
