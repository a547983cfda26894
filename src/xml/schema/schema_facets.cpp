#include "xml/schema/schema_facets.h"

#include "xml/schema/schema_lexical.h"
#include "xml/schema/schema_set.h"

#include <re2/re2.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace conferix {

namespace {

constexpr std::array<std::string_view, 8> kFacetNames = {"enumeration",    "length",      "minLength",
                                                         "maxLength",      "pattern",     "totalDigits",
                                                         "fractionDigits", "minInclusive"};

/// The patterns that mean the same to XML Schema and to RE2: letters, digits, blanks, "/", ":" and classes of
/// letters and digits, each perhaps repeated, in one alternative or several.
bool IsPatternSupported(std::string_view pattern) {
    static const re2::RE2 kSupported(
        R"((([A-Za-z0-9 /:]|\[([A-Za-z0-9](-[A-Za-z0-9])?)+\])([?*+]|\{[0-9]+(,[0-9]*)?\})?|\|)+)");
    return re2::RE2::FullMatch(re2::StringPiece(pattern.data(), pattern.size()), kSupported);
}

class TFacetReader {
  public:
    TFacetReader(TSchemaSimpleType& type, const TSchemaSimpleType& base, const TSchemaFile& file)
        : type_(type), base_(base), file_(file) {
        type_.Base = &base;
        type_.Kind = base.Kind;
        type_.Facets = base.Facets;
        type_.CodeKeys = base.CodeKeys;
    }

    void Read(const TXmlNode& restriction) {
        for (const TXmlNode& node : restriction.ChildTags())
            if (file_.IsXsd(node) && IsSchemaFacet(node.LocalName()))
                ReadFacet(node);
        if (!pattern_.empty())
            AddPattern();
        if (!codes_.empty())
            AddCodes();
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
            ReadCode(node, value);
        else if (name == "pattern")
            CollectPattern(node, value);
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
        else
            ReadLeast(node, TrimXmlSpace(value));
    }

    void CheckApplies(const TXmlNode& node, std::initializer_list<TSchemaValueKind> kinds) const {
        if (std::find(kinds.begin(), kinds.end(), type_.Kind) == kinds.end())
            file_.Fail(node, "a faceta <" + std::string(node.LocalName()) + "> não é suportada neste tipo");
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
        CheckApplies(node, {TSchemaValueKind::String, TSchemaValueKind::Base64Binary});
        return NumberOf(node, value);
    }

    std::uint32_t DigitsOf(const TXmlNode& node, std::string_view value) const {
        CheckApplies(node, {TSchemaValueKind::Decimal, TSchemaValueKind::Integer});
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

    /// Takes the least date over unless the one in force is later.
    void ReadLeast(const TXmlNode& node, std::string_view value) {
        CheckApplies(node, {TSchemaValueKind::Date});
        if (!IsSchemaLexical(type_.Kind, value))
            file_.Fail(node, "valor inválido em <minInclusive>: \"" + std::string(value) + "\"");
        std::optional<std::string>& least = type_.Facets.MinInclusive;
        if (!least || IsSchemaDateFrom(*least, value))
            least = std::string(value);
    }

    void ReadCode(const TXmlNode& node, std::string_view code) {
        CheckApplies(node, {TSchemaValueKind::String});
        if (codes_.empty())
            firstCode_ = &node;
        codes_.push_back(code);
    }

    /// The patterns of one step are alternatives.
    void CollectPattern(const TXmlNode& node, std::string_view value) {
        CheckApplies(node, {TSchemaValueKind::String, TSchemaValueKind::Integer});
        if (!IsPatternSupported(value))
            file_.Fail(node, "<pattern> \"" + std::string(value) + "\" não é suportado");
        pattern_ += (pattern_.empty() ? "" : "|") + std::string(value);
        patternNode_ = &node;
    }

    void AddPattern() {
        auto matcher = std::make_shared<const TSchemaMatcher>(pattern_);
        if (const std::string fault = matcher->Fault(); !fault.empty())
            file_.Fail(*patternNode_, "<pattern> \"" + pattern_ + "\": " + fault);
        type_.Facets.Patterns.push_back({pattern_, std::move(matcher)});
    }

    void AddCodes() {
        type_.Facets.Codes.clear();
        type_.CodeKeys.clear();
        for (const std::string_view code : codes_) {
            // A code that the base type's list lacks could never be met.
            if (!base_.Facets.Codes.empty() && base_.Check(code))
                continue;
            type_.CodeKeys.emplace(code);
            type_.Facets.Codes.emplace_back(code);
        }
        if (type_.Facets.Codes.empty())
            file_.Fail(*firstCode_, "nenhum código da lista pertence ao tipo de base");
    }

    TSchemaSimpleType& type_;
    const TSchemaSimpleType& base_;
    const TSchemaFile& file_;
    std::vector<std::string_view> codes_;
    const TXmlNode* firstCode_ = nullptr;
    std::string pattern_;
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
