#pragma once

#include "xml/schema/compiled_schema.h"

#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// A decimal literal taken apart: digits without leading zeros before and trailing zeros after the point.
struct TSchemaDecimal {
    bool Negative = false; ///< never of zero
    std::string_view Whole;
    std::string_view Fraction;

    /// Digits that the value needs, as totalDigits counts them.
    std::size_t TotalDigits() const { return Whole.size() + Fraction.size(); }
    /// A text that equal values share.
    std::string Key() const;
};

/// The lexical forms of the built-in types, for values whose white space is already normalised. `integer`
/// refuses the point.
std::optional<TSchemaDecimal> ParseSchemaDecimal(std::string_view value, bool integer);
/// True when the value has the lexical form of the kind.
bool IsSchemaLexical(TSchemaValueKind kind, std::string_view value);

enum class TSchemaOrder { Less, Equal, Greater, Unordered };
/// Order of two values of a kind; Unordered when a time zone decides and only one of them has it, or when a
/// value has not the form of its kind.
TSchemaOrder CompareSchemaValues(TSchemaValueKind kind, std::string_view left, std::string_view right);

/// True for the kinds whose values have bounds (minInclusive and its like).
bool IsSchemaOrdered(TSchemaValueKind kind);

/// Characters (code points) of a text in UTF-8.
std::size_t CountCodePoints(std::string_view text);

/// Octets that a lexically right base64Binary or hexBinary value holds.
std::size_t CountOctets(TSchemaValueKind kind, std::string_view value);

} // namespace conferix
