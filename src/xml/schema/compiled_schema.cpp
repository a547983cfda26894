#include "xml/schema/compiled_schema.h"

#include "platform/utf8.h"
#include "xml/schema/schema_lexical.h"
#include "xml/xml_node.h"

#include <re2/re2.h>

#include <cstdint>
#include <utility>

namespace conferix {

std::optional<std::uint32_t> TSchemaAutomaton::After(std::uint32_t state, std::string_view localName) const {
    const auto is = [&](std::uint32_t position) {
        const TSchemaElement* element = Positions[position].Element;
        return element != nullptr && element->Name == localName;
    };
    if (IsAll)
        return std::nullopt;
    if (state > 0 && Positions[state - 1].Max > 1 && is(state - 1))
        return state;
    for (const std::uint32_t position : Follow(state))
        if (is(position))
            return position + 1;
    return std::nullopt;
}

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
    case TSchemaValueKind::Date:
        return TSchemaFaultCode::NotDate;
    case TSchemaValueKind::Time:
        return TSchemaFaultCode::NotTime;
    case TSchemaValueKind::DateTime:
        return TSchemaFaultCode::NotDateTime;
    case TSchemaValueKind::Base64Binary:
        return TSchemaFaultCode::NotBase64;
    default:
        return TSchemaFaultCode::NotName;
    }
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

using TVerdict = std::optional<TSchemaValueFault>;

TVerdict Counted(TSchemaFaultCode code, std::size_t count, std::uint32_t limit) {
    return TSchemaValueFault{code, static_cast<std::int64_t>(count), limit, {}};
}

TVerdict CheckLength(const TSchemaSimpleType& type, std::string_view value) {
    const TSchemaFacets& facets = type.Facets;
    if (!facets.Length && !facets.MinLength && !facets.MaxLength)
        return std::nullopt;
    const std::size_t length =
        type.Kind == TSchemaValueKind::Base64Binary ? CountBase64Octets(value) : CountCharacters(value);
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
    const TSchemaDecimal decimal = *ParseSchemaDecimal(value);
    if (facets.FractionDigits && decimal.Fraction.size() > *facets.FractionDigits)
        return Counted(TSchemaFaultCode::TooManyDecimals, decimal.Fraction.size(), *facets.FractionDigits);
    if (facets.TotalDigits && decimal.TotalDigits() > *facets.TotalDigits)
        return Counted(TSchemaFaultCode::TooManyDigits, decimal.TotalDigits(), *facets.TotalDigits);
    return std::nullopt;
}

TVerdict CheckNormalised(const TSchemaSimpleType& type, std::string_view value) {
    if (!IsSchemaLexical(type.Kind, value))
        return TSchemaValueFault{LexicalFault(type.Kind), 0, 0, {}};
    if (!type.Facets.Codes.empty() && !type.CodeKeys.contains(value))
        return TSchemaValueFault{
            TSchemaFaultCode::NotInList, static_cast<std::int64_t>(type.Facets.Codes.size()), 0, {}};
    if (TVerdict fault = CheckLength(type, value))
        return fault;
    if (TVerdict fault = CheckDigits(type, value))
        return fault;
    if (const auto& least = type.Facets.MinInclusive; least && !IsSchemaDateFrom(*least, value))
        return TSchemaValueFault{TSchemaFaultCode::BelowMinimum, 0, 0, *least};
    for (const TSchemaPattern& pattern : type.Facets.Patterns)
        if (!pattern.Matcher->Matches(value))
            return TSchemaValueFault{TSchemaFaultCode::WrongPattern, 0, 0, pattern.Text};
    return std::nullopt;
}

/// True where one look at the characters shows that a decimal is of its type; false says nothing.
bool IsPlainDecimal(const TSchemaFacets& facets, std::string_view value) {
    std::size_t digits = 0;
    std::size_t fraction = 0;
    bool point = false;
    for (const char c : value) {
        if (c >= '0' && c <= '9') {
            ++digits;
            fraction += point ? 1 : 0;
        } else if (c != '.' || std::exchange(point, true)) {
            return false;
        }
    }
    return digits > 0 && digits <= facets.TotalDigits.value_or(UINT32_MAX) &&
           fraction <= facets.FractionDigits.value_or(UINT32_MAX);
}

/// The same of a value that few facets bind, as it is with most values of a file.
bool FitsAtOnce(const TSchemaSimpleType& type, std::string_view value) {
    const TSchemaFacets& facets = type.Facets;
    if (!facets.Codes.empty() || !facets.Patterns.empty() || facets.Length || facets.MinInclusive)
        return false;
    if (type.Kind == TSchemaValueKind::Decimal)
        return !facets.MinLength && !facets.MaxLength && IsPlainDecimal(facets, value);
    // A text has at most as many characters as bytes, and one at least where it has a byte.
    return type.Kind == TSchemaValueKind::String && !facets.TotalDigits && !facets.FractionDigits &&
           !value.empty() && facets.MinLength.value_or(0) <= 1 &&
           value.size() <= facets.MaxLength.value_or(UINT32_MAX);
}

} // namespace

TSchemaMatcher::TSchemaMatcher(std::string pattern) : pattern_(std::move(pattern)) {}

TSchemaMatcher::~TSchemaMatcher() = default;

const re2::RE2& TSchemaMatcher::Ready() const {
    std::call_once(once_, [this] {
        re2::RE2::Options options;
        options.set_log_errors(false);
        options.set_never_capture(true);
        ready_ = std::make_unique<const re2::RE2>(pattern_, options);
    });
    return *ready_;
}

bool TSchemaMatcher::Matches(std::string_view value) const {
    return re2::RE2::FullMatch(re2::StringPiece(value.data(), value.size()), Ready());
}

std::string TSchemaMatcher::Fault() const {
    return Ready().ok() ? std::string() : Ready().error();
}

std::optional<TSchemaValueFault> TSchemaSimpleType::Check(std::string_view raw) const {
    if (FitsAtOnce(*this, raw))
        return std::nullopt;
    std::string collapsed;
    std::string_view value = raw;
    if (CollapsesSpace() && !IsCollapsed(raw)) {
        collapsed = Collapse(raw);
        value = collapsed;
    }
    TVerdict fault = CheckNormalised(*this, value);
    if (fault && TrimXmlSpace(value).empty() && fault->Code != TSchemaFaultCode::TooLong)
        return TSchemaValueFault{TSchemaFaultCode::EmptyValue, 0, 0, {}};
    return fault;
}

bool TSchemaSimpleType::DerivesFrom(const TSchemaSimpleType& ancestor) const {
    const TSchemaSimpleType* type = this;
    while (type != nullptr && type != &ancestor)
        type = type->Base;
    return type != nullptr;
}

bool TSchemaComplexType::DerivesFrom(const TSchemaComplexType& ancestor) const {
    const TSchemaComplexType* type = this;
    while (type != nullptr && type != &ancestor)
        type = type->BaseComplex;
    return type != nullptr;
}

} // namespace conferix
