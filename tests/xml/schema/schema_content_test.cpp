#include "xml/schema/schema_support.h"

#include <gmock/gmock.h>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

/// A document of "urn:t" and the sentences that it has to give.
struct TCase {
    const char* Name;
    const char* Declarations;
    std::string Document; ///< the root's start tag gets the declaration of the default namespace
    std::vector<std::string> Expected;
};

std::string WithNamespace(std::string text) {
    return text.insert(text.find_first_of(" />", 1),
                       " xmlns=\"urn:t\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"");
}

void PrintTo(const TCase& value, std::ostream* stream) {
    *stream << value.Name;
}

class TSchemaContent : public testing::TestWithParam<TCase> {};

TEST_P(TSchemaContent, NamesEveryFault) {
    const auto set = LoadDeclarations(GetParam().Declarations);
    EXPECT_THAT(Sentences(*set, WithNamespace(GetParam().Document)), ElementsAreArray(GetParam().Expected));
}

std::string NameOf(const testing::TestParamInfo<TCase>& instance) {
    return instance.param.Name;
}

constexpr char kSequence[] = R"(
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:element name="a" type="xs:int"/>
  <xs:element name="b" type="xs:int"/>
  <xs:element name="c" type="xs:int" minOccurs="0"/>
  <xs:element name="d" type="xs:int" maxOccurs="3"/>
  <xs:element name="e" type="xs:int"/>
</xs:sequence></xs:complexType></xs:element>)";

INSTANTIATE_TEST_SUITE_P(
    Sequence, TSchemaContent,
    testing::Values(
        TCase{"Valid",
              kSequence,
              "<r><a>1</a><!-- nota --><b>1</b><?p i?><d>1</d><d>1</d><e><![CDATA[1]]></e></r>",
              {}},
        TCase{"MissingFirst",
              kSequence,
              "<r>\n<b>1</b><d>1</d><e>1</e></r>",
              {"2: Falta o elemento obrigatório <a> em <r>, antes de <b>."}},
        TCase{"MissingLast",
              kSequence,
              "<r>\n<a>1</a><b>1</b><d>1</d></r>",
              {"1: Falta o elemento obrigatório <e> em <r>."}},
        TCase{"MissingTwo",
              kSequence,
              "<r>\n<d>1</d><e>1</e></r>",
              {"2: Faltam em <r>, antes de <d>: <a> e <b>."}},
        TCase{"NothingAtAll", kSequence, "<r/>", {"1: Faltam em <r>: <a>, <b>, <d> e <e>."}},
        TCase{"DisorderIsToldOnce",
              kSequence,
              "<r>\n<e>1</e><d>1</d><c>1</c><b>1</b><a>1</a></r>",
              {"2: Os elementos em <r> estão fora de ordem. A ordem certa é: <a>, <b>, <c>, <d>, <e>."}},
        TCase{"MovedBack",
              kSequence,
              "<r><b>1</b><d>1</d><e>1</e>\n<a>1</a></r>",
              {"2: O elemento <a> está fora de ordem em <r>: deve vir antes de <b>."}},
        TCase{"MovedForward",
              kSequence,
              "<r>\n<e>1</e><a>1</a><b>1</b><d>1</d></r>",
              {"2: O elemento <e> está fora de ordem em <r>: deve vir por último."}},
        TCase{"OptionalMoved",
              kSequence,
              "<r><a>1</a>\n<c>1</c><b>1</b><d>1</d><e>1</e></r>",
              {"2: O elemento <c> está fora de ordem em <r>: deve vir antes de <d>."}},
        TCase{"DisplacedIsStillJudged",
              kSequence,
              "<r><a>1</a>\n<c>x</c><b>1</b><d>1</d><e>1</e></r>",
              {"2: O elemento <c> está fora de ordem em <r>: deve vir antes de <d>.",
               "2: O valor \"x\" de <c> não é um número inteiro válido. Esperado: só algarismos, por exemplo "
               "12."}},
        TCase{"Unknown",
              kSequence,
              "<r><a>1</a>\n<zebra><b/></zebra><b>1</b><d>1</d><e>x</e></r>",
              {"2: O elemento <zebra> não é conhecido em <r>. Esperado aqui: <b>.",
               "2: O valor \"x\" de <e> não é um número inteiro válido. Esperado: só algarismos, por exemplo "
               "12."}},
        TCase{"UnknownWhereMuchFits",
              kSequence,
              "<r><a>1</a><b>1</b>\n<zebra/><d>1</d><e>1</e></r>",
              {"2: O elemento <zebra> não é conhecido em <r>. Esperado aqui: <c> ou <d>."}},
        TCase{"UnknownAfterTheEnd",
              kSequence,
              "<r><a>1</a><b>1</b><d>1</d><e>1</e>\n<zebra/></r>",
              {"2: O elemento <zebra> não é conhecido em <r>. Nenhum outro elemento é esperado aqui."}},
        TCase{"TooManyOfThree",
              kSequence,
              "<r><a>1</a><b>1</b><d>1</d><d>1</d><d>1</d>\n<d>x</d>\n<d>1</d><e>1</e></r>",
              {"2: O elemento <d> aparece 5 vezes em <r>; o máximo é 3.",
               "2: O valor \"x\" de <d> não é um número inteiro válido. Esperado: só algarismos, por exemplo "
               "12."}},
        TCase{"TooManyOfOne",
              kSequence,
              "<r><a>1</a>\n<a>1</a>\n<a>1</a><b>1</b><d>1</d><e>1</e></r>",
              {"2: O elemento <a> aparece 3 vezes em <r>; o máximo é 1."}},
        TCase{"RepeatedFarAway",
              kSequence,
              "<r><a>1</a><b>1</b><d>1</d>\n<a>1</a><e>1</e></r>",
              {"2: O elemento <a> aparece 2 vezes em <r>; o máximo é 1."}},
        TCase{"WrongCase",
              kSequence,
              "<r>\n<A>1</A><b>1</b><d>1</d><e>1</e></r>",
              {"2: O elemento <A> em <r> tem letras maiúsculas e minúsculas trocadas: o nome certo é <a>."}},
        TCase{"SeveralFaultsAtOnce",
              kSequence,
              "<r>\n<b>1</b>\n<zebra/>\n<d>1</d>\n<c>1</c>\n<e>1</e>\n<e>1</e></r>",
              {"2: Falta o elemento obrigatório <a> em <r>, antes de <b>.",
               "3: O elemento <zebra> não é conhecido em <r>. Esperado aqui: <c> ou <d>.",
               "5: O elemento <c> está fora de ordem em <r>: deve vir antes de <d>.",
               "7: O elemento <e> aparece 2 vezes em <r>; o máximo é 1."}},
        TCase{"LooseText",
              kSequence,
              "<r><a>1</a>\n<b>1</b>\n solto <d>1</d><e>1</e><![CDATA[mais]]></r>",
              {"3: Há texto solto em <r>, onde só cabem elementos: \"solto\".",
               "3: Há texto solto em <r>, onde só cabem elementos: \"mais\"."}},
        TCase{"ElementInValue",
              kSequence,
              "<r><a>1</a><b>\n<x/></b><d>1</d><e>1</e></r>",
              {"2: O elemento <x> não pode estar em <b>, que contém apenas um valor."}},
        TCase{"WrongRoot",
              kSequence,
              "<s><a/></s>",
              {"1: A raiz <s> não é conhecida neste esquema. Esperado: <r>."}}),
    NameOf);

constexpr char kNames[] = R"(
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:element name="numeroCarteira" type="xs:string"/>
  <xs:element name="dataEmissao" type="xs:date" minOccurs="0"/>
</xs:sequence></xs:complexType></xs:element>)";

TEST(TSchemaNames, PrefixesAndNamespacesAreNamedOnce) {
    const auto set = LoadDeclarations(kNames);
    EXPECT_THAT(Sentences(*set, "<t:r xmlns:t=\"urn:t\"><t:numeroCarteria>1</t:numeroCarteria></t:r>"),
                ElementsAre("1: O elemento <numeroCarteria> não é conhecido em <r>. O nome certo parece ser "
                            "<numeroCarteira>."));
    EXPECT_THAT(
        Sentences(*set, "<t:r xmlns:t=\"urn:t\"><numeroCarteira>1</numeroCarteira></t:r>"),
        ElementsAre("1: O elemento <numeroCarteira> em <r> está no namespace errado; confira o prefixo. "
                    "O namespace certo é \"urn:t\"."));
    EXPECT_THAT(
        Sentences(*set, "<t:r xmlns:t=\"urn:t\"><x:numeroCarteira/>\n<x:dataEmissao x:a=''/></t:r>"),
        ElementsAre(
            "1: O prefixo \"x\", usado em <numeroCarteira>, não foi declarado: falta o atributo xmlns:x.",
            "2: O elemento <dataEmissao> está vazio."));
    EXPECT_THAT(
        Sentences(*set, "<t:r xmlns:t=\"urn:outro\"/>"),
        ElementsAre(
            "1: A raiz <r> está no namespace errado; confira o prefixo. O namespace certo é \"urn:t\".",
            "1: Falta o elemento obrigatório <numeroCarteira> em <r>."));
    EXPECT_THAT(Sentences(*set, "<t:r><t:a/></t:r>"),
                ElementsAre("1: O prefixo \"t\", usado em <r>, não foi declarado: falta o atributo xmlns:t.",
                            "1: Falta o elemento obrigatório <numeroCarteira> em <r>."));
    EXPECT_THAT(Sentences(*set,
                          "<t:r xmlns:t=\"urn:t\"><u:numeroCarteira xmlns:u=\"urn:t\">1</u:numeroCarteira>"
                          "<dataEmissao xmlns=\"urn:t\">2024-01-01</dataEmissao></t:r>"),
                ElementsAre());
    EXPECT_THAT(Sentences(*set, "<:r xmlns=\"urn:t\"><numeroCarteira>1</numeroCarteira></:r>"),
                testing::SizeIs(1));
}

constexpr char kNested[] = R"(
<xs:element name="guia"><xs:complexType><xs:sequence>
  <xs:element name="numero" type="xs:int"/>
  <xs:element name="itens" minOccurs="0"><xs:complexType><xs:sequence>
    <xs:element name="item" maxOccurs="unbounded"><xs:complexType><xs:sequence>
      <xs:element name="codigo" type="xs:int"/>
      <xs:element name="servico"><xs:complexType><xs:sequence>
        <xs:element name="quantidade" type="xs:int"/><xs:element name="valorTotal" type="xs:decimal"/>
      </xs:sequence></xs:complexType></xs:element>
      <xs:element name="observacao" type="xs:string" minOccurs="0"/>
    </xs:sequence></xs:complexType></xs:element>
  </xs:sequence></xs:complexType></xs:element>
</xs:sequence></xs:complexType></xs:element>)";

std::string Guia(const std::string& items) {
    return "<guia><numero>1</numero><itens>\n" + items + "</itens></guia>";
}

INSTANTIATE_TEST_SUITE_P(
    Misplaced, TSchemaContent,
    testing::Values(
        TCase{
            "WrapperMissing",
            kNested,
            Guia("<item><codigo>1</codigo>\n<quantidade>x</quantidade><valorTotal>1</valorTotal></item>"),
            {"3: Falta <servico> em volta de <quantidade> e <valorTotal> em <item>.",
             "3: O valor \"x\" de <quantidade> não é um número inteiro válido. Esperado: só algarismos, por "
             "exemplo 12."}},
        TCase{"OptionalWrapperMissing",
              kNested,
              "<guia><numero>1</numero>\n<item><codigo>1</codigo><servico/></item>"
              "<item><codigo>2</codigo><servico/></item></guia>",
              {"2: Falta <itens> em volta de <item> (2 vezes) em <guia>.",
               "2: Faltam em <servico>: <quantidade> e <valorTotal>.",
               "2: Faltam em <servico>: <quantidade> e <valorTotal>."}},
        TCase{"OneLevelTooHigh",
              kNested,
              Guia("<item><codigo>1</codigo><servico><quantidade>1</quantidade></servico>\n"
                   "<valorTotal>1,5</valorTotal></item>\n"
                   "<item><codigo>1</codigo><quantidade>1</quantidade><servico>"
                   "<valorTotal>1</valorTotal></servico></item>"),
              {"3: O elemento <valorTotal> está fora de <servico>, onde deve ficar.",
               "3: O valor \"1,5\" de <valorTotal> não é um número válido. Esperado: algarismos, com ponto "
               "antes das casas decimais, por exemplo 1234.56.",
               "4: O elemento <quantidade> está fora de <servico>, onde deve ficar."}},
        TCase{
            "MisnamedAreJudged",
            kNested,
            Guia("<Item><codigo>x</codigo><servico><quantidade>1</quantidade><valorTotal>1</valorTotal>"
                 "</servico></Item>\n"
                 "<item><codigo>1</codigo><servisso><quantidade>1</quantidade><valorTotl>x</valorTotl>"
                 "</servisso><observasao>a</observasao></item>\n"
                 "<item><codigo>1</codigo><servico><quantidade>1</quantidade><valorTotl>1</valorTotl>"
                 "<valorTotal>1</valorTotal></servico></item>"),
            {"2: O elemento <Item> em <itens> tem letras maiúsculas e minúsculas trocadas: o nome certo é "
             "<item>.",
             "2: O valor \"x\" de <codigo> não é um número inteiro válido. Esperado: só algarismos, por "
             "exemplo 12.",
             "3: O elemento <servisso> não é conhecido em <item>. O nome certo parece ser <servico>.",
             "3: O elemento <valorTotl> não é conhecido em <servisso>. O nome certo parece ser <valorTotal>.",
             "3: O valor \"x\" de <valorTotl> não é um número válido. Esperado: algarismos, com ponto antes "
             "das casas decimais, por exemplo 1234.56.",
             "3: O elemento <observasao> não é conhecido em <item>. O nome certo parece ser <observacao>.",
             "4: O elemento <valorTotl> não é conhecido em <servico>. Esperado aqui: <valorTotal>."}},
        TCase{
            "ForeignNamespaceIsToldOnce",
            kNested,
            "<guia><numero>1</numero>\n<itens xmlns='urn:u'><item><codigo>x</codigo><servico/></item>"
            "</itens></guia>",
            {"2: O elemento <itens> em <guia> está no namespace errado; confira o prefixo. O namespace certo "
             "é \"urn:t\".",
             "2: O valor \"x\" de <codigo> não é um número inteiro válido. Esperado: só algarismos, por "
             "exemplo 12.",
             "2: Faltam em <servico>: <quantidade> e <valorTotal>."}}),
    NameOf);

constexpr char kChoice[] = R"(
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:choice>
    <xs:element name="cnpj" type="xs:string"/>
    <xs:sequence><xs:element name="cpf" type="xs:string"/><xs:element name="uf" type="xs:string"/></xs:sequence>
    <xs:element name="codigo" type="xs:string" maxOccurs="2"/>
  </xs:choice>
  <xs:element name="fim" type="xs:string"/>
</xs:sequence></xs:complexType></xs:element>)";

constexpr char kGroups[] = R"(
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:sequence minOccurs="2" maxOccurs="3"><xs:element name="a"/><xs:element name="b" minOccurs="0"/></xs:sequence>
  <xs:choice minOccurs="0" maxOccurs="unbounded"><xs:element name="c"/><xs:element name="d"/></xs:choice>
  <xs:element name="e" minOccurs="2" maxOccurs="4"/>
</xs:sequence></xs:complexType></xs:element>)";

constexpr char kAll[] = R"(
<xs:element name="r"><xs:complexType><xs:all>
  <xs:element name="a" type="xs:string"/>
  <xs:element name="b" type="xs:string"/>
  <xs:element name="c" type="xs:string" minOccurs="0"/>
</xs:all></xs:complexType></xs:element>)";

INSTANTIATE_TEST_SUITE_P(
    Groups, TSchemaContent,
    testing::Values(
        TCase{"ChoiceMissing",
              kChoice,
              "<r>\n<fim/></r>",
              {"2: Falta um destes elementos: <cnpj>, <cpf> ou <codigo> em <r>, antes de <fim>."}},
        TCase{"ChoiceTwoBranches",
              kChoice,
              "<r><cnpj/>\n<codigo/><fim/></r>",
              {"2: O elemento <codigo> não pode estar em <r> junto com <cnpj>."}},
        TCase{"ChoiceBranchIncomplete",
              kChoice,
              "<r><cpf/>\n<fim/></r>",
              {"2: Falta o elemento obrigatório <uf> em <r>, antes de <fim>."}},
        TCase{"CountedInChoice",
              kChoice,
              "<r><codigo/><codigo/>\n<codigo/><fim/></r>",
              {"2: O elemento <codigo> aparece 3 vezes em <r>; o máximo é 2."}},
        TCase{"RepeatedGroups", kGroups, "<r><a/><b/><a/><a/><b/><d/><c/><c/><e/><e/><e/></r>", {}},
        TCase{"RepeatedGroupTooShort",
              kGroups,
              "<r><a/>\n<e/><e/></r>",
              {"2: Falta o elemento obrigatório <a> em <r>, antes de <e>."}},
        TCase{"TooFew",
              kGroups,
              "<r><a/><a/>\n<e/></r>",
              {"2: O elemento <e> aparece 1 vez em <r>; o mínimo é 2."}},
        TCase{"AllInAnyOrder", kAll, "<r><c/><b/><a/></r>", {}},
        TCase{"AllIncomplete",
              kAll,
              "<r><c/>\n<b/>\n<b/><x/></r>",
              {"1: Falta o elemento obrigatório <a> em <r>.",
               "3: O elemento <b> aparece 2 vezes em <r>; o máximo é 1.",
               "3: O elemento <x> não é conhecido em <r>. Esperado aqui: <a>."}}),
    NameOf);

constexpr char kTypes[] = R"(
<xs:complexType name="base"><xs:sequence><xs:element name="a" type="xs:string"/></xs:sequence>
  <xs:attribute name="versao" type="xs:int" use="required"/></xs:complexType>
<xs:complexType name="derivado"><xs:complexContent><xs:extension base="t:base">
  <xs:sequence><xs:element name="b" type="xs:string"/></xs:sequence>
  <xs:attribute name="extra" type="xs:string"/></xs:extension></xs:complexContent></xs:complexType>
<xs:complexType name="menor"><xs:complexContent><xs:restriction base="t:base">
  <xs:sequence><xs:element name="a" type="xs:string"/></xs:sequence>
  <xs:attribute name="versao" type="xs:int" use="prohibited"/></xs:restriction></xs:complexContent></xs:complexType>
<xs:complexType name="alheio"><xs:sequence/></xs:complexType>
<xs:complexType name="valor"><xs:simpleContent><xs:extension base="xs:decimal">
  <xs:attribute name="moeda" type="xs:string" fixed="BRL"/></xs:extension></xs:simpleContent></xs:complexType>
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:element name="x" type="t:base" minOccurs="0" nillable="true"/>
  <xs:element name="y" type="t:valor" minOccurs="0" nillable="true"/>
  <xs:element name="z" type="t:alheio" minOccurs="0"/>
  <xs:element name="f" type="xs:decimal" fixed="1.0" minOccurs="0"/>
  <xs:element name="m" minOccurs="0"><xs:complexType mixed="true"><xs:sequence>
    <xs:element name="n" minOccurs="0" maxOccurs="unbounded" type="xs:string"/></xs:sequence></xs:complexType></xs:element>
</xs:sequence></xs:complexType></xs:element>)";

INSTANTIATE_TEST_SUITE_P(
    Types, TSchemaContent,
    testing::Values(
        TCase{
            "XsiTypeExtends", kTypes, "<r><x versao='1' extra='k' xsi:type='derivado'><a/><b/></x></r>", {}},
        TCase{"XsiTypeRestricts", kTypes, "<r><x xsi:type='menor'><a/></x></r>", {}},
        TCase{"XsiTypeIsAsked",
              kTypes,
              "<r>\n<x versao='1' xsi:type='derivado'><a/></x></r>",
              {"2: Falta o elemento obrigatório <b> em <x>."}},
        TCase{"XsiTypeUnknown",
              kTypes,
              "<r><x versao='1' xsi:type='nenhum'><a/></x></r>",
              {"1: O tipo \"nenhum\", indicado por xsi:type em <x>, não é conhecido."}},
        TCase{"XsiTypeForeign",
              kTypes,
              "<r><x versao='1' xsi:type='alheio'><a/></x></r>",
              {"1: O tipo \"alheio\", indicado por xsi:type em <x>, não pode substituir o tipo declarado."}},
        TCase{"AttributeMissing",
              kTypes,
              "<r><x><a/></x></r>",
              {"1: Falta o atributo obrigatório \"versao\" em <x>."}},
        TCase{"AttributeUnknown",
              kTypes,
              "<r><x versao='1' extra='2'><a cor='1'/></x></r>",
              {"1: O atributo \"extra\" não é conhecido em <x>. Atributos possíveis: versao.",
               "1: O atributo \"cor\" não é conhecido em <a>."}},
        TCase{"AttributeProhibited",
              kTypes,
              "<r><x versao='1' xsi:type='menor'><a/></x></r>",
              {"1: O atributo \"versao\" não é conhecido em <x>."}},
        TCase{"AttributeValue",
              kTypes,
              "<r><x versao='um'><a/></x></r>",
              {"1: O valor \"um\" do atributo \"versao\" de <x> não é um número inteiro válido. Esperado: só "
               "algarismos, "
               "por exemplo 12."}},
        TCase{"AttributeFixed",
              kTypes,
              "<r><y moeda='USD'>1</y></r>",
              {"1: O atributo \"moeda\" de <y> deve ter o valor \"BRL\"; foi encontrado \"USD\"."}},
        TCase{"ElementFixedByValue", kTypes, "<r><f>1.00</f></r>", {}},
        TCase{"ElementFixedOther",
              kTypes,
              "<r><f>2</f></r>",
              {"1: O elemento <f> deve ter o valor \"1.0\"; foi encontrado \"2\"."}},
        TCase{"ElementFixedLeftEmpty", kTypes, "<r><f/></r>", {}},
        TCase{"Nil", kTypes, "<r><x versao='1' xsi:nil='true'/><y xsi:nil='1'/></r>", {}},
        TCase{"NilKeepsAttributes",
              kTypes,
              "<r><x xsi:nil='true'/></r>",
              {"1: Falta o atributo obrigatório \"versao\" em <x>."}},
        TCase{"NilWithContent",
              kTypes,
              "<r><y xsi:nil='true'>1</y></r>",
              {"1: O elemento <y> deve ficar vazio, pois está marcado com xsi:nil."}},
        TCase{"NilNotAllowed",
              kTypes,
              "<r><f xsi:nil='false'>1</f></r>",
              {"1: O atributo xsi:nil não é permitido em <f>."}},
        TCase{"NilNotAllowedAndEmpty",
              kTypes,
              "<r><x versao='1'><a xsi:nil='true'/></x></r>",
              {"1: O atributo xsi:nil não é permitido em <a>."}},
        TCase{"SchemaLocationIsIgnored",
              kTypes,
              "<r xsi:schemaLocation='urn:t nada.xsd' xsi:noNamespaceSchemaLocation='n'/>",
              {}},
        TCase{"OtherXsiAttribute",
              kTypes,
              "<r xsi:tipo='x'/>",
              {"1: O atributo \"xsi:tipo\" não é conhecido em <r>."}},
        TCase{"EmptyType", kTypes, "<r><z> </z></r>", {"1: O elemento <z> deve ficar vazio."}},
        TCase{"EmptyTypeComment", kTypes, "<r><z><!-- nada --></z></r>", {}},
        TCase{"EmptyTypeWithChild", kTypes, "<r><z><a/>x</z></r>", {"1: O elemento <z> deve ficar vazio."}},
        TCase{"Mixed", kTypes, "<r><m>texto <n>1</n> mais <![CDATA[ainda]]></m></r>", {}},
        TCase{"MixedKnowsItsElements",
              kTypes,
              "<r><m>texto <o>1</o></m></r>",
              {"1: O elemento <o> não é conhecido em <m>. Esperado aqui: <n>."}}),
    NameOf);

constexpr char kWildcards[] = R"(
<xs:element name="conhecido" type="xs:int"/>
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:element name="lax" minOccurs="0"><xs:complexType><xs:sequence>
    <xs:any processContents="lax" minOccurs="0" maxOccurs="unbounded"/></xs:sequence>
    <xs:anyAttribute namespace="##other" processContents="lax"/></xs:complexType></xs:element>
  <xs:element name="strict" minOccurs="0"><xs:complexType><xs:sequence>
    <xs:any minOccurs="0" maxOccurs="2"/></xs:sequence></xs:complexType></xs:element>
  <xs:element name="skip" minOccurs="0"><xs:complexType><xs:sequence>
    <xs:any processContents="skip" namespace="##targetNamespace urn:u"/></xs:sequence></xs:complexType></xs:element>
  <xs:element name="other" minOccurs="0"><xs:complexType><xs:sequence>
    <xs:any processContents="lax" namespace="##other"/></xs:sequence></xs:complexType></xs:element>
  <xs:element name="local" minOccurs="0"><xs:complexType><xs:sequence>
    <xs:any processContents="lax" namespace="##local"/></xs:sequence></xs:complexType></xs:element>
</xs:sequence></xs:complexType></xs:element>)";

INSTANTIATE_TEST_SUITE_P(
    Wildcards, TSchemaContent,
    testing::Values(
        TCase{"LaxLooksDeeper",
              kWildcards,
              "<r><lax><u:x xmlns:u='urn:u'>t<u:y><conhecido>x</conhecido></u:y></u:x></lax></r>",
              {"1: O valor \"x\" de <conhecido> não é um número inteiro válido. Esperado: só algarismos, por "
               "exemplo 12."}},
        TCase{"LaxAttributes",
              kWildcards,
              "<r><lax u:a='1' b='2' xmlns:u='urn:u'/></r>",
              {"1: O atributo \"b\" não é conhecido em <lax>."}},
        TCase{"StrictWantsDeclarations",
              kWildcards,
              "<r><strict><conhecido>1</conhecido>\n<outro/></strict></r>",
              {"2: O elemento <outro> em <strict> não está descrito em nenhum esquema."}},
        TCase{"StrictWithXsiType",
              kWildcards,
              "<r><strict><outro xmlns:xs='http://www.w3.org/2001/XMLSchema' "
              "xsi:type='xs:int'>x</outro></strict></r>",
              {"1: O valor \"x\" de <outro> não é um número inteiro válido. Esperado: só algarismos, por "
               "exemplo 12."}},
        TCase{"StrictTooMany",
              kWildcards,
              "<r><strict><conhecido>1</conhecido><conhecido>1</conhecido>\n<conhecido>1</conhecido></"
              "strict></r>",
              {"2: O elemento <conhecido> aparece 3 vezes em <strict>; o máximo é 2."}},
        TCase{"SkipJudgesNothing", kWildcards, "<r><skip><conhecido>x<z/></conhecido></skip></r>", {}},
        TCase{"SkipStillWantsPrefixes",
              kWildcards,
              "<r><skip><conhecido>\n<p:z/></conhecido></skip></r>",
              {"2: O prefixo \"p\", usado em <z>, não foi declarado: falta o atributo xmlns:p."}},
        TCase{"OtherIsNotOwn",
              kWildcards,
              "<r><other><conhecido>1</conhecido></other></r>",
              {"1: Falta um elemento de outro namespace em <other>.",
               "1: O elemento <conhecido> não é conhecido em <other>. Esperado aqui: um elemento de outro "
               "namespace."}},
        TCase{"LocalHasNone", kWildcards, "<r><local><x xmlns=''/></local></r>", {}}),
    NameOf);

TEST(TSchemaRecovery, MixedFaultsInManyItemsEachAtItsPlace) {
    const auto set = LoadDeclarations(R"(
<xs:element name="lote"><xs:complexType><xs:sequence>
  <xs:element name="numero" type="xs:int"/>
  <xs:element name="guia" maxOccurs="100"><xs:complexType><xs:sequence>
    <xs:element name="registro"><xs:simpleType><xs:restriction base="xs:string"><xs:length value="6"/></xs:restriction>
      </xs:simpleType></xs:element>
    <xs:element name="valor" type="xs:decimal"/></xs:sequence></xs:complexType></xs:element>
</xs:sequence></xs:complexType></xs:element>)");
    EXPECT_THAT(
        Sentences(*set, "<lote xmlns='urn:t'><numero>1</numero>\n<estranho/>\n"
                        "<guia><registro>12345</registro><valor>1,5</valor></guia>\n"
                        "<guia>\n<valor>1</valor></guia>\n</lote>"),
        ElementsAre(
            "2: O elemento <estranho> não é conhecido em <lote>. Esperado aqui: <guia>.",
            "3: O valor \"12345\" de <registro> tem 5 caracteres; deve ter exatamente 6.",
            "3: O valor \"1,5\" de <valor> não é um número válido. Esperado: algarismos, com ponto antes das "
            "casas decimais, por exemplo 1234.56.",
            "5: Falta o elemento obrigatório <registro> em <guia>, antes de <valor>."));
}

TEST(TSchemaRecovery, FaultsCarryTheirPlaceAndText) {
    const auto set = LoadDeclarations(kSequence);
    const auto document =
        ParseDocument("<r xmlns='urn:t'>\n  <a>12x</a><b>1</b><d>1</d>\n <e>1</e><mau t='1'>é</mau></r>");
    const auto faults = TSchemaValidator(*set).Validate(*document);
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[0].Line, 2);
    EXPECT_EQ(faults[0].LinePos, 3);
    EXPECT_EQ(faults[0].SrcText(), "12x");
    EXPECT_EQ(faults[1].Node->LocalName(), "mau");
    EXPECT_EQ(faults[1].LinePos, 10);
    EXPECT_EQ(faults[1].SrcText(), "<mau t='1'>é</mau>");
}

TEST(TSchemaRecovery, LongDisorderAndDeepNestingEnd) {
    const auto set = LoadDeclarations(R"(
<xs:element name="r"><xs:complexType><xs:sequence>
  <xs:element name="a" maxOccurs="unbounded"/><xs:element name="b" maxOccurs="unbounded"/>
</xs:sequence></xs:complexType></xs:element>)");
    std::string text = "<r xmlns='urn:t'>";
    for (int i = 0; i < 50'000; ++i)
        text += "<a/><b/>";
    const auto document = ParseDocument(text + "</r>");
    const auto faults = TSchemaValidator(*set).Validate(*document);
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults.front().Code, TSchemaFaultCode::WrongSequence);

    std::string deep = "<r xmlns='urn:t'><a>";
    constexpr int kDepth = 200'000;
    for (int i = 0; i < kDepth; ++i)
        deep += "<x>";
    for (int i = 0; i < kDepth; ++i)
        deep += "</x>";
    EXPECT_THAT(Sentences(*set, deep + "</a></r>"),
                ElementsAre("1: Falta o elemento obrigatório <b> em <r>."));
}

} // namespace
} // namespace conferix
