// The notation of the schemas' model and the XSD files that are written from it.
#include "schema_model/schema_model.h"
#include "schema_model/seal.h"
#include "schema_model/xsd_writer.h"
#include "support/case_file.h"
#include "support/support.h"

#include <gmock/gmock.h>

namespace conferix {
namespace {

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

TEST(SchemaModel, IsWrittenAsASchemaOrRefusedByLine) {
    const std::string head = "arquivo a%.xsd\nespaco urn:a\nversoes 1.00.00 2.00.00 3.00.00\n";
    for (const tests::TCase& test : tests::Cases("schema_model/notation.txt")) {
        std::vector<std::string> lines;
        try {
            const auto model = TSchemaModel::Parse(head + test.Inputs.front().first, "m.txt", {});
            const std::string xsd = MakeXsd(*model, test.Section);
            EXPECT_TRUE(HasIntactSeal(xsd)) << test;
            lines = Lines(xsd);
            ASSERT_GE(lines.size(), 4U);
            EXPECT_EQ(lines[1],
                      "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" xmlns:ans=\"urn:a\" "
                      "targetNamespace=\"urn:a\" elementFormDefault=\"qualified\">");
            EXPECT_EQ(lines[lines.size() - 2], "</xs:schema>");
            lines = {lines.begin() + 2, lines.end() - 2};
        } catch (const EInvalidSchemaModel& error) {
            lines = {error.what()};
        }
        EXPECT_THAT(lines, testing::ElementsAreArray(test.Expected)) << test;
    }
}

TEST(SchemaModel, FilesShareTypesAndImportOthers) {
    const TTemporaryFolder folder;
    WriteTestFile(
        folder.Path() / "a.txt",
        "arquivo a%.xsd\nespaco urn:a\nprefixo a\nimporta b b.txt\ntipos-de c.txt\nversoes 1.00.00 "
        "1.01.00\nversoes 2.00.00\naproximadas 1.01.00\nelemento r\n  b:e ?\n  x b:T\n  y T\n  z S\n"
        "simples S xs:date\n");
    WriteTestFile(folder.Path() / "b.txt",
                  "arquivo b.xsd\nespaco urn:b\nprefixo b\nelemento e T\ntipo T\n  v b:T ?\n");
    WriteTestFile(folder.Path() / "c.txt", "arquivo c.xsd\nespaco urn:a\nelemento r T\ntipo T\n  v S\n"
                                           "tipo S\n  nunca xs:string\nsimples S xs:string\n");
    WriteTestFile(folder.Path() / "LEIAME.txt", "nota");
    const auto models = LoadSchemaModels(folder.Path());
    ASSERT_EQ(models.size(), 1U) << "the others describe no version";
    EXPECT_THAT(models.front()->Versions(), testing::ElementsAre("1.00.00", "1.01.00", "2.00.00"));
    EXPECT_TRUE(models.front()->IsApproximate("1.01.00"));
    EXPECT_FALSE(models.front()->IsApproximate("2.00.00"));
    for (const std::string version : {"1.01.00", "2.00.00"}) {
        std::string xsd = MakeXsd(*models.front(), version);
        EXPECT_TRUE(HasIntactSeal(xsd));
        EXPECT_EQ(IsSealedApproximation(xsd), version == "1.01.00");
        xsd.front() = ' ';
        EXPECT_FALSE(HasIntactSeal(xsd) || IsSealedApproximation(xsd)) << "somebody changed it";
    }
    EXPECT_EQ(models.front()->FileName("2.00.00"), "a2_00_00.xsd");
    const auto lines = Lines(MakeXsd(*models.front(), "1.00.00"));
    EXPECT_THAT(
        std::vector(lines.begin(), lines.end() - 1),
        testing::ElementsAre(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
            "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" xmlns:a=\"urn:a\" xmlns:b=\"urn:b\" "
            "targetNamespace=\"urn:a\" elementFormDefault=\"qualified\">",
            "<xs:import namespace=\"urn:b\" schemaLocation=\"b.xsd\"/>", "<xs:element name=\"r\">",
            "<xs:complexType>", "<xs:sequence>", "<xs:element ref=\"b:e\" minOccurs=\"0\"/>",
            "<xs:element name=\"x\" type=\"b:T\"/>", "<xs:element name=\"y\" type=\"a:T\"/>",
            "<xs:element name=\"z\" type=\"a:S\"/>", "</xs:sequence>", "</xs:complexType>", "</xs:element>",
            "<xs:complexType name=\"T\">", "<xs:sequence>", "<xs:element name=\"v\" type=\"a:S\"/>",
            "</xs:sequence>", "</xs:complexType>",
            "<xs:simpleType name=\"S\"><xs:restriction base=\"xs:date\"></xs:restriction></xs:simpleType>",
            "</xs:schema>"));
    EXPECT_THROW(LoadSchemaModels(folder.Path() / "nada"), EFileNotRead);
}

} // namespace
} // namespace conferix
