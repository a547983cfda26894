// Schema files and what they include; places and excerpts of faults.
#include "support/case_file.h"
#include "xml/schema/schema_support.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <thread>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Repeated(std::string_view text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

std::string MessageOf(const std::filesystem::path& schema) {
    return TextOf<ESchemaInvalido>([&] { TSchemaSet::Load(schema); });
}

TEST(TSchemaLoad, DeepDeclarationsAreRefused) {
    std::string chain = "<xs:simpleType name='t0'><xs:restriction base='xs:string'/></xs:simpleType>";
    for (int i = 1; i < 5000; ++i)
        chain = "<xs:simpleType name='t" + std::to_string(i) + "'><xs:restriction base='t:t" +
                std::to_string(i - 1) + "'/></xs:simpleType>" + chain;
    for (const std::string& declarations : {"<xs:complexType name='a'>" + Repeated("<xs:sequence>", 5000) +
                                                Repeated("</xs:sequence>", 5000) + "</xs:complexType>",
                                            chain + "<xs:element name='v' type='t:t4999'/>"})
        EXPECT_EQ(TextOf<ESchemaInvalido>([&declared = declarations] { LoadDeclarations(declared); }),
                  "Esquema teste.xsd, linha 2: declarações aninhadas ou derivadas fundo demais");
}

/// Types of which each goes on from the one before it, in the order of their names.
std::string Extensions(int types, const std::string& body) {
    std::string chain = "<xs:complexType name='c100000'><xs:sequence><xs:element name='e'/></xs:sequence>"
                        "</xs:complexType>";
    for (int i = 100'001; i < 100'000 + types; ++i)
        chain += fmt::format("<xs:complexType name='c{}'><xs:complexContent><xs:extension base='t:c{}'>{}"
                             "</xs:extension></xs:complexContent></xs:complexType>",
                             i, i - 1, body);
    return chain;
}

TEST(TSchemaLoad, TypesThatRepeatOneAnotherAreBounded) {
    const std::string empty = "<xs:sequence>" + Repeated("<xs:sequence/>", 3) + "</xs:sequence>";
    EXPECT_THAT(
        Sentences(*LoadDeclarations(Extensions(20'000, empty) + "<xs:element name='r' type='t:c119999'/>"),
                  "<r xmlns='urn:t'><e/></r>"),
        IsEmpty());
    EXPECT_THAT(
        Sentences(*LoadDeclarations("<xs:element name='r'><xs:complexType><xs:choice><xs:element name='e'/>"
                                    "<xs:sequence/><xs:sequence/></xs:choice></xs:complexType></xs:element>"),
                  "<r xmlns='urn:t'/>"),
        IsEmpty());
    std::string attributes;
    for (int i = 0; i < 1001; ++i)
        attributes += "<xs:attribute name='a" + std::to_string(i) + "' type='xs:string'/>";
    const std::pair<std::string, const char*> refused[] = {
        {Extensions(4'000, "<xs:sequence><xs:element name='f'/></xs:sequence>"),
         "os tipos do esquema, juntos, são complexos demais"},
        {Extensions(2, attributes), "o tipo tem atributos demais"}};
    for (const auto& [declarations, reason] : refused)
        EXPECT_EQ(TextOf<ESchemaInvalido>([&declared = declarations] { LoadDeclarations(declared); }),
                  std::string("Esquema teste.xsd, linha 2: ") + reason);
}

TEST(TSchemaLoad, FilesAreTakenTogetherOrRefused) {
    for (const tests::TCase& c : tests::Cases("xml/schema/cases/files.txt")) {
        const TTemporaryFolder folder;
        std::filesystem::path main;
        for (const auto& [name, content] : c.Inputs)
            if (!name.starts_with('<'))
                WriteTestFile(main = folder / name, content);
        if (std::string refusal = MessageOf(main); refusal != "nothing was raised") {
            ExpectLines(c, {refusal});
            continue;
        }
        const auto set = TSchemaSet::Load(main);
        std::vector<std::string> lines = {fmt::format("{}", fmt::join(set->Files(), " "))};
        for (const auto& [document, none] : c.Inputs)
            if (document.starts_with('<'))
                std::ranges::move(Sentences(*set, document), std::back_inserter(lines));
        ExpectLines(c, lines);
    }
}

TEST(TSchemaLoad, TooManyFilesAndMissingOnesEndInAMessage) {
    const TTemporaryFolder folder;
    std::string many;
    for (int i = 0; i < 200; ++i) {
        const std::string name = "n" + std::to_string(i) + ".xsd";
        WriteTestFile(folder / name, SchemaText(""));
        many += "<xs:include schemaLocation='" + name + "'/>";
    }
    WriteTestFile(folder / "muitos.xsd", SchemaText(many));
    EXPECT_EQ(MessageOf(folder / "muitos.xsd"), "Esquema n199.xsd: o esquema reúne arquivos demais");
    const std::string missing = ": o arquivo não existe ou não pode ser aberto";
    EXPECT_EQ(MessageOf(folder / "falta.xsd"), "Esquema falta.xsd" + missing);
    EXPECT_EQ(MessageOf(folder.Path()), "Esquema " + folder.Path().filename().string() + missing);
}

TEST(TSchemaLoad, SetsAreSharedUntilAFileChanges) {
    const TTemporaryFolder folder;
    const auto path = folder / "a.xsd";
    WriteTestFile(path, SchemaText("<xs:include schemaLocation='b.xsd'/><xs:element name='a' type='t:x'/>"));
    const auto type = [](const std::string& base) {
        return SchemaText("<xs:simpleType name='x'><xs:restriction base='xs:" + base + "'/></xs:simpleType>");
    };
    WriteTestFile(folder / "b.xsd", type("integer"));
    const auto first = TSchemaSet::Load(path);
    std::vector<std::shared_ptr<const TSchemaSet>> others(4);
    std::vector<std::thread> threads;
    for (auto& other : others)
        threads.emplace_back([&other, &path] { other = TSchemaSet::Load(path); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_THAT(others, testing::Each(first));
    WriteTestFile(folder / "b.xsd", type("string"));
    const auto changed = TSchemaSet::Load(path);
    EXPECT_NE(changed, first);
    EXPECT_THAT(Sentences(*changed, "<a xmlns='urn:t'>texto</a>"), IsEmpty());
}

TEST(TSchemaFault, CarriesItsPlaceAndAnExcerpt) {
    const auto set = LoadDeclarations("<xs:element name='r'><xs:complexType><xs:sequence>"
                                      "<xs:element name='a' type='xs:integer' maxOccurs='9'/>"
                                      "</xs:sequence></xs:complexType></xs:element>");
    const auto document = Parsed("<r xmlns='urn:t'>\n  <a> 12x\n</a>\n <b t='1'>é</b><b\n t='1'>é<c/></b><b" +
                                 Repeated(" ", 200) + "/></r>");
    document->Element()->InsertChild(*document->NewTag("novo", "1"), nullptr);
    const struct {
        int Line, Column, Offset;
        std::string Excerpt;
    } expected[] = {{2, 3, 20, "12x"},
                    {4, 2, 34, "<b t='1'>é</b>"},
                    {4, 16, 48, "<b\n t='1'>"},
                    {5, 17, 67, "<b" + Repeated(" ", 118) + "... (204 caracteres)"},
                    {0, 0, 0, "<novo>"}};
    std::vector<TSchemaFault> faults = TSchemaValidator(*set).Validate(*document);
    std::rotate(faults.begin(), faults.begin() + (faults.front().Line == 0 ? 1 : 0), faults.end());
    ASSERT_EQ(faults.size(), std::size(expected));
    for (std::size_t i = 0; i < faults.size(); ++i) {
        EXPECT_EQ(faults[i].Line, expected[i].Line) << i;
        EXPECT_EQ(faults[i].LinePos, expected[i].Column) << i;
        EXPECT_EQ(faults[i].FilePos, expected[i].Offset) << i;
        EXPECT_EQ(faults[i].SrcText(), expected[i].Excerpt) << i;
    }
    EXPECT_EQ(TSchemaFault().SrcText(), "");
}

TEST(TSchemaFault, LongDisorderAndDeepNestingEnd) {
    const auto set = LoadDeclarations("<xs:element name='r'><xs:complexType><xs:sequence>"
                                      "<xs:element name='a' maxOccurs='unbounded'/>"
                                      "<xs:element name='b' maxOccurs='unbounded'/>"
                                      "</xs:sequence></xs:complexType></xs:element>");
    EXPECT_THAT(Sentences(*set, "<r xmlns='urn:t'>" + Repeated("<a/><b/>", 50'000) + "</r>"),
                ElementsAre("1: Os elementos em <r> estão fora de ordem. A ordem certa é: <a>, <b>."));
    EXPECT_THAT(Sentences(*set, "<r xmlns='urn:t'><a>" + Repeated("<x>", 200'000) +
                                    Repeated("</x>", 200'000) + "</a></r>"),
                ElementsAre("1: Falta o elemento obrigatório <b> em <r>."));
    // More causes than are told apart: each is found all the same.
    std::string named = "<r xmlns='urn:t'><a/><b/>";
    for (int i = 0; i < 2'000; ++i)
        named += "<n" + std::to_string(i) + "/>";
    EXPECT_EQ(Sentences(*set, named + "</r>").size(), 2'000U);
}

} // namespace
} // namespace conferix
