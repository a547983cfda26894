#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_support.h"
#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace conferix {
namespace {

constexpr int kMutants = 1500;

constexpr char kDeclarations[] = R"(
<xs:simpleType name="codigo"><xs:restriction base="xs:string"><xs:enumeration value="01"/><xs:enumeration value="02"/>
  </xs:restriction></xs:simpleType>
<xs:simpleType name="valor"><xs:restriction base="xs:decimal"><xs:totalDigits value="5"/><xs:fractionDigits value="2"/>
  </xs:restriction></xs:simpleType>
<xs:complexType name="item"><xs:sequence><xs:element name="data" type="xs:date"/>
  <xs:choice maxOccurs="unbounded"><xs:element name="tipo" type="t:codigo"/><xs:element name="texto" type="xs:string"/></xs:choice>
  <xs:element name="total" type="t:valor" minOccurs="0" nillable="true"/></xs:sequence>
  <xs:attribute name="Id" type="xs:ID" use="required"/></xs:complexType>
<xs:complexType name="maior"><xs:complexContent><xs:extension base="t:item"><xs:sequence>
  <xs:any namespace="##other" processContents="lax" minOccurs="0"/></xs:sequence></xs:extension></xs:complexContent></xs:complexType>
<xs:element name="lote"><xs:complexType><xs:sequence><xs:element name="item" type="t:item" maxOccurs="9"/>
  <xs:element name="fim"><xs:simpleType><xs:restriction base="xs:string"><xs:pattern value="[A-Z]{2}[0-9]+"/><xs:maxLength value="6"/>
  </xs:restriction></xs:simpleType></xs:element></xs:sequence></xs:complexType></xs:element>)";

constexpr char kDocument[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<t:lote xmlns:t="urn:t" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
<t:item Id="a1"><t:data>2024-03-15</t:data><t:tipo>01</t:tipo><t:texto>ação <!-- nota --></t:texto><t:total>10.50</t:total></t:item>
<t:item Id="a2" xsi:type="t:maior"><t:data>2024-03-16</t:data><t:tipo>02</t:tipo><t:total xsi:nil="true"/><u:x xmlns:u="urn:u">1</u:x></t:item>
<t:fim><![CDATA[AB123]]></t:fim></t:lote>)";

/// Damages one place or more: bytes changed, taken out, doubled, or pieces moved.
std::string Damage(std::string text, std::size_t places, std::mt19937& random) {
    static constexpr char kBytes[] = "<>&\"'/=: \n\t!-[]x1é\xff";
    for (std::size_t n = 1 + random() % places; n > 0 && !text.empty(); --n) {
        const std::size_t at = random() % text.size();
        const std::size_t length = std::min<std::size_t>(1 + random() % 40, text.size() - at);
        switch (random() % 5) {
        case 0:
            text[at] = kBytes[random() % (sizeof kBytes - 1)];
            break;
        case 1:
            text.erase(at, length);
            break;
        case 2:
            text.insert(at, text.substr(at, length));
            break;
        case 3:
            text.insert(random() % text.size(), text.substr(at, length));
            break;
        default:
            text[at] = static_cast<char>(random());
        }
    }
    return text;
}

/// Validates whatever can be parsed and makes every sentence; answers whether it was parsed.
bool Judge(const TSchemaSet& set, std::string bytes) {
    try {
        const TXmlParseResult result = TXmlParser::Parse(DecodeXml(std::move(bytes)).Text);
        if (!result.Document)
            return false;
        for (const TSchemaFault& fault : TSchemaValidator(set).Validate(*result.Document)) {
            EXPECT_FALSE(TSchemaMessages::Sentence(fault).empty());
            EXPECT_FALSE(fault.SrcText().empty());
            EXPECT_GT(fault.Line, 0);
        }
        return true;
    } catch (const EXmlEncoding&) {
        return false;
    }
}

TEST(TSchemaMutation, DamagedDocumentsEndInFaults) {
    const auto set = LoadDeclarations(kDeclarations);
    ASSERT_TRUE(Sentences(*set, kDocument).empty());
    std::mt19937 random(20240315);
    int parsed = 0;
    for (int i = 0; i < kMutants; ++i)
        parsed += Judge(*set, Damage(kDocument, 4, random)) ? 1 : 0;
    EXPECT_GT(parsed, kMutants / 20) << "some of the damage has to reach the validator";
}

TEST(TSchemaMutation, DamagedSchemasLoadOrAreRefused) {
    std::mt19937 random(19760402);
    const std::string text = SchemaText(kDeclarations);
    const TTemporaryFolder folder;
    int loaded = 0;
    int refused = 0;
    for (int i = 0; i < kMutants; ++i) {
        const auto path = folder / ("m" + std::to_string(i) + ".xsd");
        WriteTestFile(path, Damage(text, 1, random));
        try {
            const auto set = TSchemaSet::Load(path);
            ++loaded;
            EXPECT_TRUE(Judge(*set, kDocument));
        } catch (const ESchemaInvalido&) {
            ++refused;
        }
    }
    EXPECT_GT(loaded, 20);
    EXPECT_GT(refused, 200);
}

} // namespace
} // namespace conferix
