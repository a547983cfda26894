#include "xml/schema/schema_pattern.h"
#include "xml/schema/schema_support.h"

#include <gmock/gmock.h>

namespace conferix {
namespace {

using testing::ElementsAre;

/// A simple type, the values that it takes, and those that it refuses with the code of the fault.
struct TTypeCase {
    const char* Name;
    const char* Base;
    const char* Facets;
    std::vector<const char*> Good;
    std::vector<std::pair<const char*, TSchemaFaultCode>> Bad;
};

void PrintTo(const TTypeCase& value, std::ostream* stream) {
    *stream << value.Name;
}

class TSchemaValue : public testing::TestWithParam<TTypeCase> {};

TEST_P(TSchemaValue, TakesAndRefuses) {
    const TTypeCase& type = GetParam();
    const auto set = LoadDeclarations(
        "<xs:element name='v'><xs:simpleType><xs:restriction base='xs:" + std::string(type.Base) + "'>" +
        type.Facets + "</xs:restriction></xs:simpleType></xs:element>");
    const TSchemaSimpleType& compiled = *set->GlobalElements().front()->SimpleType;
    for (const char* value : type.Good)
        EXPECT_FALSE(compiled.Check(value)) << '"' << value << '"';
    for (const auto& [value, code] : type.Bad) {
        const auto fault = compiled.Check(value);
        ASSERT_TRUE(fault) << '"' << value << '"';
        EXPECT_EQ(fault->Code, code) << '"' << value << '"';
    }
}

using enum TSchemaFaultCode;

INSTANTIATE_TEST_SUITE_P(
    Types, TSchemaValue,
    testing::Values(
        TTypeCase{"String", "string", "", {"", " ", "qualquer\ncoisa"}, {}},
        TTypeCase{"Lengths",
                  "string",
                  "<xs:minLength value='2'/><xs:maxLength value='3'/>",
                  {"ab", "çãé", "   "},
                  {{"", EmptyValue}, {"a", TooShort}, {"éçãõ", TooLong}}},
        TTypeCase{
            "Length", "string", "<xs:length value='2'/>", {"€€"}, {{"€", WrongLength}, {"abc", WrongLength}}},
        TTypeCase{"Preserve",
                  "string",
                  "<xs:enumeration value='a b'/><xs:enumeration value=' c'/>",
                  {"a b", " c"},
                  {{"a  b", NotInList}, {"c", NotInList}, {"a\tb", NotInList}, {"", EmptyValue}}},
        TTypeCase{"Replace",
                  "normalizedString",
                  "<xs:enumeration value='a b'/>",
                  {"a b", "a\tb", "a\nb"},
                  {{" a b", NotInList}}},
        TTypeCase{"Collapse",
                  "token",
                  "<xs:enumeration value=' a  b '/>",
                  {"a b", "\n a \t b "},
                  {{"ab", NotInList}}},
        TTypeCase{"WhiteSpaceFacet",
                  "string",
                  "<xs:whiteSpace value='collapse'/><xs:maxLength value='1'/>",
                  {" a "},
                  {{"ab", TooLong}}},
        TTypeCase{"Decimal",
                  "decimal",
                  "",
                  {"1", "+1.", "-.5", " 0010.500 ", "0"},
                  {{"1,5", NotDecimal},
                   {"1e3", NotDecimal},
                   {".", NotDecimal},
                   {"", EmptyValue},
                   {"1 2", NotDecimal},
                   {"--1", NotDecimal}}},
        TTypeCase{"Digits",
                  "decimal",
                  "<xs:totalDigits value='3'/><xs:fractionDigits value='2'/>",
                  {"9.99", "009.990", "-1.5", "100", ".05"},
                  {{"1000", TooManyDigits},
                   {"10.55", TooManyDigits},
                   {"1.001", TooManyDecimals},
                   {"1234.567", TooManyDecimals}}},
        TTypeCase{"DigitsOfSmallValues",
                  "decimal",
                  "<xs:totalDigits value='2'/>",
                  {"0.05", "0.50"},
                  {{"0.005", TooManyDigits}}},
        TTypeCase{"DecimalList",
                  "decimal",
                  "<xs:enumeration value='1.0'/><xs:enumeration value='2'/>",
                  {"1", "1.00", "+02"},
                  {{"3", NotInList}}},
        TTypeCase{"DecimalBounds",
                  "decimal",
                  "<xs:minExclusive value='-1'/><xs:maxInclusive value='10.50'/>",
                  {"-0.99", "10.5", "0"},
                  {{"-1.0", BelowMinimum},
                   {"-12", BelowMinimum},
                   {"10.51", AboveMaximum},
                   {"99999999999999999999", AboveMaximum}}},
        TTypeCase{"Integer",
                  "integer",
                  "",
                  {"+7", "-007", "123456789012345678901234567890"},
                  {{"1.0", NotInteger}, {"1.", NotInteger}}},
        TTypeCase{
            "Byte", "byte", "", {"-128", "127", "+0127"}, {{"128", AboveMaximum}, {"-129", BelowMinimum}}},
        TTypeCase{"UnsignedLong",
                  "unsignedLong",
                  "",
                  {"18446744073709551615", "-0"},
                  {{"18446744073709551616", AboveMaximum}, {"-1", BelowMinimum}}},
        TTypeCase{"Positive",
                  "positiveInteger",
                  "<xs:totalDigits value='2'/>",
                  {"1", "0099"},
                  {{"0", BelowMinimum}, {"100", TooManyDigits}}},
        TTypeCase{"Boolean",
                  "boolean",
                  "",
                  {"true", "0", " 1 "},
                  {{"TRUE", NotBoolean}, {"sim", NotBoolean}, {"", EmptyValue}}},
        TTypeCase{"Date",
                  "date",
                  "",
                  {"2024-02-29", "2000-02-29", "-0001-01-01", "12024-01-01", "2024-01-01Z",
                   "2024-01-01-03:00", " 2024-01-01 "},
                  {{"2023-02-29", NotDate},
                   {"1900-02-29", NotDate},
                   {"0000-01-01", NotDate},
                   {"24-01-01", NotDate},
                   {"2024-1-1", NotDate},
                   {"2024-13-01", NotDate},
                   {"01/02/2024", NotDate},
                   {"2024-01-01+15:00", NotDate},
                   {"02024-01-01", NotDate},
                   {"2024-01-01T00:00:00", NotDate}}},
        TTypeCase{
            "DateBounds",
            "date",
            "<xs:minInclusive value='1850-01-01'/><xs:maxExclusive value='2100-01-01'/>",
            {"1850-01-01", "2099-12-31"},
            {{"1849-12-31", BelowMinimum}, {"2100-01-01", AboveMaximum}, {"1850-01-01Z", BelowMinimum}}},
        TTypeCase{"Time",
                  "time",
                  "",
                  {"00:00:00", "24:00:00", "23:59:59.999", "10:00:00-03:00"},
                  {{"24:00:01", NotTime},
                   {"10:60:00", NotTime},
                   {"10:00", NotTime},
                   {"1:00:00", NotTime},
                   {"10:00:00.", NotTime}}},
        TTypeCase{"TimeBounds",
                  "time",
                  "<xs:maxInclusive value='12:00:00'/>",
                  {"12:00:00.000"},
                  {{"12:00:00.1", AboveMaximum}}},
        TTypeCase{"DateTime",
                  "dateTime",
                  "<xs:enumeration value='2024-01-01T12:00:00Z'/>",
                  {"2024-01-01T09:00:00-03:00", "2024-01-01T12:00:00.00Z"},
                  {{"2024-01-01T12:00:00", NotInList},
                   {"2024-01-01 12:00:00", NotDateTime},
                   {"2024-01-01", NotDateTime}}},
        TTypeCase{"Double",
                  "double",
                  "<xs:maxInclusive value='1E3'/>",
                  {"1.5e2", "-INF", ".5", "1000"},
                  {{"INF", AboveMaximum},
                   {"NaN", AboveMaximum},
                   {"1e", NotFloat},
                   {"inf", NotFloat},
                   {"1001", AboveMaximum}}},
        TTypeCase{"Base64",
                  "base64Binary",
                  "<xs:maxLength value='4'/>",
                  {"VElTUw==", "VEl T Uw==", ""},
                  {{"VElTUw=", NotBase64},
                   {"VElTUx==", NotBase64},
                   {"VE.TUw==", NotBase64},
                   {"Q29uZmVyaXg=", TooLong}}},
        TTypeCase{"Hex",
                  "hexBinary",
                  "<xs:length value='2'/>",
                  {"0aFF"},
                  {{"0aF", NotHex}, {"0aFg", NotHex}, {"0a", WrongLength}}},
        TTypeCase{"Uri",
                  "anyURI",
                  "",
                  {"http://x.br/a?b#c", "a b", "", "#x"},
                  {{"%zz", NotUri}, {"a#b#c", NotUri}}},
        TTypeCase{"Name",
                  "NCName",
                  "",
                  {"a", "_a-1.b", "é1"},
                  {{"1a", NotName}, {"a:b", NotName}, {"a b", NotName}, {"", EmptyValue}, {"-a", NotName}}},
        TTypeCase{"Pattern",
                  "string",
                  "<xs:pattern value='[0-9]{4}[0-9]{2}'/>",
                  {"202401"},
                  {{"20240", WrongPattern},
                   {"2024011", WrongPattern},
                   {"", EmptyValue},
                   {"x202401", WrongPattern}}},
        TTypeCase{"PatternsAreAlternatives",
                  "string",
                  "<xs:pattern value='a|b'/><xs:pattern value='c+'/>",
                  {"a", "b", "ccc"},
                  {{"ab", WrongPattern}, {"ac", WrongPattern}}},
        TTypeCase{"PatternCharacters",
                  "string",
                  "<xs:pattern value='^[$]?\\d\\.[\\-a^]*\\s.'/>",
                  {"^$1.-^a é", "^5.\tx"},
                  {{"$1. x", WrongPattern}, {"^1.a", WrongPattern}}},
        TTypeCase{"PatternWord",
                  "string",
                  "<xs:pattern value='\\w+\\p{Lu}\\W'/>",
                  {"caçaÉ!", "aB "},
                  {{"ab!", WrongPattern}}},
        TTypeCase{"MostSpecificOnly",
                  "string",
                  "<xs:pattern value='[0-9]+'/><xs:maxLength value='2'/>",
                  {"12"},
                  {{"abc", TooLong}, {"ab", WrongPattern}}}),
    [](const auto& instance) { return std::string(instance.param.Name); });

TEST(TSchemaValueDerivation, FacetsOfAllStepsHold) {
    const auto set = LoadDeclarations(R"(
<xs:simpleType name="curto"><xs:restriction base="xs:string"><xs:maxLength value="5"/><xs:pattern value="[a-z]*"/>
  </xs:restriction></xs:simpleType>
<xs:simpleType name="dois"><xs:restriction base="t:curto"><xs:minLength value="2"/><xs:maxLength value="9"/>
  <xs:pattern value=".*z"/></xs:restriction></xs:simpleType>
<xs:simpleType name="lista"><xs:restriction base="t:dois"><xs:enumeration value="abz"/><xs:enumeration value="z"/>
  </xs:restriction></xs:simpleType>
<xs:element name="v" type="t:lista"/>)");
    const std::uint32_t ns = set->NamespaceId("urn:t");
    const TSchemaSimpleType& two = *set->FindSimpleType(ns, "dois");
    EXPECT_FALSE(two.Check("az"));
    EXPECT_EQ(two.Check("aaaaaz")->Code, TooLong);
    EXPECT_EQ(two.Check("a9z")->Code, WrongPattern);
    EXPECT_EQ(two.Check("aza")->Code, WrongPattern);
    const TSchemaSimpleType& list = *set->FindSimpleType(ns, "lista");
    EXPECT_FALSE(list.Check("abz"));
    EXPECT_EQ(list.Check("z")->Code, TooShort);
    EXPECT_TRUE(list.DerivesFrom(*set->FindSimpleType(ns, "curto")));
    EXPECT_TRUE(list.DerivesFrom(
        *set->FindSimpleType(set->NamespaceId("http://www.w3.org/2001/XMLSchema"), "string")));
    EXPECT_FALSE(two.DerivesFrom(list));
}

TEST(TSchemaValueSentences, SayWhatWasFoundAndWhatIsExpected) {
    std::string codes;
    for (int i = 1; i <= 12; ++i)
        codes += "<xs:enumeration value='" + std::to_string(i) + "'/>";
    const auto set = LoadDeclarations(R"(
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:element name="codigo" minOccurs="0"><xs:simpleType><xs:restriction base="xs:string">)" +
                                      codes + R"(</xs:restriction></xs:simpleType></xs:element>
  <xs:element name="nome" minOccurs="0"><xs:simpleType><xs:restriction base="xs:string"><xs:minLength value="2"/><xs:maxLength value="70"/></xs:restriction></xs:simpleType></xs:element>
  <xs:element name="valor" minOccurs="0"><xs:simpleType><xs:restriction base="xs:decimal"><xs:totalDigits value="5"/><xs:fractionDigits value="1"/><xs:minInclusive value="0"/></xs:restriction></xs:simpleType></xs:element>
  <xs:element name="id" type="xs:ID" minOccurs="0" maxOccurs="2"/>
</xs:sequence></xs:complexType></xs:element>)");
    const auto sentences = [&](const std::string& inner) {
        return Sentences(*set, "<r xmlns='urn:t'>" + inner + "</r>");
    };
    EXPECT_THAT(
        sentences("<codigo>13</codigo><nome>x</nome><valor>1.25</valor>"),
        ElementsAre("1: O valor \"13\" de <codigo> não está na lista de códigos permitidos (12 códigos): "
                    "1, 2, 3, 4, 5, 6, 7, 8, 9, 10...",
                    "1: O valor \"x\" de <nome> é curto demais: tem 1 caractere; o mínimo é 2.",
                    "1: O valor \"1.25\" de <valor> tem 2 casas decimais; o máximo é 1."));
    std::string lengthy;
    std::string shown;
    for (int i = 0; i < 121; ++i) {
        lengthy += "é";
        shown += i < 120 ? "é" : "";
    }
    EXPECT_THAT(sentences("<codigo/><nome>" + lengthy + "</nome><valor>-1</valor>"),
                ElementsAre("1: O elemento <codigo> está vazio.",
                            "1: O valor \"" + shown +
                                "...\" (121 caracteres) de <nome> é longo demais: tem 121 caracteres; o "
                                "máximo é 70.",
                            "1: O valor \"-1\" de <valor> é menor do que o mínimo, 0."));
    EXPECT_THAT(
        sentences("<codigo>012</codigo><nome> x</nome><valor>\n1.5 </valor>"),
        ElementsAre(
            "1: O valor \"012\" de <codigo> não está na lista de códigos permitidos: escreva \"12\"."));
    EXPECT_THAT(sentences("<codigo> 12\n</codigo>"),
                ElementsAre("1: O valor de <codigo> tem espaço ou quebra de linha antes ou depois: escreva "
                            "\"12\"."));
    EXPECT_THAT(sentences("<valor>123456</valor><id>a</id><id> a </id>"),
                ElementsAre("1: O valor \"123456\" de <valor> tem 6 dígitos; o máximo é 5.",
                            "1: O identificador \"a\" aparece mais de uma vez no arquivo."));
}

TEST(TSchemaPattern, RefusesWhatItCannotTranslate) {
    for (const char* pattern : {"[a-z-[aeiou]]", "\\i\\c*", "(a", "a)", "*a", "a**", "a{2", "a{x}", "[a",
                                "[]", "\\1", "\\p{IsBasicLatin}", "(?:a)", "a\\", "[\\w]"})
        EXPECT_THROW(TranslateSchemaPattern(pattern), ESchemaPattern) << pattern;
}

} // namespace
} // namespace conferix
