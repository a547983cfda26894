// Faulty files as systems write them, through the commands: what the user reads, and what correcting
// everything does to the bill. With the schemas that come with the program.
#include "app/cli/cli.h"
#include "support/suporte.h"
#include "xml/xml_document.h"
#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <random>
#include <set>
#include <sstream>

namespace conferix {
namespace {

using nlohmann::json;
using testing::ElementsAreArray;

struct TEdit {
    std::string From;
    std::string To;
    int Times = 1;
};

class Faltas : public testing::Test {
  protected:
    void SetUp() override { setenv("CONFERIX_DADOS", (folder_.Path() / "dados").c_str(), 1); }
    void TearDown() override { unsetenv("CONFERIX_DADOS"); }

    std::string File() const { return (folder_.Path() / "arquivo.xml").string(); }

    static std::string Edited(const std::string& example, const std::vector<TEdit>& edits) {
        std::string bytes = ReadTestFile(Example(example));
        for (const TEdit& edit : edits) {
            std::size_t at = 0;
            for (int i = 0; i < edit.Times; ++i) {
                at = bytes.find(edit.From, at);
                if (at == std::string::npos) {
                    ADD_FAILURE() << "não há " << edit.From << " em " << example;
                    return bytes;
                }
                bytes.replace(at, edit.From.size(), edit.To);
                at += edit.To.size();
            }
        }
        return bytes;
    }

    json Run(std::vector<std::string> words) const {
        std::istringstream in;
        std::ostringstream out;
        std::ostringstream err;
        words.insert(words.end(), {File(), "--formato", "json", "--terminologia", CONFERIX_TUSS_DB});
        RunCli(words, {in, out, err});
        return json::parse(out.str());
    }
    json Validate() const { return Run({"validar"})[0]; }

    TTemporaryFolder folder_;
};

struct TFrases {
    const char* Name;
    const char* Example;
    std::vector<TEdit> Edits;
    std::vector<std::string> Expected; ///< what the schema rule says, with line and guide
};

class FrasesDoSchema : public Faltas, public testing::WithParamInterface<TFrases> {};

TEST_P(FrasesDoSchema, SaoAsQueOUsuarioEntende) {
    WriteTestFile(File(), Edited(GetParam().Example, GetParam().Edits));
    std::vector<std::string> sentences;
    const json report = Validate();
    for (const json& message : report["mensagens"])
        if (message["validacao"].get<std::string>().ends_with(".schema"))
            sentences.push_back(message["texto"]);
    EXPECT_THAT(sentences, ElementsAreArray(GetParam().Expected));
}

constexpr char kSadt2[] = "spsadt-2.02.03-valido.xml";
constexpr char kInternacao[] = "internacao-3.02.00-valido.xml";
constexpr char kSadt3[] = "spsadt-3.05.00-valido.xml";
constexpr char kConsulta4[] = "consulta-4.01.00-valido.xml";
constexpr char kMonitoramento[] = "monitoramento-1.06.00-valido.xml";

INSTANTIATE_TEST_SUITE_P(
    Versoes, FrasesDoSchema,
    testing::Values(
        TFrases{"GuiaEmMinusculas",
                kSadt3,
                {{"ans:guiaSP-SADT>", "ans:guiasp-sadt>", 2},
                 {"<ans:valorUnitario>18.40", "<ans:valorUnitario>18,40"}},
                {"[Linha: 27] [Guia: 20000001] O elemento <guiasp-sadt> em <guiasTISS> tem letras maiúsculas "
                 "e minúsculas trocadas: o nome certo é <guiaSP-SADT>.",
                 "[Linha: 84] [Guia: 20000001] O valor \"18,40\" de <valorUnitario> não é um número válido. "
                 "Esperado: algarismos, com ponto antes das casas decimais, por exemplo 1234.56."}},
        TFrases{"GrupoComErroDeDigitacao",
                kSadt3,
                {{"ans:procedimentosExecutados>", "ans:procedimentoExecutados>", 2},
                 {"<ans:valorTotal>18.40", "<ans:valorTotal>"}},
                {"[Linha: 73] [Guia: 20000001] O elemento <procedimentoExecutados> não é conhecido em "
                 "<guiaSP-SADT>. O nome certo parece ser <procedimentosExecutados>.",
                 "[Linha: 85] [Guia: 20000001] O elemento <valorTotal> está vazio."}},
        TFrases{"MesmoErroDeDigitacaoVariasVezes",
                kSadt3,
                {{"valorUnitario>", "valorUnitarioo>", 4}},
                {"[Linha: 84] [Guia: 20000001] O elemento <valorUnitarioo> não é conhecido em "
                 "<procedimentoExecutado>. O nome certo parece ser <valorUnitario>.",
                 "[Linha: 97] [Guia: 20000001] O elemento <valorUnitarioo> não é conhecido em "
                 "<procedimentoExecutado>. O nome certo parece ser <valorUnitario>."}},
        TFrases{"RenomeadoEntreVersoes",
                kSadt3,
                {{"ans:Padrao>", "ans:versaoPadrao>", 2}},
                {"[Linha: 21] No lugar de <versaoPadrao> em <cabecalho> deve estar <Padrao>, o nome nesta "
                 "versão."}},
        TFrases{
            "DeixouDeExistir",
            kConsulta4,
            {{"<ans:atendimentoRN>N</ans:atendimentoRN>",
              "<ans:atendimentoRN>N</ans:atendimentoRN><ans:nomeBeneficiario>X</ans:nomeBeneficiario>"}},
            {"[Linha: 35] [Guia: 10000001] Remova <nomeBeneficiario>: deixou de existir na versão 4.00.00."}},
        TFrases{"AindaNaoExiste",
                kSadt3,
                {{"</ans:tipoAtendimento>",
                  "</ans:tipoAtendimento><ans:regimeAtendimento>01</ans:regimeAtendimento>"}},
                {"[Linha: 70] [Guia: 20000001] O elemento <regimeAtendimento> não é conhecido em "
                 "<dadosAtendimento>: só existe a partir da versão 4.00.00."}},
        TFrases{"FaltaOElementoEmVolta",
                kSadt3,
                {{"<ans:procedimento>", ""}, {"</ans:procedimento>", ""}},
                {"[Linha: 78] [Guia: 20000001] Falta <procedimento> em volta de <codigoTabela> ... "
                 "<descricaoProcedimento> em <procedimentoExecutado>."}},
        TFrases{"ForaDoElementoVizinho",
                kConsulta4,
                {{"<ans:valorProcedimento>", "</ans:procedimento><ans:valorProcedimento>"},
                 {"</ans:valorProcedimento>\n            </ans:procedimento>", "</ans:valorProcedimento>"}},
                {"[Linha: 56] [Guia: 10000001] O elemento <valorProcedimento> está fora de <procedimento>, "
                 "onde deve ficar."}},
        TFrases{"OrdemTrocada",
                kSadt3,
                {{"<ans:UF>35</ans:UF>\n              <ans:CBOS>225125</ans:CBOS>",
                  "<ans:CBOS>225125</ans:CBOS><ans:UF>35</ans:UF>"}},
                {"[Linha: 53] [Guia: 20000001] O elemento <UF> está fora de ordem em "
                 "<profissionalSolicitante>: deve vir antes de <CBOS>."}},
        TFrases{"FaltamVarios",
                kSadt3,
                {{"<ans:numeroConselhoProfissional>999901</ans:numeroConselhoProfissional>\n", ""},
                 {"<ans:UF>35</ans:UF>\n", ""}},
                {"[Linha: 52] [Guia: 20000001] Faltam em <profissionalSolicitante>, antes de <CBOS>: "
                 "<numeroConselhoProfissional> e <UF>."}},
        TFrases{"CodigosEPadroes",
                kSadt3,
                {{"<ans:registroANS>999999</ans:registroANS>", "<ans:registroANS>9999-9</ans:registroANS>"},
                 {"<ans:cpfContratado>52998224725", "<ans:cpfContratado>529.982.247-25"},
                 {"<ans:conselhoProfissional>06", "<ans:conselhoProfissional>6"},
                 {"<ans:UF>35", "<ans:UF>35 "},
                 {"<ans:CBOS>225125", "<ans:CBOS>225126"}},
                {"[Linha: 19] O valor \"9999-9\" de <registroANS> deve ter 6 algarismos.",
                 "[Linha: 46] [Guia: 20000001] O valor \"529.982.247-25\" de <cpfContratado> deve ter 11 "
                 "algarismos, sem pontos ou hífen.",
                 "[Linha: 51] [Guia: 20000001] O valor \"6\" de <conselhoProfissional> não está na lista de "
                 "códigos permitidos: escreva \"06\".",
                 "[Linha: 53] [Guia: 20000001] O valor de <UF> tem espaço ou quebra de linha antes ou "
                 "depois: escreva \"35\".",
                 "[Linha: 54] [Guia: 20000001] O valor \"225126\" de <CBOS> não está na lista de códigos "
                 "permitidos (145 códigos). Parecidos: 225120, 225121, 225124, 225125, 225127."}},
        TFrases{"AtributosENil",
                kSadt3,
                {{"<ans:UF>35</", "<ans:UF xsi:nil='true' xsi:tipo='1'></"}},
                {"[Linha: 53] [Guia: 20000001] O atributo xsi:nil não é permitido em <UF>.",
                 "[Linha: 53] [Guia: 20000001] O atributo \"xsi:tipo\" não é conhecido em <UF>."}},
        TFrases{"TextoSolto",
                kSadt3,
                {{"</ans:UF>", "</ans:UF>um"}, {"</ans:CBOS>", "</ans:CBOS>\ndois"}},
                {"[Linha: 53] [Guia: 20000001] Há texto solto em <profissionalSolicitante>, onde só cabem "
                 "elementos: \"um\".",
                 "[Linha: 55] [Guia: 20000001] Há texto solto em <profissionalSolicitante>, onde só cabem "
                 "elementos: \"dois\"."}},
        TFrases{
            "EstruturaDeTodoTipo",
            kSadt3,
            {{"<ans:sequencialTransacao>202</ans:sequencialTransacao>",
              "<ans:sequencialTransacao>202</ans:sequencialTransacao><ans:sequencialTransacao>203</"
              "ans:sequencialTransacao>"},
             {"<ans:codigoPrestadorNaOperadora>123456</ans:codigoPrestadorNaOperadora>", ""},
             {"<ans:destino>\n      <ans:registroANS>999999</ans:registroANS>",
              "<ans:destino>\n      <x:registroANS>999999</x:registroANS>"},
             {"<ans:senha>SENHA0201</ans:senha>", "<senha>SENHA0201</senha>"},
             {"<ans:cpfContratado>52998224725</ans:cpfContratado>",
              "<ans:cpfContratado>52998224725</ans:cpfContratado><ans:cnpjContratado>11222333000181</"
              "ans:cnpjContratado>"},
             {"<ans:CNES>9999999</", "<ans:CNES><ans:numero/></"},
             {"<ans:indicacaoClinica>EXAMES DE ROTINA</ans:indicacaoClinica>",
              "<ans:prioridade>1</ans:prioridade>"},
             {"</ans:epilogo>", "</ans:epilogo><ans:fim/>"}},
            {"[Linha: 9] O elemento <sequencialTransacao> aparece 2 vezes em <identificacaoTransacao>; o "
             "máximo é 1.",
             "[Linha: 14] Falta um destes elementos: <CNPJ>, <CPF> ou <codigoPrestadorNaOperadora> em "
             "<identificacaoPrestador>.",
             "[Linha: 19] O prefixo \"x\", usado em <registroANS>, não foi declarado: falta o atributo "
             "xmlns:x.",
             "[Linha: 35] [Guia: 20000001] O elemento <senha> em <dadosAutorizacao> está no namespace "
             "errado; confira o prefixo. O namespace certo é \"http://www.ans.gov.br/padroes/tiss/schemas\".",
             "[Linha: 46] [Guia: 20000001] O elemento <cnpjContratado> não pode estar em "
             "<contratadoSolicitante> junto com <cpfContratado>.",
             "[Linha: 60] [Guia: 20000001] O elemento <prioridade> não é conhecido em <dadosSolicitacao>. "
             "Esperado aqui: <indicacaoClinica>.",
             "[Linha: 67] [Guia: 20000001] O elemento <numero> não pode estar em <CNES>, que contém apenas "
             "um valor.",
             "[Linha: 290] O elemento <fim> não é conhecido em <mensagemTISS>. Esperado aqui: <Signature>."}},
        TFrases{"ValoresDeTodoTipo",
                kSadt3,
                {{"<ans:dataRegistroTransacao>2021-10-04", "<ans:dataRegistroTransacao>2021-02-30"},
                 {"<ans:horaRegistroTransacao>16:40:10", "<ans:horaRegistroTransacao>16h40"},
                 {"<ans:numeroLote>2021100002", "<ans:numeroLote>2021100002345"},
                 {"<ans:nomeBeneficiario>BENEFICIARIO DE TESTE UM", "<ans:nomeBeneficiario>"},
                 {"<ans:CNES>9999999", "<ans:CNES>99999"},
                 {"<ans:sequencialItem>1<", "<ans:sequencialItem>um<"},
                 {"<ans:sequencialItem>2<", "<ans:sequencialItem>20000<"},
                 {"<ans:quantidadeExecutada>1<", "<ans:quantidadeExecutada>1,0<"},
                 {"<ans:valorUnitario>18.40", "<ans:valorUnitario>18.405"},
                 {"<ans:hash>1f43cd7c1fe7550844c68680c2be7b15", "<ans:hash>abc"}},
                {"[Linha: 10] O valor \"2021-02-30\" de <dataRegistroTransacao> não é uma data válida. "
                 "Esperado: AAAA-MM-DD, por exemplo 2024-03-15.",
                 "[Linha: 11] O valor \"16h40\" de <horaRegistroTransacao> não é um horário válido. "
                 "Esperado: HH:MM:SS, por exemplo 14:30:00.",
                 "[Linha: 25] O valor \"2021100002345\" de <numeroLote> é longo demais: tem 13 caracteres; o "
                 "máximo é 12.",
                 "[Linha: 41] [Guia: 20000001] O elemento <nomeBeneficiario> está vazio.",
                 "[Linha: 75] [Guia: 20000001] O valor \"um\" de <sequencialItem> não é um número inteiro "
                 "válido. Esperado: só algarismos, por exemplo 12.",
                 "[Linha: 82] [Guia: 20000001] O valor \"1,0\" de <quantidadeExecutada> não é um número "
                 "inteiro válido. Esperado: só algarismos, por exemplo 12.",
                 "[Linha: 84] [Guia: 20000001] O valor \"18.405\" de <valorUnitario> tem 3 casas decimais; o "
                 "máximo é 2.",
                 "[Linha: 88] [Guia: 20000001] O valor \"20000\" de <sequencialItem> tem 5 dígitos; o máximo "
                 "é 4."}},
        TFrases{"ConteudoDeOutraVersao",
                kMonitoramento,
                {{"versaoPadrao>1.06.00", "versaoPadrao>1.01.00"}},
                {"[Linha: 15] O cabeçalho declara a versão 1.01.00, mas o conteúdo parece ser da 1.06.00.",
                 "[Linha: 21] O valor \"025\" de <versaoTISSPrestador> não está na lista de códigos "
                 "permitidos (22 códigos). Parecidos: 020, 021, 022, 005, 015.",
                 "[Linha: 82] O valor \"025\" de <versaoTISSPrestador> não está na lista de códigos "
                 "permitidos (22 códigos). Parecidos: 020, 021, 022, 005, 015.",
                 "[Linha: 114] O elemento <regimeAtendimento> não é conhecido em <guiaMonitoramento>: só "
                 "existe a partir da versão 1.02.00.",
                 "[Linha: 175] O valor \"024\" de <versaoTISSPrestador> não está na lista de códigos "
                 "permitidos (22 códigos). Parecidos: 020, 021, 022, 004, 014.",
                 "[Linha: 265] O elemento <unidadeMedida> não é conhecido em <procedimentos>: só existe a "
                 "partir da versão 1.02.00.",
                 "[Linha: 302] O valor \"025\" de <versaoTISSPrestador> não está na lista de códigos "
                 "permitidos (22 códigos). Parecidos: 020, 021, 022, 005, 015."}},
        TFrases{"SchemaAproximado",
                kInternacao,
                {{"versaoPadrao>3.02.00", "versaoPadrao>3.01.00"}},
                {"O schema da versão 3.01.00 publicado pela ANS não estava disponível; foi usado um schema "
                 "aproximado, feito com os das versões vizinhas, e a conferência pode ter falhas. Para usar "
                 "o da ANS, importe-o: conferix esquemas importar ARQUIVO."}},
        TFrases{"Internacao",
                kInternacao,
                {{"<ans:tipoInternacao>", "<ans:tipoInternacao>x"}},
                {"[Linha: 59] [Guia: 40000001] O valor \"x2\" de <tipoInternacao> não está na lista de "
                 "códigos permitidos (5 códigos): 1, 2, 3, 4, 5."}},
        TFrases{"Versao2",
                kSadt2,
                {{"<ansTISS:siglaConselho>CRM", "<ansTISS:siglaConselho>crm"},
                 {"<ansTISS:CNPJ>11222333000181", "<ansTISS:CNPJ>11.222.333/0001-81"},
                 {"ansTISS:nomePlano>", "ansTISS:nomeplano>", 2}},
                {"[Linha: 15] O valor \"11.222.333/0001-81\" de <CNPJ> deve ter 14 algarismos, sem pontos, "
                 "barra ou hífen.",
                 "[Linha: 44] [Guia: 30000001] O elemento <nomeplano> em <dadosBeneficiario> tem letras "
                 "maiúsculas e minúsculas trocadas: o nome certo é <nomePlano>.",
                 "[Linha: 57] [Guia: 30000001] O valor \"crm\" de <siglaConselho> não está na lista de "
                 "códigos permitidos: escreva \"CRM\"."}},
        TFrases{
            "Monitoramento",
            kMonitoramento,
            {{"<ans:sexo>3", "<ans:sexo>F"},
             {"<ans:valorInformado>180.00</ans:valorInformado>", ""},
             {"<ans:quantidadePaga>1<", "<ans:quantidadePaga>um<"},
             {"<ans:dataRealizacao>2023-08-10", "<ans:dataRealizacao>10/08/2023"}},
            {"[Linha: 74] Falta o elemento obrigatório <valorInformado> em <procedimentos>, antes de "
             "<quantidadePaga>.",
             "[Linha: 74] O valor \"um\" de <quantidadePaga> não é um número válido. Esperado: algarismos, "
             "com ponto antes das casas decimais, por exemplo 1234.56.",
             "[Linha: 93] O valor \"F\" de <sexo> não está na lista de códigos permitidos (2 códigos): 1, 3.",
             "[Linha: 104] O valor \"10/08/2023\" de <dataRealizacao> não é uma data válida. Esperado: "
             "AAAA-MM-DD, por exemplo 2024-03-15."}}),
    [](const testing::TestParamInfo<TFrases>& instance) { return std::string(instance.param.Name); });

/// "<elemento> antes -> depois", or "<elemento> antes (motivo)" for what was left as it was.
std::vector<std::string> Changes(const json& report) {
    std::vector<std::string> changes;
    for (const json& change : report["correcoes"])
        changes.push_back(
            fmt::format("{} <{}> {} -> {}", change["linha"].get<int>(), change["elemento"].get<std::string>(),
                        change["antes"].get<std::string>(), change["depois"].get<std::string>()));
    for (const json& left : report["naoCorrigidas"])
        changes.push_back(fmt::format("{} <{}> {} ({})", left["linha"].get<int>(),
                                      left["elemento"].get<std::string>(), left["antes"].get<std::string>(),
                                      left["motivo"].get<std::string>()));
    std::erase_if(changes,
                  [](const std::string& change) { return change.find("<hash>") != std::string::npos; });
    return changes;
}

TEST_F(Faltas, CorrigirTodasNaoPioraAConta) {
    const struct {
        std::vector<TEdit> Edits;
        std::vector<std::string> Expected;
    } cases[] = {
        // A group or items under another name.
        {{{"ans:procedimentosExecutados>", "ans:procedimentosExecutado>", 2}},
         {"115 <valorProcedimentos> 44.65 (há erro no que se soma (linha 73))",
          "116 <valorTotalGeral> 44.65 (há erro no que se soma (linha 73))"}},
        {{{"ans:procedimentoExecutado>", "ans:Procedimentoexecutado>", 4}},
         {"115 <valorProcedimentos> 44.65 (há erro no que se soma (linha 74))",
          "116 <valorTotalGeral> 44.65 (há erro no que se soma (linha 74))"}},
        // Values that are no numbers: what depends on them offers no correction at all.
        {{{"<ans:valorTotal>18.40", "<ans:valorTotal>18,40"}}, {}},
        {{{"<ans:reducaoAcrescimo>1.00", "<ans:reducaoAcrescimo>um"},
          {"<ans:valorTotal>18.40", "<ans:valorTotal>9.20"}},
         {"115 <valorProcedimentos> 44.65 (<valorTotal>, de que o valor depende, está errado (linha 85))",
          "116 <valorTotalGeral> 44.65 (<valorTotal>, de que o valor depende, está errado (linha 85))"}},
        // Items that are wrong themselves.
        {{{"<ans:quantidadeExecutada>1<", "<ans:quantidadeExecutada>-1<", 2}},
         {"85 <valorTotal> 18.40 (<quantidadeExecutada>, de que o valor depende, está errado (linha 82))",
          "111 <valorTotal> 7.20 (<quantidadeExecutada>, de que o valor depende, está errado (linha 108))"}},
        {{{"<ans:valorUnitario>18.40", "<ans:valorUnitario>0.00"}},
         {"85 <valorTotal> 18.40 (o valor passaria a zero)"}},
        {{{"<ans:sequencialItem>2<", "<ans:sequencialItem>1<"},
          {"<ans:valorProcedimentos>44.65", "<ans:valorProcedimentos>4"}},
         {"115 <valorProcedimentos> 4 (há erro no que se soma (linha 87))"}},
        // Items that stand as text, and totals that no longer add up alone.
        {{{"<ans:procedimentoExecutado>", "&lt;item>"}, {"</ans:procedimentoExecutado>", "&lt;/item>"}},
         {"115 <valorProcedimentos> 44.65 (há erro no que se soma (linha 74))",
          "116 <valorTotalGeral> 44.65 (há erro no que se soma (linha 74))"}},
        {{{"<ans:codigoDespesa>01", "<ans:codigoDespesa>03"}},
         {"278 <valorMateriais> 8.60 (os valores só mudam juntos, e em um deles o valor passaria a zero)",
          "281 <valorGasesMedicinais> 30.75 (o valor passaria a zero)"}},
        // Correcting one value alone would leave an error that was not there.
        {{{"<ans:valorTotal>18.40", "<ans:valorTotal>18.50"},
          {"<ans:valorTotal>19.05", "<ans:valorTotal>18.95"},
          {"<ans:valorUnitario>6.35", "<ans:valorUnitario>-6.35"}},
         {"85 <valorTotal> 18.50 (a guia ficaria com outro erro; corrija antes o que ela tem de errado)",
          "98 <valorTotal> 18.95 (<valorUnitario>, de que o valor depende, está errado (linha 97))"}},
        // What can be trusted is corrected, whatever is wrong elsewhere in the guide.
        {{{"<ans:atendimentoRN>N</ans:atendimentoRN>", "<ans:rn/>"},
          {"<ans:valorTotal>18.40", "<ans:valorTotal>18"},
          {"<ans:valorProcedimentos>44.65", "<ans:valorProcedimentos>40.00"}},
         {"85 <valorTotal> 18 -> 18.40", "115 <valorProcedimentos> 40.00 -> 44.65"}},
    };
    for (const auto& c : cases) {
        WriteTestFile(File(), Edited(kSadt3, c.Edits));
        const json report = Run({"corrigir", "--todas", "--simular"});
        EXPECT_THAT(Changes(report), ElementsAreArray(c.Expected)) << c.Edits.front().To;
        EXPECT_EQ(report["diferenca"].get<std::string>().empty(), report["correcoes"].empty());
    }
    // An item outside of its guide, and an amount for which two sums are demanded.
    WriteTestFile(File(), Edited(kMonitoramento, {{"<ans:valorTotalPagoProcedimentos>180.00",
                                                   "<ans:valorTotalPagoProcedimentos>123.45"}}));
    EXPECT_THAT(Changes(Run({"corrigir", "--todas", "--simular"})),
                testing::ElementsAre("60 <valorPagoGuia> 180.00 (as regras pedem valores diferentes para o "
                                     "mesmo elemento)"));
    std::string moved = ReadTestFile(Example(kSadt3));
    const std::size_t start = moved.find("<ans:procedimentoExecutado>");
    const std::size_t end = moved.find("</ans:procedimentoExecutado>") + 28;
    const std::string item = moved.substr(start, end - start);
    moved.erase(start, end - start).insert(moved.find("<ans:guiasTISS>"), item);
    WriteTestFile(File(), moved);
    const json outside = Run({"corrigir", "--todas", "--simular"});
    EXPECT_EQ(outside["naoCorrigidas"][0]["motivo"], "há itens fora do lugar (linha 26)");
    EXPECT_EQ(Changes(outside).size(), 2U);
    WriteTestFile(File(), Edited(kSadt3, std::end(cases)[-1].Edits));
    const json text = Run({"corrigir", "--todas", "--simular"});
    EXPECT_EQ(ReadTestFile(File()), Edited(kSadt3, std::end(cases)[-1].Edits)) << "--simular grava nada";
}

/// Changes one place of a lot as systems and people do.
class TMutation {
  public:
    TMutation(const std::string& bytes, unsigned seed) : random_(seed) {
        const TXmlText decoded = DecodeXml(bytes);
        encoding_ = decoded.Encoding;
        text_ = decoded.Text;
        const TXmlParseResult parsed = TXmlParser::Parse(text_);
        std::vector<const TXmlNode*> nodes;
        for (const char* lot : {"guiasTISS", "guias", "operadoraParaANS"})
            if (const TXmlNode* top = parsed.Document->Root().FirstDescendant(lot))
                for (const TXmlNode* at = top->FirstChild(); at != nullptr; at = at->NextInWalk(top))
                    if (at->IsTag())
                        nodes.push_back(at);
        Change(*nodes[Pick(nodes.size())]);
    }
    std::string Bytes() const { return EncodeXml(text_, encoding_); }
    const std::string& Description() const { return description_; }
    /// True when an item may have gone or come as a whole, which no rule can tell from what was meant.
    bool ChangesWhatIsBilled() const { return changesWhatIsBilled_; }

  private:
    std::size_t Pick(std::size_t count) { return random_() % count; }

    void Change(const TXmlNode& node) {
        const std::size_t start = node.ByteStart();
        const std::size_t length = node.ByteEnd() - start;
        const std::string piece = text_.substr(start, length);
        const std::string name(node.QualifiedName());
        const TXmlNode* next = node.NextSiblingTag();
        const std::size_t kind = Pick(8);
        static constexpr const char* kKinds[] = {"digitação", "maiúsculas", "falta", "mudança",
                                                 "repetição", "ordem",      "valor", "versão"};
        description_ = fmt::format("{} de <{}> na linha {}", kKinds[kind], name, node.Line());
        std::string other = name;
        switch (kind) {
        case 0:
            other.erase(name.find(':') + 1 + Pick(name.size() - name.find(':') - 1), 1);
            return Replace(start, length, Renamed(piece, name, other));
        case 1:
            std::transform(other.begin() + static_cast<std::ptrdiff_t>(name.find(':')), other.end(),
                           other.begin() + static_cast<std::ptrdiff_t>(name.find(':')),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
            return Replace(start, length, Renamed(piece, name, other));
        case 2:
            changesWhatIsBilled_ = true;
            return Replace(start, length, "");
        case 3:
            text_.insert(node.Parent()->ByteEnd(), piece);
            return Replace(start, length, "");
        case 4:
            changesWhatIsBilled_ = true;
            return Replace(start, length, piece + piece);
        case 5:
            if (next == nullptr)
                return;
            text_.erase(next->ByteStart(), next->ByteEnd() - next->ByteStart());
            text_.insert(start, next->Document().Text().substr(next->ByteStart(),
                                                               next->ByteEnd() - next->ByteStart()));
            return;
        case 6:
            if (node.FirstChild() != nullptr || !node.HasValue())
                return;
            return Replace(start, length, "<" + name + ">" + std::string(node.Value()) + "x</" + name + ">");
        default:
            for (const auto& [from, to] : {std::pair("adrao>3.05.00<", "adrao>4.01.00<"),
                                           std::pair("adrao>4.01.00<", "adrao>3.05.00<"),
                                           std::pair("adrao>3.02.00<", "adrao>3.05.00<"),
                                           std::pair("adrao>2.02.03<", "adrao>3.02.00<"),
                                           std::pair("adrao>1.06.00<", "adrao>1.01.00<")})
                if (const std::size_t at = text_.find(from); at != std::string::npos)
                    return Replace(at, std::string_view(from).size(), to);
        }
    }

    static std::string Renamed(std::string piece, const std::string& name, const std::string& other) {
        piece.replace(1, name.size(), other);
        if (const std::size_t end = piece.rfind("</" + name); end != std::string::npos)
            piece.replace(end + 2, name.size(), other);
        return piece;
    }
    void Replace(std::size_t start, std::size_t length, const std::string& with) {
        text_.replace(start, length, with);
    }

    std::mt19937 random_;
    std::string text_;
    TXmlEncoding encoding_;
    std::string description_;
    bool changesWhatIsBilled_ = false;
};

/// Declared totals of the guides, in document order.
std::vector<std::string> Totals(const std::string& bytes) {
    static const std::set<std::string_view> kTotals = {
        "valorProcedimentos",   "valorDiarias",         "valorTaxasAlugueis",
        "valorMateriais",       "valorMedicamentos",    "valorOPME",
        "valorGasesMedicinais", "valorTotalGeral",      "valorTotalHonorarios",
        "totalGeral",           "servicosExecutados",   "valorTotalInformado",
        "valorPagoGuia",        "valorPagoFornecedores"};
    std::vector<std::string> totals;
    const TXmlParseResult parsed = TXmlParser::Parse(DecodeXml(bytes).Text);
    const TXmlNode& root = parsed.Document->Root();
    for (const TXmlNode* node = &root; node != nullptr; node = node->NextInWalk(&root))
        if (node->IsTag() && node->FirstChild() == nullptr && kTotals.count(node->LocalName()) != 0)
            totals.emplace_back(node->Value());
    return totals;
}

std::multiset<std::string> Errors(const json& report) {
    std::multiset<std::string> errors;
    for (const json& message : report["mensagens"])
        if (message["tipo"] == "mtError" || message["tipo"] == "mtFatal")
            errors.insert(
                fmt::format("{} {}", message["validacao"].get<std::string>(), message["linha"].get<int>()));
    return errors;
}

TEST_F(Faltas, LotesEstragadosNaoFicamPiores) {
    int corrected = 0;
    for (unsigned seed = 0; seed < 120; ++seed) {
        const char* const examples[] = {kSadt3,     kInternacao,    kSadt2,
                                        kConsulta4, kMonitoramento, "honorarios-4.01.00-valido.xml"};
        const TMutation mutation(ReadTestFile(Example(examples[seed % std::size(examples)])), seed);
        SCOPED_TRACE(
            fmt::format("{} {}: {}", seed, examples[seed % std::size(examples)], mutation.Description()));
        const std::string faulty = mutation.Bytes();
        WriteTestFile(File(), faulty);
        const std::multiset<std::string> before = Errors(Validate());
        const json report = Run({"corrigir", "--todas", "--no-lugar"});
        corrected += report["correcoes"].empty() ? 0 : 1;
        const std::multiset<std::string> after = Errors(Validate());
        EXPECT_THAT(after, testing::IsSubsetOf(before));
        if (!mutation.ChangesWhatIsBilled()) {
            EXPECT_EQ(Totals(ReadTestFile(File())), Totals(faulty));
        }
    }
    EXPECT_GT(corrected, 30);
}

} // namespace
} // namespace conferix
