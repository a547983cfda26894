// Values that say what they mean, but not as the schema writes it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace conferix {

struct TSchemaSimpleType;

/// The value that a wrong one of a type stands for: without blanks around it, a number with the decimal
/// separator and without those of thousands, a date or time in the schema's form, a document or code without
/// punctuation and blanks between its digits, a code with the leading zeros of the list, a state by its
/// letters or its IBGE code. Nothing where it could be read in another way, or where the type does not admit
/// the result.
std::optional<std::string> RepairedValue(const TSchemaSimpleType& type, std::string_view raw);

/// The digits of a document's number that was written with points, hyphens, slashes or blanks; nothing for
/// one that has anything else, or none of them.
std::optional<std::string> DigitsOfDocument(std::string_view text);

} // namespace conferix
