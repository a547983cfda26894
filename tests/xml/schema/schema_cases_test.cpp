// The schema engine by tables of cases: what it says of documents and values, and which schemas it refuses.
#include "support/case_file.h"
#include "xml/schema/schema_support.h"
#include "xml/xml_writer.h"

#include <gmock/gmock.h>

namespace conferix {
namespace {

using testing::ElementsAreArray;

const std::string kFolder = "xml/schema/cases/";

std::string WithNamespaces(std::string text) {
    if (text.substr(0, text.find('>')).find(" xmlns") != std::string::npos)
        return text;
    return text.insert(text.find_first_of(" />", 1),
                       " xmlns=\"urn:t\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"");
}

TEST(TSchemaContent, NamesEveryFault) {
    for (const tests::TCase& test : tests::Cases(kFolder + "content.txt")) {
        const auto set =
            TSchemaSet::Load(std::filesystem::path(CONFERIX_FONTE) / "tests" / kFolder / test.Section);
        EXPECT_THAT(Sentences(*set, WithNamespaces(test.Inputs.front().first)),
                    ElementsAreArray(test.Expected))
            << test;
    }
}

TEST(TSchemaValue, TakesAndRefuses) {
    for (const tests::TCase& test : tests::Cases(kFolder + "values.txt")) {
        const std::size_t blank = std::min(test.Section.find(' '), test.Section.size());
        const auto set = LoadDeclarations(
            "<xs:element name='v'><xs:simpleType><xs:restriction base='xs:" + test.Section.substr(0, blank) +
            "'>" + test.Section.substr(blank) + "</xs:restriction></xs:simpleType></xs:element>");
        for (const auto& [quoted, none] : test.Inputs) {
            const std::string value = quoted.substr(1, quoted.size() - 2);
            std::vector<std::string> expected = test.Expected;
            for (std::string& sentence : expected) {
                const std::size_t place = sentence.find('$');
                sentence =
                    "1: " + (place == std::string::npos ? sentence : sentence.replace(place, 1, value));
            }
            EXPECT_THAT(Sentences(*set, "<v xmlns='urn:t'>" + EscapeXml(value, false) + "</v>"),
                        ElementsAreArray(expected))
                << test << "\n"
                << quoted;
        }
    }
}

TEST(TSchemaRefusal, NamesFileLineAndConstruct) {
    for (const tests::TCase& test : tests::Cases(kFolder + "refusals.txt"))
        EXPECT_EQ(TextOf<ESchemaInvalido>([&] { LoadDeclarations(test.Inputs.front().first); }),
                  "Esquema teste.xsd, " + test.Expected.front())
            << test;
}

} // namespace
} // namespace conferix
