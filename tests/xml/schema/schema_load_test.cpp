#include "xml/schema/schema_support.h"

#include <gmock/gmock.h>

#include <thread>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Declarations that are refused, and what the message has to say besides the file's name.
struct TRefusal {
    const char* Name;
    const char* Declarations; ///< from line 2 of the file on
    const char* Line;
    const char* Reason;
};

void PrintTo(const TRefusal& value, std::ostream* stream) {
    *stream << value.Name;
}

class TSchemaRefusal : public testing::TestWithParam<TRefusal> {};

TEST_P(TSchemaRefusal, NamesFileLineAndConstruct) {
    try {
        LoadDeclarations(GetParam().Declarations);
        FAIL() << "loaded";
    } catch (const ESchemaInvalido& error) {
        EXPECT_THAT(error.what(), HasSubstr("teste.xsd, linha " + std::string(GetParam().Line) + ":"));
        EXPECT_THAT(error.what(), HasSubstr(GetParam().Reason));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Constructs, TSchemaRefusal,
    testing::Values(
        TRefusal{"List", "<xs:simpleType name='a'>\n<xs:list itemType='xs:int'/></xs:simpleType>", "3",
                 "<list>"},
        TRefusal{"Union", "<xs:simpleType name='a'>\n<xs:union memberTypes='xs:int'/></xs:simpleType>", "3",
                 "<union>"},
        TRefusal{"Group", "\n<xs:group name='a'/>", "3", "<group>"},
        TRefusal{"AttributeGroup", "<xs:attributeGroup name='a'/>", "2", "<attributeGroup>"},
        TRefusal{"Redefine", "<xs:redefine schemaLocation='a.xsd'/>", "2", "<redefine>"},
        TRefusal{"Key", "<xs:element name='a'>\n<xs:key name='k'/></xs:element>", "3", "<key>"},
        TRefusal{"Abstract", "<xs:element name='a' abstract='true'/>", "2", "abstract"},
        TRefusal{"Substitution", "<xs:element name='a' substitutionGroup='t:b'/>", "2", "substitutionGroup"},
        TRefusal{"ForeignElement", "<t:coisa/>", "2", "<coisa>"},
        TRefusal{"UnknownAttribute", "<xs:element name='a' tipo='b'/>", "2", "\"tipo\""},
        TRefusal{"UnknownType", "\n\n<xs:element name='a' type='t:nada'/>", "4",
                 "\"t:nada\" não foi encontrado"},
        TRefusal{"UnknownPrefix", "<xs:element name='a' type='z:nada'/>", "2", "prefixo \"z\""},
        TRefusal{"UnsupportedBuiltin", "<xs:element name='a' type='xs:QName'/>", "2", "\"QName\""},
        TRefusal{"DeclaredTwice", "<xs:element name='a'/>\n<xs:element name='a'/>", "3",
                 "declarado duas vezes"},
        TRefusal{"TypeOfTwoKinds",
                 "<xs:complexType name='a'/>\n<xs:simpleType name='a'><xs:restriction "
                 "base='xs:int'/></xs:simpleType>",
                 "3", "declarado duas vezes"},
        TRefusal{"NoName", "<xs:element/>", "2", "sem nome"},
        TRefusal{"SimpleCircle",
                 "<xs:simpleType name='a'><xs:restriction base='t:b'/></xs:simpleType>\n"
                 "<xs:simpleType name='b'><xs:restriction base='t:a'/></xs:simpleType>",
                 "3", "deriva de si mesmo"},
        TRefusal{"ComplexCircle",
                 "<xs:complexType name='a'><xs:complexContent><xs:extension "
                 "base='t:a'/></xs:complexContent></xs:complexType>",
                 "2", "deriva de si mesmo"},
        TRefusal{"Ambiguous",
                 "<xs:complexType name='a'><xs:sequence><xs:element name='b' minOccurs='0'/><xs:element "
                 "name='b'/></xs:sequence></xs:complexType>",
                 "2", "ambíguo"},
        TRefusal{"AmbiguousCount",
                 "<xs:complexType name='a'><xs:sequence><xs:element name='b' maxOccurs='5'/><xs:element "
                 "name='b'/></xs:sequence></xs:complexType>",
                 "2", "ambíguo"},
        TRefusal{"AmbiguousWildcard",
                 "<xs:complexType name='a'><xs:sequence><xs:any minOccurs='0'/><xs:element "
                 "name='b'/></xs:sequence></xs:complexType>",
                 "2", "ambíguo"},
        TRefusal{"HugeGroup",
                 "<xs:complexType name='a'><xs:sequence maxOccurs='99999'><xs:element name='b'/><xs:element "
                 "name='c'/></xs:sequence></xs:complexType>",
                 "2", "99999"},
        TRefusal{"AllInside",
                 "<xs:complexType name='a'><xs:sequence><xs:all/></xs:sequence></xs:complexType>", "2",
                 "xs:all"},
        TRefusal{"BadOccurs",
                 "<xs:complexType name='a'><xs:sequence>\n<xs:element name='b' "
                 "minOccurs='2'/></xs:sequence></xs:complexType>",
                 "3", "minOccurs"},
        TRefusal{"BadOccursText",
                 "<xs:complexType name='a'><xs:sequence>\n<xs:element name='b' "
                 "maxOccurs='muitos'/></xs:sequence></xs:complexType>",
                 "3", "\"muitos\""},
        TRefusal{"BadPattern",
                 "<xs:simpleType name='a'><xs:restriction base='xs:string'>\n<xs:pattern "
                 "value='[a'/></xs:restriction></xs:simpleType>",
                 "3", "<pattern>"},
        TRefusal{"PatternTooLarge",
                 "<xs:simpleType name='a'><xs:restriction base='xs:string'>\n<xs:pattern "
                 "value='a{5000}'/></xs:restriction></xs:simpleType>",
                 "3", "<pattern>"},
        TRefusal{"WrongFacet",
                 "<xs:simpleType name='a'><xs:restriction base='xs:date'>\n<xs:maxLength "
                 "value='3'/></xs:restriction></xs:simpleType>",
                 "3", "<maxLength>"},
        TRefusal{"BadFacetValue",
                 "<xs:simpleType name='a'><xs:restriction base='xs:string'>\n<xs:maxLength "
                 "value='-3'/></xs:restriction></xs:simpleType>",
                 "3", "\"-3\""},
        TRefusal{"BadCode",
                 "<xs:simpleType name='a'><xs:restriction base='xs:int'>\n<xs:enumeration "
                 "value='x'/></xs:restriction></xs:simpleType>",
                 "3", "<enumeration>"},
        TRefusal{"BadDefault", "<xs:element name='a' type='xs:int' default='x'/>", "2", "\"x\""},
        TRefusal{
            "RefToNothing",
            "<xs:complexType name='a'><xs:sequence>\n<xs:element ref='t:b'/></xs:sequence></xs:complexType>",
            "3", "\"t:b\""},
        TRefusal{"MissingInclude",
                 "<xs:include schemaLocation='nada.xsd'/>\n<xs:element name='a' type='t:b'/>", "3",
                 "\"t:b\""}),
    [](const auto& instance) { return std::string(instance.param.Name); });

TEST(TSchemaLoad, DeepDeclarationsAreRefused) {
    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += "<xs:sequence>";
    for (int i = 0; i < 5000; ++i)
        text += "</xs:sequence>";
    EXPECT_THROW(LoadDeclarations("<xs:complexType name='a'>" + text + "</xs:complexType>"), ESchemaInvalido);
    std::string chain = "<xs:simpleType name='t0'><xs:restriction base='xs:string'/></xs:simpleType>";
    for (int i = 1; i < 5000; ++i)
        chain = "<xs:simpleType name='t" + std::to_string(i) + "'><xs:restriction base='t:t" +
                std::to_string(i - 1) + "'/></xs:simpleType>" + chain;
    EXPECT_THROW(LoadDeclarations(chain + "<xs:element name='v' type='t:t4999'/>"), ESchemaInvalido);
    std::string empty = "<xs:element name='b' maxOccurs='0'/>";
    for (int i = 0; i < 20; ++i)
        empty = "<xs:sequence maxOccurs='900'>" + empty + "</xs:sequence>";
    EXPECT_THROW(LoadDeclarations("<xs:complexType name='a'>" + empty + "</xs:complexType>"),
                 ESchemaInvalido);
}

TEST(TSchemaLoad, DamagedFilesEndInAMessage) {
    const TTestFolder folder;
    const auto messageOf = [&](const std::filesystem::path& path) {
        try {
            TSchemaSet::Load(path);
        } catch (const ESchemaInvalido& error) {
            return std::string(error.what());
        }
        return std::string("loaded");
    };
    EXPECT_THAT(messageOf(folder.Path() / "falta.xsd"), HasSubstr("falta.xsd: o arquivo não existe"));
    EXPECT_THAT(messageOf(folder.Path()), HasSubstr("não pode ser aberto"));
    EXPECT_THAT(messageOf(folder.Write("vazio.xsd", "")), HasSubstr("vazio.xsd"));
    EXPECT_THAT(messageOf(folder.Write("torto.xsd", "<a>\n<b></a>")), HasSubstr("torto.xsd, linha 2:"));
    EXPECT_THAT(messageOf(folder.Write("bytes.xsd", "<?xml version='1.0' encoding='UTF-8'?>\n<a>\xff</a>")),
                HasSubstr("bytes.xsd, linha 2:"));
    EXPECT_THAT(messageOf(folder.Write("outro.xsd", "<html/>")), HasSubstr("<html> não é um esquema"));
    EXPECT_THAT(messageOf(folder.Write("nada.xsd", SchemaText(""))),
                HasSubstr("não declara nenhum elemento"));
    folder.Write("alheio.xsd",
                 "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:x'/>");
    EXPECT_THAT(
        messageOf(folder.Write("inclui.xsd", SchemaText("<xs:include schemaLocation='alheio.xsd'/>"))),
        HasSubstr("inclui.xsd, linha 2: o arquivo alheio.xsd é de outro namespace"));
}

TEST(TSchemaLoad, IncludesStayInTheFolderAndMayBeCircular) {
    const TTestFolder folder;
    folder.Write(
        "b.xsd",
        SchemaText("<xs:include schemaLocation='http://exemplo.com.br/x/a.xsd'/>"
                   "<xs:include schemaLocation='nunca_publicado.xsd'/>"
                   "<xs:complexType name='tb'><xs:sequence><xs:element ref='t:a' minOccurs='0'/>"
                   "<xs:element name='livre' type='t:sem' minOccurs='0'/></xs:sequence></xs:complexType>"));
    folder.Write("camaleao.xsd",
                 "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:simpleType name='sem'>"
                 "<xs:restriction base='outro'/></xs:simpleType><xs:simpleType name='outro'>"
                 "<xs:restriction base='xs:int'/></xs:simpleType></xs:schema>");
    folder.Write("u.xsd", "<!DOCTYPE schema SYSTEM 'http://exemplo.com.br/nada.dtd'>"
                          "<schema xmlns='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:u'>"
                          "<element name='u' type='string'/></schema>");
    const auto path = folder.Write("a.xsd", SchemaText("<xs:include schemaLocation='../../b.xsd'/>"
                                                       "<xs:include schemaLocation='camaleao.xsd'/>"
                                                       "<xs:import namespace='urn:u' schemaLocation='u.xsd'/>"
                                                       "<xs:element name='a' type='t:tb'/>"));
    const auto set = TSchemaSet::Load(path);
    EXPECT_THAT(set->Files(), ElementsAre("a.xsd", "b.xsd", "camaleao.xsd", "u.xsd"));
    EXPECT_THAT(Sentences(*set, "<a xmlns='urn:t'><a><livre>1</livre></a></a>"), IsEmpty());
    EXPECT_THAT(Sentences(*set, "<u xmlns='urn:u'>1</u>"), IsEmpty());
}

TEST(TSchemaLoad, UnpublishedIncludeStandsForTheFileOfTheMainVersion) {
    const TTestFolder folder;
    folder.Write("tiposV1_06_00.xsd",
                 SchemaText("<xs:simpleType name='x'><xs:restriction base='xs:int'/></xs:simpleType>"));
    folder.Write("complexosV1_06_00.xsd", SchemaText("<xs:include schemaLocation='tiposV1_05_01.xsd'/>"));
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
        "<complexType name='SignatureType'><sequence><element name='v' type='int'/></sequence>"
        "</complexType></schema>");
    const auto set = TSchemaSet::Load(folder.Write(
        "a.xsd",
        SchemaText("<xs:import namespace='http://www.w3.org/2000/09/xmldsig#' schemaLocation='ds.xsd'/>"
                   "<xs:element name='antiga' type='t:assinaturaDigital'/>"
                   "<xs:element name='nova' type='t:Signature'/>")));
    for (const std::string name : {"antiga", "nova"}) {
        EXPECT_THAT(
            Sentences(*set, "<" + name +
                                " xmlns='urn:t'><v xmlns='http://www.w3.org/2000/09/xmldsig#'>1</v></" +
                                name + ">"),
            IsEmpty());
        EXPECT_THAT(Sentences(*set, "<" + name + " xmlns='urn:t'/>"),
                    ElementsAre("1: Falta o elemento obrigatório <v> em <" + name + ">."));
    }
}

TEST(TSchemaLoad, SetsAreSharedUntilAFileChanges) {
    const TTestFolder folder;
    const auto path = folder.Write(
        "a.xsd", SchemaText("<xs:include schemaLocation='b.xsd'/><xs:element name='a' type='t:x'/>"));
    folder.Write("b.xsd",
                 SchemaText("<xs:simpleType name='x'><xs:restriction base='xs:int'/></xs:simpleType>"));
    const auto first = TSchemaSet::Load(path);
    std::vector<std::shared_ptr<const TSchemaSet>> others(4);
    std::vector<std::thread> threads;
    for (auto& other : others)
        threads.emplace_back([&other, &path] { other = TSchemaSet::Load(path); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_THAT(others, testing::Each(first));
    folder.Write("b.xsd",
                 SchemaText("<xs:simpleType name='x'><xs:restriction base='xs:string'/></xs:simpleType>"));
    const auto changed = TSchemaSet::Load(path);
    EXPECT_NE(changed, first);
    EXPECT_THAT(Sentences(*changed, "<a xmlns='urn:t'>texto</a>"), IsEmpty());
}

TEST(TSchemaLoad, TablesShowTheContentModel) {
    const auto set = LoadDeclarations(R"(
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:element name="a" type="xs:int" maxOccurs="10000"/>
  <xs:choice minOccurs="0"><xs:element name="b"/><xs:element name="c" maxOccurs="unbounded"/></xs:choice>
</xs:sequence><xs:attribute name="v" use="required"/></xs:complexType></xs:element>)");
    const TSchemaElement& root = *set->GlobalElements().front();
    EXPECT_EQ(set->GlobalElement(set->SymbolOf(set->NamespaceId("urn:t"), "r")), &root);
    const TSchemaAutomaton& automaton = root.ComplexType->Automaton;
    ASSERT_EQ(automaton.Positions.size(), 3U);
    EXPECT_EQ(automaton.Positions[0].Max, 10000U);
    EXPECT_EQ(automaton.Positions[2].Max, kSchemaUnbounded);
    EXPECT_THAT(automaton.Follow(0), ElementsAre(0));
    EXPECT_THAT(automaton.Follow(1), ElementsAre(1, 2));
    EXPECT_THAT(automaton.Accepting, ElementsAre(0, 1, 1, 1));
    EXPECT_TRUE(root.ComplexType->Attributes.front().Required);
}

} // namespace
} // namespace conferix
