#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace conferix {

/// A header value as "form-data; name=\"x\"": what stands before the first semicolon, in small letters, and
/// the parameters, their names in small letters.
struct THeaderValue {
    std::string Value;
    std::map<std::string, std::string> Parameters;
};
/// Nothing for a value that is not built so.
std::optional<THeaderValue> ParseHeaderValue(std::string_view text);

/// Which of the offered media types a client prefers by its Accept header: the one of the highest quality, of
/// equals the one offered first. An empty header accepts everything. 0-based; nothing where none is accepted.
std::optional<std::size_t> PreferredType(std::string_view accept, std::span<const std::string_view> offered);

} // namespace conferix
