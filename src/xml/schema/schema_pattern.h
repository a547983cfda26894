#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace conferix {

/// A pattern facet that is wrong or uses what is not supported; the text names the piece.
class ESchemaPattern : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Translates a regular expression of XML Schema (matched against the whole value, where ^ and $ are plain
/// characters) into the syntax of RE2. Raises ESchemaPattern.
std::string TranslateSchemaPattern(std::string_view pattern);

} // namespace conferix
