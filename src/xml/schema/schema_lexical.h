#pragma once

#include "xml/schema/compiled_schema.h"

#include <optional>
#include <string_view>

namespace conferix {

/// The lexical forms of the built-in types, for values whose white space is already collapsed.

/// A decimal literal taken apart: digits without leading zeros before and trailing zeros after the point.
struct TSchemaDecimal {
    std::string_view Whole;
    std::string_view Fraction;

    /// Digits that the value needs, as totalDigits counts them.
    std::size_t TotalDigits() const { return Whole.size() + Fraction.size(); }
};
std::optional<TSchemaDecimal> ParseSchemaDecimal(std::string_view value);

/// True when the value has the lexical form of the kind.
bool IsSchemaLexical(TSchemaValueKind kind, std::string_view value);

/// True when a date is the least one or later, wherever on Earth each of them may be meant when only the
/// other names its time zone. Both have the form of a date.
bool IsSchemaDateFrom(std::string_view least, std::string_view date);

/// Octets that a lexically right base64Binary value holds.
std::size_t CountBase64Octets(std::string_view value);

} // namespace conferix
