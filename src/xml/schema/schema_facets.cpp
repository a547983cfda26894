#include "xml/schema/schema_facets.h"

#include "xml/schema/schema_lexical.h"
#include "xml/schema/schema_pattern.h"
#include "xml/schema/schema_set.h"

#include <re2/re2.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace conferix {

namespace {

constexpr std::array<std::string_view, 12> kFacetNames = {
    "enumeration",    "length",       "minLength",    "maxLength",    "pattern",      "totalDigits",
    "fractionDigits", "minInclusive", "maxInclusive", "minExclusive", "maxExclusive", "whiteSpace"};

class TFacetReader {
  public:
    TFacetReader(TSchemaSimpleType& type, const TSchemaSimpleType& base, const TSchemaFile& file)
        : type_(type), base_(base), file_(file) {
        type_.Base = &base;
        type_.Kind = base.Kind;
        type_.WhiteSpace = base.WhiteSpace;
        type_.Facets = base.Facets;
    }

    void Read(const TXmlNode& restriction) {
        for (const TXmlNode& node : restriction.ChildTags())
            if (file_.IsXsd(node) && IsSchemaFacet(node.LocalName()))
                ReadFacet(node);
        if (!pattern_.empty())
            AddPattern();
        // Codes are judged last, when the white space rule is known.
        if (!codes_.empty())
            AddCodes();
        else
            type_.CodeKeys = base_.CodeKeys;
        const TSchemaFacets& facets = type_.Facets;
        if (facets.MinLength && facets.MaxLength && *facets.MinLength > *facets.MaxLength)
            file_.Fail(restriction, "minLength maior do que maxLength");
    }

  private:
    void ReadFacet(const TXmlNode& node) {
        const TXmlAttribute* attribute = node.Attribute("value");
        const std::string name(node.LocalName());
        if (attribute == nullptr)
            file_.Fail(node, "<" + name + "> sem value");
        const std::string_view value = attribute->Value();
        TSchemaFacets& facets = type_.Facets;
        if (name == "enumeration")
            codes_.emplace_back(&node, value);
        else if (name == "pattern")
            CollectPattern(node, value);
        else if (name == "whiteSpace")
            ReadWhiteSpace(node, value);
        else if (name == "length")
            ReadLength(node, value);
        else if (name == "minLength")
            Tighten(facets.MinLength, LengthOf(node, value), true);
        else if (name == "maxLength")
            Tighten(facets.MaxLength, LengthOf(node, value), false);
        else if (name == "totalDigits")
            Tighten(facets.TotalDigits, DigitsOf(node, value), false);
        else if (name == "fractionDigits")
            Tighten(facets.FractionDigits, DigitsOf(node, value), false);
        else if (name == "minInclusive")
            TightenBound(node, facets.MinInclusive, value, TSchemaOrder::Less);
        else if (name == "minExclusive")
            TightenBound(node, facets.MinExclusive, value, TSchemaOrder::Less);
        else if (name == "maxInclusive")
            TightenBound(node, facets.MaxInclusive, value, TSchemaOrder::Greater);
        else
            TightenBound(node, facets.MaxExclusive, value, TSchemaOrder::Greater);
    }

    [[noreturn]] void Inapplicable(const TXmlNode& node) const {
        file_.Fail(node, "a faceta <" + std::string(node.LocalName()) + "> não se aplica a este tipo");
    }

    std::uint32_t NumberOf(const TXmlNode& node, std::string_view value) const {
        value = TrimXmlSpace(value);
        std::uint32_t number = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
        if (error != std::errc() || end != value.data() + value.size())
            file_.Fail(node, "número inválido em <" + std::string(node.LocalName()) + ">: \"" +
                                 std::string(value) + "\"");
        return number;
    }

    std::uint32_t LengthOf(const TXmlNode& node, std::string_view value) const {
        switch (type_.Kind) {
        case TSchemaValueKind::String:
        case TSchemaValueKind::NCName:
        case TSchemaValueKind::Id:
        case TSchemaValueKind::AnyUri:
        case TSchemaValueKind::Base64Binary:
        case TSchemaValueKind::HexBinary:
            return NumberOf(node, value);
        default:
            Inapplicable(node);
        }
    }

    std::uint32_t DigitsOf(const TXmlNode& node, std::string_view value) const {
        if (type_.Kind != TSchemaValueKind::Decimal && type_.Kind != TSchemaValueKind::Integer)
            Inapplicable(node);
        return NumberOf(node, value);
    }

    void ReadLength(const TXmlNode& node, std::string_view value) {
        const std::uint32_t length = LengthOf(node, value);
        if (type_.Facets.Length.value_or(length) != length)
            file_.Fail(node, "length diferente do tipo de base");
        type_.Facets.Length = length;
    }

    static void Tighten(std::optional<std::uint32_t>& facet, std::uint32_t value, bool larger) {
        if (!facet || (larger ? value > *facet : value < *facet))
            facet = value;
    }

    /// Takes the bound over unless the one in force is already as tight.
    void TightenBound(const TXmlNode& node, std::optional<std::string>& facet, std::string_view raw,
                      TSchemaOrder looser) {
        if (!IsSchemaOrdered(type_.Kind))
            Inapplicable(node);
        const std::string_view value = TrimXmlSpace(raw);
        if (!IsSchemaLexical(type_.Kind, value))
            file_.Fail(node, "valor inválido em <" + std::string(node.LocalName()) + ">: \"" +
                                 std::string(value) + "\"");
        if (!facet || CompareSchemaValues(type_.Kind, value, *facet) != looser)
            facet = std::string(value);
    }

    void ReadWhiteSpace(const TXmlNode& node, std::string_view value) {
        const auto rule = value == "preserve"  ? TSchemaWhiteSpace::Preserve
                          : value == "replace" ? TSchemaWhiteSpace::Replace
                                               : TSchemaWhiteSpace::Collapse;
        if (rule == TSchemaWhiteSpace::Collapse && value != "collapse")
            file_.Fail(node, "valor inválido em <whiteSpace>: \"" + std::string(value) + "\"");
        if (rule < type_.WhiteSpace)
            file_.Fail(node, "<whiteSpace> mais frouxo do que o do tipo de base");
        type_.WhiteSpace = rule;
    }

    /// The patterns of one step are alternatives.
    void CollectPattern(const TXmlNode& node, std::string_view value) {
        try {
            pattern_ += (pattern_.empty() ? "(?:" : "|(?:") + TranslateSchemaPattern(value) + ")";
        } catch (const ESchemaPattern& error) {
            file_.Fail(node, "<pattern> \"" + std::string(value) + "\": " + error.what());
        }
        patternText_ += (patternText_.empty() ? "" : "|") + std::string(value);
        patternNode_ = &node;
    }

    void AddPattern() {
        re2::RE2::Options options;
        options.set_log_errors(false);
        options.set_never_capture(true);
        auto matcher = std::make_shared<const re2::RE2>(pattern_, options);
        if (!matcher->ok())
            file_.Fail(*patternNode_, "<pattern> \"" + patternText_ + "\": " + matcher->error());
        type_.Facets.Patterns.push_back({patternText_, std::move(matcher)});
    }

    void AddCodes() {
        type_.Facets.Codes.clear();
        type_.Facets.Codes.reserve(codes_.size());
        for (const auto& [node, raw] : codes_) {
            std::string buffer;
            const std::string code(type_.Normalise(raw, buffer));
            if (!IsSchemaLexical(type_.Kind, code))
                file_.Fail(*node, "valor inválido em <enumeration>: \"" + code + "\"");
            // A code that the base type's list lacks could never be met.
            if (!base_.Facets.Codes.empty() && base_.Check(raw))
                continue;
            type_.CodeKeys.insert(KeyOf(code));
            type_.Facets.Codes.push_back(code);
        }
        if (type_.Facets.Codes.empty())
            file_.Fail(*codes_.front().first, "nenhum código da lista pertence ao tipo de base");
    }

    std::string KeyOf(const std::string& code) const {
        if (type_.Kind == TSchemaValueKind::Decimal || type_.Kind == TSchemaValueKind::Integer)
            return ParseSchemaDecimal(code, false)->Key();
        if (type_.Kind == TSchemaValueKind::Boolean)
            return code == "1" ? "true" : code == "0" ? "false" : code;
        return code;
    }

    TSchemaSimpleType& type_;
    const TSchemaSimpleType& base_;
    const TSchemaFile& file_;
    std::vector<std::pair<const TXmlNode*, std::string_view>> codes_;
    std::string pattern_;
    std::string patternText_;
    const TXmlNode* patternNode_ = nullptr;
};

} // namespace

void RestrictSchemaType(TSchemaSimpleType& type, const TSchemaSimpleType& base, const TSchemaFile& file,
                        const TXmlNode& restriction) {
    TFacetReader(type, base, file).Read(restriction);
}

bool IsSchemaFacet(std::string_view name) {
    return std::find(kFacetNames.begin(), kFacetNames.end(), name) != kFacetNames.end();
}

} // namespace conferix
