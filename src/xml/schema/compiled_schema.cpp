#include "xml/schema/compiled_schema.h"

#include "xml/schema/schema_lexical.h"
#include "xml/xml_node.h"

#include <re2/re2.h>

#include <algorithm>

namespace conferix {

namespace {

TSchemaFaultCode LexicalFault(TSchemaValueKind kind) {
    switch (kind) {
    case TSchemaValueKind::AnyUri:
        return TSchemaFaultCode::NotUri;
    case TSchemaValueKind::Boolean:
        return TSchemaFaultCode::NotBoolean;
    case TSchemaValueKind::Decimal:
        return TSchemaFaultCode::NotDecimal;
    case TSchemaValueKind::Integer:
        return TSchemaFaultCode::NotInteger;
    case TSchemaValueKind::Float:
        return TSchemaFaultCode::NotFloat;
    case TSchemaValueKind::Date:
        return TSchemaFaultCode::NotDate;
    case TSchemaValueKind::Time:
        return TSchemaFaultCode::NotTime;
    case TSchemaValueKind::DateTime:
        return TSchemaFaultCode::NotDateTime;
    case TSchemaValueKind::Base64Binary:
        return TSchemaFaultCode::NotBase64;
    case TSchemaValueKind::HexBinary:
        return TSchemaFaultCode::NotHex;
    default:
        return TSchemaFaultCode::NotName;
    }
}

bool IsDecimalKind(TSchemaValueKind kind) {
    return kind == TSchemaValueKind::Decimal || kind == TSchemaValueKind::Integer;
}

/// True when the text is as whiteSpace="collapse" leaves it.
bool IsCollapsed(std::string_view text) {
    bool blank = true;
    for (const char c : text) {
        const bool space = IsXmlSpace(c);
        if (space && (blank || c != ' '))
            return false;
        blank = space;
    }
    return text.empty() || text.back() != ' ';
}

std::string Collapse(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    bool pending = false;
    for (const char c : text) {
        if (IsXmlSpace(c)) {
            pending = !result.empty();
            continue;
        }
        if (pending)
            result.push_back(' ');
        pending = false;
        result.push_back(c);
    }
    return result;
}

bool InCodes(const TSchemaSimpleType& type, std::string_view value) {
    if (IsSchemaOrdered(type.Kind) && !IsDecimalKind(type.Kind))
        return std::any_of(type.Facets.Codes.begin(), type.Facets.Codes.end(), [&](const std::string& code) {
            return CompareSchemaValues(type.Kind, code, value) == TSchemaOrder::Equal;
        });
    if (IsDecimalKind(type.Kind))
        return type.CodeKeys.contains(ParseSchemaDecimal(value, false)->Key());
    if (type.Kind == TSchemaValueKind::Boolean)
        return type.CodeKeys.contains(value == "1" ? "true" : value == "0" ? "false" : value);
    return type.CodeKeys.contains(value);
}

using TVerdict = std::optional<TSchemaValueFault>;

TVerdict Counted(TSchemaFaultCode code, std::size_t count, std::uint32_t limit) {
    return TSchemaValueFault{code, static_cast<std::int64_t>(count), limit, {}};
}

TVerdict CheckLength(const TSchemaSimpleType& type, std::string_view value) {
    const TSchemaFacets& facets = type.Facets;
    if (!facets.Length && !facets.MinLength && !facets.MaxLength)
        return std::nullopt;
    const bool binary =
        type.Kind == TSchemaValueKind::Base64Binary || type.Kind == TSchemaValueKind::HexBinary;
    const std::size_t length = binary ? CountOctets(type.Kind, value) : CountCodePoints(value);
    if (facets.Length && length != *facets.Length)
        return Counted(TSchemaFaultCode::WrongLength, length, *facets.Length);
    if (facets.MaxLength && length > *facets.MaxLength)
        return Counted(TSchemaFaultCode::TooLong, length, *facets.MaxLength);
    if (facets.MinLength && length < *facets.MinLength)
        return Counted(TSchemaFaultCode::TooShort, length, *facets.MinLength);
    return std::nullopt;
}

TVerdict CheckDigits(const TSchemaSimpleType& type, std::string_view value) {
    const TSchemaFacets& facets = type.Facets;
    if (!facets.TotalDigits && !facets.FractionDigits)
        return std::nullopt;
    const TSchemaDecimal decimal = *ParseSchemaDecimal(value, false);
    if (facets.FractionDigits && decimal.Fraction.size() > *facets.FractionDigits)
        return Counted(TSchemaFaultCode::TooManyDecimals, decimal.Fraction.size(), *facets.FractionDigits);
    if (facets.TotalDigits && decimal.TotalDigits() > *facets.TotalDigits)
        return Counted(TSchemaFaultCode::TooManyDigits, decimal.TotalDigits(), *facets.TotalDigits);
    return std::nullopt;
}

TVerdict CheckBounds(const TSchemaSimpleType& type, std::string_view value) {
    const TSchemaFacets& facets = type.Facets;
    const auto breaks = [&](const std::optional<std::string>& bound, TSchemaOrder wanted, bool orEqual) {
        if (!bound)
            return false;
        const TSchemaOrder order = CompareSchemaValues(type.Kind, value, *bound);
        return order != wanted && !(orEqual && order == TSchemaOrder::Equal);
    };
    if (breaks(facets.MinInclusive, TSchemaOrder::Greater, true))
        return TSchemaValueFault{TSchemaFaultCode::BelowMinimum, 0, 0, *facets.MinInclusive};
    if (breaks(facets.MinExclusive, TSchemaOrder::Greater, false))
        return TSchemaValueFault{TSchemaFaultCode::BelowMinimum, 0, 1, *facets.MinExclusive};
    if (breaks(facets.MaxInclusive, TSchemaOrder::Less, true))
        return TSchemaValueFault{TSchemaFaultCode::AboveMaximum, 0, 0, *facets.MaxInclusive};
    if (breaks(facets.MaxExclusive, TSchemaOrder::Less, false))
        return TSchemaValueFault{TSchemaFaultCode::AboveMaximum, 0, 1, *facets.MaxExclusive};
    return std::nullopt;
}

TVerdict CheckNormalised(const TSchemaSimpleType& type, std::string_view value) {
    if (!IsSchemaLexical(type.Kind, value))
        return TSchemaValueFault{LexicalFault(type.Kind), 0, 0, {}};
    if (!type.Facets.Codes.empty() && !InCodes(type, value))
        return TSchemaValueFault{
            TSchemaFaultCode::NotInList, static_cast<std::int64_t>(type.Facets.Codes.size()), 0, {}};
    if (TVerdict fault = CheckLength(type, value))
        return fault;
    if (TVerdict fault = CheckDigits(type, value))
        return fault;
    if (TVerdict fault = CheckBounds(type, value))
        return fault;
    for (const TSchemaPattern& pattern : type.Facets.Patterns)
        if (!re2::RE2::FullMatch(re2::StringPiece(value.data(), value.size()), *pattern.Matcher))
            return TSchemaValueFault{TSchemaFaultCode::WrongPattern, 0, 0, pattern.Text};
    return std::nullopt;
}

} // namespace

std::string_view TSchemaSimpleType::Normalise(std::string_view raw, std::string& buffer) const {
    switch (WhiteSpace) {
    case TSchemaWhiteSpace::Preserve:
        return raw;
    case TSchemaWhiteSpace::Replace:
        if (raw.find_first_of("\t\n\r") == std::string_view::npos)
            return raw;
        buffer.assign(raw);
        std::replace_if(buffer.begin(), buffer.end(), IsXmlSpace, ' ');
        return buffer;
    case TSchemaWhiteSpace::Collapse:
        if (IsCollapsed(raw))
            return raw;
        buffer = Collapse(raw);
        return buffer;
    }
    return raw;
}

std::optional<TSchemaValueFault> TSchemaSimpleType::Check(std::string_view raw) const {
    std::string buffer;
    const std::string_view value = Normalise(raw, buffer);
    TVerdict fault = CheckNormalised(*this, value);
    if (fault && TrimXmlSpace(value).empty() && fault->Code != TSchemaFaultCode::TooLong)
        return TSchemaValueFault{TSchemaFaultCode::EmptyValue, 0, 0, {}};
    return fault;
}

bool TSchemaSimpleType::SameValue(std::string_view rawLeft, std::string_view rawRight) const {
    std::string bufferLeft;
    std::string bufferRight;
    const std::string_view left = Normalise(rawLeft, bufferLeft);
    const std::string_view right = Normalise(rawRight, bufferRight);
    if (left == right)
        return true;
    if (Kind == TSchemaValueKind::Boolean)
        return IsSchemaLexical(Kind, left) && IsSchemaLexical(Kind, right) &&
               (left == "1" || left == "true") == (right == "1" || right == "true");
    return IsSchemaOrdered(Kind) && CompareSchemaValues(Kind, left, right) == TSchemaOrder::Equal;
}

bool TSchemaSimpleType::DerivesFrom(const TSchemaSimpleType& ancestor) const {
    const TSchemaSimpleType* type = this;
    while (type != nullptr && type != &ancestor)
        type = type->Base;
    return type != nullptr;
}

bool TSchemaWildcard::Admits(std::uint32_t namespaceId) const {
    switch (Mode) {
    case TMode::Any:
        return true;
    case TMode::Other:
        return namespaceId != kSchemaNoNamespace && namespaceId != Namespaces.front();
    case TMode::List:
        return std::find(Namespaces.begin(), Namespaces.end(), namespaceId) != Namespaces.end();
    }
    return false;
}

bool TSchemaComplexType::DerivesFrom(const TSchemaComplexType& ancestor) const {
    const TSchemaComplexType* type = this;
    while (type != nullptr && type != &ancestor)
        type = type->BaseComplex;
    return type != nullptr;
}

} // namespace conferix
