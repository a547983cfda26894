// Schema files and what they include; places and excerpts of faults.
#include "xml/schema/schema_support.h"

#include <gmock/gmock.h>

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
    try {
        TSchemaSet::Load(schema);
    } catch (const ESchemaInvalido& error) {
        return error.what();
    }
    return "loaded";
}

TEST(TSchemaLoad, DeepDeclarationsAreRefused) {
    const TTestFolder folder;
    std::string chain = "<xs:simpleType name='t0'><xs:restriction base='xs:string'/></xs:simpleType>";
    for (int i = 1; i < 5000; ++i)
        chain = "<xs:simpleType name='t" + std::to_string(i) + "'><xs:restriction base='t:t" +
                std::to_string(i - 1) + "'/></xs:simpleType>" + chain;
    for (const std::string& declarations : {"<xs:complexType name='a'>" + Repeated("<xs:sequence>", 5000) +
                                                Repeated("</xs:sequence>", 5000) + "</xs:complexType>",
                                            chain + "<xs:element name='v' type='t:t4999'/>"})
        EXPECT_EQ(MessageOf(folder.Write("a.xsd", SchemaText(declarations))),
                  "Esquema a.xsd, linha 2: declarações aninhadas ou derivadas fundo demais");
}

TEST(TSchemaLoad, DamagedFilesEndInAMessage) {
    const TTestFolder folder;
    const std::string head = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' ";
    folder.Write("alheio.xsd", head + "targetNamespace='urn:x'/>");
    folder.Write("nenhum.xsd", head + "/>");
    std::string many;
    for (int i = 0; i < 200; ++i) {
        const std::string name = "n" + std::to_string(i) + ".xsd";
        folder.Write(name, SchemaText(""));
        many += "<xs:include schemaLocation='" + name + "'/>";
    }
    const struct {
        std::string Name, Content, Reason;
    } cases[] = {
        {"vazio.xsd", "", ", linha 1: O arquivo não contém nenhum elemento XML."},
        {"bytes.xsd", "<?xml version='1.0' encoding='UTF-8'?>\n<a>\xff</a>",
         ", linha 2: O arquivo declara a codificação UTF-8, mas contém um byte (FF) que não é texto nessa "
         "codificação. Salve o arquivo novamente em UTF-8, ou declare a codificação que ele usa (por exemplo "
         "encoding=\"ISO-8859-1\")."},
        {"outro.xsd", "\n<html/>", ", linha 2: a raiz <html> não é um esquema XML"},
        {"raiz.xsd", "<xs:element xmlns:xs='http://www.w3.org/2001/XMLSchema'/>",
         ", linha 1: a raiz <element> não é um esquema XML"},
        {"forma.xsd", head + "elementFormDefault='sim'/>", ", linha 1: valor inválido de elementFormDefault"},
        {"atributos.xsd", head + "attributeFormDefault='qualified'/>",
         ", linha 1: attributeFormDefault diferente de \"unqualified\" não é suportado"},
        {"inclui.xsd", SchemaText("<xs:include schemaLocation='alheio.xsd'/>"),
         ", linha 2: o arquivo alheio.xsd é de outro namespace (\"urn:x\")"},
        {"camaleao.xsd", SchemaText("<xs:include schemaLocation='nenhum.xsd'/>"),
         ", linha 2: o arquivo nenhum.xsd é de outro namespace (\"\")"},
        {"importa.xsd", SchemaText("<xs:import namespace='urn:y' schemaLocation='alheio.xsd'/>"),
         ", linha 2: o arquivo alheio.xsd é de outro namespace (\"urn:x\")"},
        {"muitos.xsd", SchemaText(many), ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(MessageOf(folder.Write(c.Name, c.Content)),
                  c.Reason.empty() ? "Esquema n199.xsd: o esquema reúne arquivos demais"
                                   : "Esquema " + c.Name + c.Reason);
    EXPECT_EQ(MessageOf(folder.Path() / "falta.xsd"),
              "Esquema falta.xsd: o arquivo não existe ou não pode ser aberto");
    EXPECT_EQ(MessageOf(folder.Path()), "Esquema " + folder.Path().filename().string() +
                                            ": o arquivo não existe ou não pode ser aberto");
}

TEST(TSchemaLoad, IncludesStayInTheFolderAndMayBeCircular) {
    const TTestFolder folder;
    folder.Write("b.xsd",
                 SchemaText("<xs:include schemaLocation='http://exemplo.com.br/x/a.xsd'/>"
                            "<xs:include schemaLocation=' ..\\nunca_publicado.xsd '/><xs:import/>"
                            "<xs:complexType name='tb'><xs:sequence><xs:element ref='t:a' minOccurs='0'/>"
                            "<xs:element ref='u:u' xmlns:u='urn:u' minOccurs='0'/></xs:sequence>"
                            "</xs:complexType>"));
    folder.Write("u.xsd", "<!DOCTYPE schema SYSTEM 'http://exemplo.com.br/nada.dtd'>"
                          "<schema xmlns='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:u'>"
                          "<element name='u' type='integer'/></schema>");
    const auto set = TSchemaSet::Load(
        folder.Write("a.xsd", SchemaText("<xs:include schemaLocation='../../b.xsd'/>"
                                         "<xs:import namespace='urn:u' schemaLocation='u.xsd'/>"
                                         "<xs:element name='a' type='t:tb'/>")));
    EXPECT_THAT(set->Files(), ElementsAre("a.xsd", "b.xsd", "u.xsd"));
    EXPECT_THAT(
        Sentences(*set, "<a xmlns='urn:t'><a><u xmlns='urn:u'>x</u></a></a>"),
        ElementsAre("1: O valor \"x\" de <u> não é um número inteiro válido. Esperado: só algarismos, "
                    "por exemplo 12."));
    EXPECT_THAT(Sentences(*set, "<u xmlns='urn:u'>1</u>"), IsEmpty());
}

TEST(TSchemaLoad, UnpublishedIncludeStandsForTheFileOfTheMainVersion) {
    const TTestFolder folder;
    folder.Write("tiposV1_06_00.xsd",
                 SchemaText("<xs:simpleType name='x'><xs:restriction base='xs:integer'/></xs:simpleType>"));
    folder.Write("complexosV1_06_00.xsd", SchemaText("<xs:include schemaLocation='tiposV1_05_01.xsd'/>"
                                                     "<xs:include schemaLocation='tiposV1_05_a.xsd'/>"
                                                     "<xs:include schemaLocation='tiposV1_06_00.xml'/>"));
    const auto set = TSchemaSet::Load(folder.Write(
        "principalV1_06_00.xsd",
        SchemaText("<xs:include schemaLocation='complexosV1_06_00.xsd'/><xs:element name='a' type='t:x'/>")));
    EXPECT_THAT(set->Files(),
                ElementsAre("principalV1_06_00.xsd", "complexosV1_06_00.xsd", "tiposV1_06_00.xsd"));
}

TEST(TSchemaLoad, BothNamesOfTheSignatureTypeAreKnown) {
    const TTestFolder folder;
    folder.Write(
        "ds.xsd",
        "<schema xmlns='http://www.w3.org/2001/XMLSchema' xmlns:ds='http://www.w3.org/2000/09/xmldsig#' "
        "targetNamespace='http://www.w3.org/2000/09/xmldsig#' elementFormDefault='qualified'>"
        "<complexType name='SignatureType'><sequence><element name='v' type='integer'/></sequence>"
        "<attribute name='Id' type='ID' use='required'/></complexType></schema>");
    const auto set = TSchemaSet::Load(folder.Write(
        "a.xsd",
        SchemaText("<xs:import namespace='http://www.w3.org/2000/09/xmldsig#' schemaLocation='ds.xsd'/>"
                   "<xs:element name='antiga' type='t:assinaturaDigital'/>"
                   "<xs:element name='nova' type='t:Signature'/>")));
    for (const std::string name : {"antiga", "nova"}) {
        const std::string start = "<" + name + " xmlns='urn:t'";
        EXPECT_THAT(Sentences(*set, start + " Id='a'><v xmlns='http://www.w3.org/2000/09/xmldsig#'>1</v></" +
                                        name + ">"),
                    IsEmpty());
        EXPECT_THAT(Sentences(*set, start + "/>"),
                    ElementsAre("1: Falta o atributo obrigatório \"Id\" em <" + name + ">.",
                                "1: Falta o elemento obrigatório <v> em <" + name + ">."));
    }
}

TEST(TSchemaLoad, SetsAreSharedUntilAFileChanges) {
    const TTestFolder folder;
    const auto path = folder.Write(
        "a.xsd", SchemaText("<xs:include schemaLocation='b.xsd'/><xs:element name='a' type='t:x'/>"));
    const auto type = [](const std::string& base) {
        return SchemaText("<xs:simpleType name='x'><xs:restriction base='xs:" + base + "'/></xs:simpleType>");
    };
    folder.Write("b.xsd", type("integer"));
    const auto first = TSchemaSet::Load(path);
    std::vector<std::shared_ptr<const TSchemaSet>> others(4);
    std::vector<std::thread> threads;
    for (auto& other : others)
        threads.emplace_back([&other, &path] { other = TSchemaSet::Load(path); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_THAT(others, testing::Each(first));
    folder.Write("b.xsd", type("string"));
    const auto changed = TSchemaSet::Load(path);
    EXPECT_NE(changed, first);
    EXPECT_THAT(Sentences(*changed, "<a xmlns='urn:t'>texto</a>"), IsEmpty());
}

TEST(TSchemaFault, CarriesItsPlaceAndAnExcerpt) {
    const auto set = LoadDeclarations("<xs:element name='r'><xs:complexType><xs:sequence>"
                                      "<xs:element name='a' type='xs:integer' maxOccurs='9'/>"
                                      "</xs:sequence></xs:complexType></xs:element>");
    const auto document =
        ParseDocument("<r xmlns='urn:t'>\n  <a> 12x\n</a>\n <b t='1'>é</b><b\n t='1'>é<c/></b><b" +
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
}

} // namespace
} // namespace conferix
