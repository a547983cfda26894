// Listings as users get them: beside the rules, of every version, in every format.
#include "forms/pdf_text.h"
#include "support/command_test.h"
#include "support/generated_lot.h"
#include "support/patterns.h"
#include "xml/xml_parser.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace conferix {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr long kLots = 40; ///< over all versions; CONFERIX_LOTES names another count

class Listing : public TCommandTest {
  protected:
    Listing() { options_ = {"--terminologia", CONFERIX_TUSS_DB}; }

    json List(const std::string& kind, const std::string& file, std::vector<std::string> words = {}) const {
        words.insert(words.begin(), {"listar", kind, file});
        return RunJson(words);
    }
    /// The first file of a listing.
    json FileOf(const std::string& kind, const std::string& file, std::vector<std::string> words = {}) const {
        return List(kind, file, std::move(words))["arquivos"][0];
    }
    std::string Generated(const std::string& versao, const std::string& guide, std::uint64_t& seed) const {
        const auto set = SchemaOfVersion(versao);
        const auto [generator, tree] = MakeLotTree(*set, versao, guide, seed);
        return generator.Serialize(*tree);
    }
};

std::size_t CountOf(std::string_view text, std::string_view piece) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(piece, at)) != std::string_view::npos; at += piece.size())
        ++count;
    return count;
}

/// The rows of all groups.
std::vector<json> Rows(const json& file) {
    std::vector<json> rows;
    for (const json& group : file["grupos"])
        rows.insert(rows.end(), group["linhas"].begin(), group["linhas"].end());
    return rows;
}

/// One column of them.
std::vector<json> Column(const json& file, const std::string& key) {
    std::vector<json> values;
    for (const json& row : Rows(file))
        values.push_back(row[key]);
    return values;
}

/// How many errors the rules of a name have, and the amounts that they expect.
std::multiset<std::string> ExpectedBy(const json& report, const std::string& rule) {
    constexpr std::string_view kExpected = "o esperado é ";
    std::multiset<std::string> amounts;
    for (const json& message : report["mensagens"])
        if (const std::string text = message["motivo"];
            IsErrorOf(message) && message["validacao"].get<std::string>().ends_with(rule)) {
            const std::size_t at = text.rfind(kExpected) + kExpected.size();
            amounts.insert(text.substr(at, text.size() - at - 1));
        }
    return amounts;
}

TEST_F(Listing, SumsAreThoseOfTheRules) {
    const char* wanted = std::getenv("CONFERIX_LOTES");
    const long lots = wanted != nullptr ? std::strtol(wanted, nullptr, 10) : kLots;
    const std::pair<const char*, const char*> kinds[] = {
        {"3.05.00", "guiaSP-SADT"},          {"4.03.00", "guiaResumoInternacao"},
        {"4.01.00", "guiaHonorarios"},       {"3.02.00", "guiaSP-SADT"},
        {"3.00.01", "guiaResumoInternacao"}, {"2.02.03", "guiaSP_SADT"},
        {"3.04.00", "guiaResumoInternacao"}, {"4.00.00", "guiaSP-SADT"}};
    const std::pair<std::string, const char*> categories[] = {
        {"01", ".gases"},   {"02", ".medicamentos"},  {"03", ".materiais"},
        {"05", ".diarias"}, {"07", ".taxasalugueis"}, {"08", ".opme"}};
    std::uint64_t seed = 1'000;
    std::size_t same = 0;
    std::size_t different = 0;
    const std::string file = File("lote.xml");
    const auto compare = [&] {
        const json report = RunJson({"validar", file, "--detalhar"})[0];
        std::multiset<std::string> wrong;
        std::size_t declared = 0;
        for (const json& row : Rows(FileOf("guias", file))) {
            declared += row["valorInformado"].is_null() ? 0 : 1;
            EXPECT_EQ(row["valorCalculado"].is_null(), report["versao"].get<std::string>() < "3.");
            if (row["difere"] == true)
                wrong.insert(fmt::format("{:.2f}", row["valorCalculado"].get<double>()));
        }
        std::multiset<std::string> expected = ExpectedBy(report, ".valortotal.totalgeral");
        expected.merge(ExpectedBy(report, ".honorarios.valortotal"));
        EXPECT_EQ(wrong, expected) << ReadTestFile(file);
        different += wrong.size();
        same += declared - wrong.size();
        const std::size_t procedures = ExpectedBy(report, ".valortotal.procedimentos").size() +
                                       ExpectedBy(report, ".honorarios.valortotal").size();
        const json differingGuides = FileOf("procedimentos", file)["totais"]["guiasComDiferenca"];
        EXPECT_EQ(differingGuides.is_null() ? 0 : differingGuides.get<std::size_t>(), procedures);
        std::map<std::string, std::size_t> differing;
        for (const json& row : Rows(FileOf("despesas", file)))
            if (!row["guiasComDiferenca"].is_null())
                differing[row["codigo"]] = row["guiasComDiferenca"];
        for (const auto& [code, rule] : categories)
            EXPECT_EQ(differing[code], ExpectedBy(report, rule).size()) << code << ReadTestFile(file);
    };
    for (long lot = 0; lot < lots; ++lot) {
        const auto& [versao, guide] = kinds[static_cast<std::size_t>(lot) % std::size(kinds)];
        SCOPED_TRACE(fmt::format("{} {} {}", versao, guide, seed));
        WriteTestFile(file, Generated(versao, guide, seed));
        compare();
        Run({"corrigir", file, "--todas", "--no-lugar"});
        compare();
    }
    EXPECT_GT(different, 0U);
    EXPECT_GT(same, 0U);
}

TEST_F(Listing, FindsWhatEachVersionHasUnderItsNames) {
    const std::pair<const char*, std::vector<const char*>> kinds[] = {
        {"2.02.03",
         {"guiaConsulta", "guiaSP_SADT", "guiaResumoInternacao", "guiaHonorarioIndividual",
          "guiaOdontologia"}},
        {"3.00.01",
         {"guiaConsulta", "guiaSP-SADT", "guiaResumoInternacao", "guiaHonorarioIndividual", "guiaOdonto"}},
        {"4.03.00", {"guiaConsulta", "guiaSP-SADT", "guiaResumoInternacao", "guiaHonorarios", "guiaOdonto"}}};
    std::uint64_t seed = 5'000;
    const std::string file = File("lote.xml");
    for (const auto& [versao, guides] : kinds)
        for (const char* guide : guides) {
            SCOPED_TRACE(fmt::format("{} {}", versao, guide));
            WriteTestFile(file, Generated(versao, guide, seed));
            const TXmlParseResult parsed =
                TXmlParser::Parse(std::make_shared<const std::string>(ReadTestFile(file)));
            const TXmlNode& first = *parsed.Document->Root().FirstDescendant(guide);
            const json row = FileOf("guias", file)["grupos"][0]["linhas"][0];
            for (const auto& [key, names] :
                 {std::pair<const char*, std::vector<const char*>>{"carteira", {"numeroCarteira"}},
                  {"senha", {"senha", "senhaAutorizacao"}},
                  {"beneficiario", {"nomeBeneficiario"}}}) {
                std::string value;
                for (const char* name : names)
                    value += ValueOf(first.FirstDescendant(name));
                EXPECT_EQ(row[key], value);
            }
            EXPECT_THAT(row["data"].get<std::string>(), MatchesPattern("....-..-.."));
            std::string titles;
            const json groups = FileOf("profissionais", file)["grupos"];
            for (const json& group : groups)
                titles += group["titulo"].get<std::string>() + '\n';
            for (const char* name : {"nomeProf", "nomeExecutante", "nomeProfExec2"})
                for (const TXmlNode* node : first.Descendants(name)) {
                    EXPECT_THAT(titles, HasSubstr(std::string(node->Value()))) << name;
                }
        }
}

/// A lot of SP/SADT guides: number, beneficiary, day, two items of that value, declared total.
struct TGuide {
    std::string Numero, Nome, Dia;
    double Valor, Total;
};
std::string Lot(const std::vector<TGuide>& guides) {
    std::string text;
    for (const TGuide& guide : guides) {
        std::string items;
        for (int i = 1; i <= 2; ++i)
            items +=
                fmt::format("<procedimentoExecutado><sequencialItem>{}</sequencialItem><dataExecucao>{}"
                            "</dataExecucao><procedimento><codigoTabela>22</codigoTabela>"
                            "<codigoProcedimento>1010101{}</codigoProcedimento><descricaoProcedimento>"
                            "=1+1;\"x\"</descricaoProcedimento></procedimento><quantidadeExecutada>1"
                            "</quantidadeExecutada><valorUnitario>{:.2f}</valorUnitario><valorTotal>{:.2f}"
                            "</valorTotal></procedimentoExecutado>",
                            i, guide.Dia, i, guide.Valor, guide.Valor);
        text += fmt::format("<guiaSP-SADT><cabecalhoGuia><numeroGuiaPrestador>{}</numeroGuiaPrestador>"
                            "</cabecalhoGuia><dadosBeneficiario><numeroCarteira>00123</numeroCarteira>"
                            "<nomeBeneficiario>{}</nomeBeneficiario></dadosBeneficiario>"
                            "<procedimentosExecutados>{}</procedimentosExecutados><valorTotal>"
                            "<valorTotalGeral>{:.2f}</valorTotalGeral></valorTotal></guiaSP-SADT>",
                            guide.Numero, guide.Nome, items, guide.Total);
    }
    return "<mensagemTISS xmlns=\"http://www.ans.gov.br/padroes/tiss/schemas\"><cabecalho>"
           "<identificacaoTransacao><tipoTransacao>ENVIO_LOTE_GUIAS</tipoTransacao></identificacaoTransacao>"
           "<Padrao>3.05.00</Padrao></cabecalho><prestadorParaOperadora><loteGuias><numeroLote>7</numeroLote>"
           "<guiasTISS>" +
           text + "</guiasTISS></loteGuias></prestadorParaOperadora></mensagemTISS>";
}

const std::vector<TGuide> kGuides = {{"10", "Érica &lt;b&gt;", "2026-03-02", 1000.05, 2000.10},
                                     {"9", "Zilda", "2026-01-31", 0.10, 0.20},
                                     {"A1", "elaine", "2026-02-01", 20, 39.99}};

TEST_F(Listing, PutsGuidesIntoTheOrderAskedFor) {
    WriteTestFile(File("a.xml"), Lot(kGuides));
    EXPECT_EQ(FileOf("profissionais", File("a.xml"))["grupos"][0]["totais"],
              json({{"quantidade", 6}, {"valorTotal", 2040.3}}));
    const std::pair<const char*, std::vector<json>> orders[] = {{"", {"10", "9", "A1"}},
                                                                {"guia", {"9", "10", "A1"}},
                                                                {"beneficiario", {"A1", "10", "9"}},
                                                                {"data", {"9", "A1", "10"}},
                                                                {"valor", {"10", "A1", "9"}}};
    for (const auto& [order, numbers] : orders)
        for (const char* kind : {"guias", "entrega"}) {
            std::vector<std::string> words;
            if (*order != '\0')
                words = {"--ordem", order};
            EXPECT_EQ(Column(FileOf(kind, File("a.xml"), words), "guia"), numbers) << order;
        }
}

TEST_F(Listing, AddsUpEachFileAndAll) {
    WriteTestFile(File("a.xml"), Lot(kGuides));
    WriteTestFile(File("b.xml"), Lot({{"77", "Ana", "2026-03-02", 0.10, 0.20}}));
    WriteTestFile(File("c.xml"), "nada");
    const TCommandResult result =
        Run({"listar", "guias", File("a.xml"), File("b.xml"), File("c.xml"), "--formato", "json"});
    EXPECT_EQ(result.Status, kExitInvalid);
    const json listing = result.Json();
    EXPECT_EQ(listing["arquivos"][0]["totais"], json::parse(R"({"guias": 3, "valorInformado": 2040.29,
        "valorCalculado": 2040.3, "guiasComDiferenca": 1})"));
    EXPECT_EQ(listing["totais"], json::parse(R"({"guias": 4, "valorInformado": 2040.49,
        "valorCalculado": 2040.5, "guiasComDiferenca": 1})"));
    EXPECT_EQ(listing["arquivos"][2]["erro"]["status"], kExitInvalid);
    EXPECT_THAT(Column(listing["arquivos"][0], "diferenca"), ElementsAre(nullptr, nullptr, -0.01));

    const std::string text = Run({"listar", "guias", File("a.xml"), File("b.xml"), File("c.xml")}).Out;
    EXPECT_THAT(text, HasSubstr("2.040,29"));
    EXPECT_THAT(text, HasSubstr("-0,01 *\n"));
    EXPECT_THAT(text, HasSubstr("Total de 2 arquivos\n"));
    EXPECT_THAT(text, HasSubstr("Fora dos totais: 1 arquivo, por não poder ser listado.\n"));
    EXPECT_EQ(listing, Run({"listar", "guias", folder_.Path().string(), "--formato", "json"}).Json());
    // Who works in several files is one.
    for (const char* const name : {"d.xml", "e.xml"})
        WriteTestFile(File(name), ReadTestFile(Example("honorarios-4.01.00-valido.xml")));
    const json work =
        Run({"listar", "profissionais", File("d.xml"), File("e.xml"), "--formato", "json"}).Json();
    EXPECT_EQ(work["totais"]["profissionais"], work["arquivos"][1]["totais"]["profissionais"]);
    EXPECT_EQ(work["totais"]["procedimentos"], 2 * work["arquivos"][1]["totais"]["procedimentos"].get<int>());
}

TEST_F(Listing, SaysWhatItsSumsLeaveOut) {
    struct TCase {
        const char* Right;
        const char* Wrong;
        json Informado;
        json Calculado;
        const char* Note = "1 valor do arquivo não pode ser lido como número";
    };
    const char* const kItem =
        "1 item não informa o seu valor total; as somas em que ele entra ficam em branco";
    // What nobody can read is in no sum, and a sum of the rest is none.
    const TCase cases[] = {
        {">44.65</ans:valorTotalGeral>", ">44,65</ans:valorTotalGeral>", nullptr, 44.65},
        {">44.65</ans:valorTotalGeral>", ">44000000000000000000.65</ans:valorTotalGeral>", nullptr, 44.65},
        {">18.40</ans:valorTotal>", ">18,40</ans:valorTotal>", 44.65, nullptr},
        {"<ans:valorTotalGeral>44.65</ans:valorTotalGeral>", "", nullptr, 44.65,
         "1 guia não informa o seu valor total"},
        {">44.65</ans:valorProcedimentos>", ">44,65</ans:valorProcedimentos>", 44.65, 44.65},
        // What cannot be read beside them hides no difference of the totals.
        {">3</ans:quantidadeExecutada>", ">três</ans:quantidadeExecutada>", 44.65, 44.65},
        // The rules add nothing for an item without total, and judge no sum with an empty one.
        {"<ans:valorTotal>18.40</ans:valorTotal>", "", 44.65, 26.25, kItem},
        {"<ans:valorTotal>18.40</ans:valorTotal>", "<ans:valorTotal xsi:nil=\"true\"/>", 44.65, nullptr,
         kItem}};
    for (const TCase& c : cases) {
        std::string lot = ReadTestFile(Example("spsadt-3.05.00-valido.xml"));
        const std::size_t at = lot.find(c.Right);
        ASSERT_NE(at, std::string::npos) << c.Right;
        WriteTestFile(File("a.xml"), lot.replace(at, std::string_view(c.Right).size(), c.Wrong));
        const json file = FileOf("guias", File("a.xml"));
        EXPECT_EQ(Column(file, "valorInformado")[0], c.Informado) << c.Wrong;
        EXPECT_EQ(Column(file, "valorCalculado")[0], c.Calculado) << c.Wrong;
        EXPECT_THAT(
            file["observacoes"],
            ElementsAre(testing::ResultOf([](const json& note) { return note.dump(); }, HasSubstr(c.Note))))
            << c.Wrong;
        EXPECT_THAT(Run({"listar", "capa", File("a.xml"), "--formato", "csv"}).Out,
                    ContainsPattern(fmt::format("\"total do arquivo\".*;\"{}", c.Note)))
            << c.Wrong;
        EXPECT_THAT(
            Run({"listar", "guias", File("a.xml"), Example("spsadt-3.05.00-valido.xml").string()}).Out,
            HasSubstr("1 arquivo tem observações.\n"))
            << c.Wrong;
        EXPECT_EQ(Column(FileOf("procedimentos", File("a.xml")), "valorTotal")[3],
                  std::string_view(c.Right).find("18.40") == std::string_view::npos ? json(18.4) : json())
            << c.Wrong;
    }
    // A sum of what nobody tells is none.
    WriteTestFile(File("a.xml"),
                  std::regex_replace(ReadTestFile(Example("honorarios-4.01.00-valido.xml")),
                                     std::regex("<ans:quantidadeExecutada>.*</ans:quantidadeExecutada>"),
                                     ""));
    const json work = FileOf("profissionais", File("a.xml"))["grupos"][0]["totais"];
    EXPECT_EQ(work["quantidade"], json());
    EXPECT_GT(work["valorTotal"], 0);
    EXPECT_EQ(FileOf("procedimentos", File("a.xml"))["totais"]["quantidade"], json());
    // Elements that are no guides are not passed over in silence, and nothing else is no list.
    std::string unknown = Lot({kGuides.front()});
    const std::string guides = unknown.substr(unknown.find("<guiaSP-SADT>"));
    unknown.insert(unknown.find("</guiasTISS>"), "<guiaQuimioterapia/>\n<sessao/>");
    const auto expectNoted = [&](const std::string& lot, const std::string& note, const char* listed,
                                 const char* printed) {
        WriteTestFile(File("a.xml"), lot);
        EXPECT_THAT(FileOf("guias", File("a.xml"))["observacoes"], testing::Contains(note + listed));
        EXPECT_THAT(Run({"imprimir", File("a.xml"), "--sem-aviso", "--saida", File("a.pdf")}).Err,
                    HasSubstr(note + printed));
    };
    expectNoted(
        unknown,
        "2 elementos no lugar de guias, o primeiro <guiaQuimioterapia> na linha 1, não são guias que a "
        "versão do arquivo tenha, e não são ",
        "listados.", "impressos.");
    for (const char* const end : {"</guiasTISS>", "</loteGuias>", "</prestadorParaOperadora>"}) {
        std::string twice = unknown; // a second one of the element behind the first
        const std::size_t behind = twice.find(end) + std::string_view(end).size();
        const std::size_t from = twice.find(std::string(end).erase(1, 1));
        expectNoted(
            twice.insert(behind, '\n' + twice.substr(from, behind - from)),
            "1 guia, <guiaSP-SADT> na linha 3, está em outro lote ou em uma segunda lista de guias, e não é ",
            "listada.", "impressa.");
    }
    std::string old = ReadTestFile(Example("spsadt-2.02.03-valido.xml"));
    const std::string group = "<ansTISS:guiaFaturamento>";
    expectNoted(
        old.insert(old.find(group), group + "<ansTISS:guiaX/><ansTISS:guiaY/></ansTISS:guiaFaturamento>"),
        "2 elementos no lugar de guias, o primeiro <ansTISS:guiaX> na linha 32, não são guias que a "
        "versão do arquivo tenha, e não são ",
        "listados.", "impressos.");
    unknown.erase(unknown.find("<guiaSP-SADT>"), guides.find("</guiasTISS>"));
    for (const auto& [text, reason] :
         {std::pair(unknown, "o lote não tem guias a listar: 2 elementos no lugar"),
          {Lot({}), "o lote não tem guias a listar\n"}}) {
        WriteTestFile(File("a.xml"), text);
        const TCommandResult none = Run({"listar", "capa", File("a.xml")});
        EXPECT_EQ(none.Status, kExitInvalid);
        EXPECT_EQ(none.Out, "");
        EXPECT_THAT(none.Err, HasSubstr(reason));
    }
    // Dental items tell their value, of one or of all that they count.
    std::string dental = ReadTestFile(Example("odonto-3.05.00-valido.xml"));
    for (const auto& [right, wrong, difference] :
         {std::tuple("", "", json(nullptr)),
          {">1</ans:qtdProc>", ">x</ans:qtdProc>", json(nullptr)},
          {"<ans:valorTotalProc>", "<ans:valorTotalProc>1", json(1000.0)}}) {
        if (*right != '\0')
            dental.replace(dental.find(right), std::string_view(right).size(), wrong);
        WriteTestFile(File("a.xml"), dental);
        EXPECT_EQ(Column(FileOf("guias", File("a.xml")), "diferenca")[0], difference);
    }
    dental = ReadTestFile(Example("odonto-3.05.00-valido.xml"));
    for (const auto& [right, wrong] : {std::pair(">1</ans:qtdProc>", ">2</ans:qtdProc>"),
                                       {">129.30</ans:valorTotalProc>", ">171.30</ans:valorTotalProc>"}})
        dental.replace(dental.find(right), std::string_view(right).size(), wrong);
    WriteTestFile(File("a.xml"), dental);
    EXPECT_EQ(Column(FileOf("guias", File("a.xml")), "diferenca")[0], nullptr);
    for (const char* const kind : {"procedimentos", "profissionais"}) {
        const json file = FileOf(kind, File("a.xml"));
        double sum = 0;
        for (const json& value : Column(file, "valorTotal"))
            sum += value.get<double>();
        EXPECT_DOUBLE_EQ(sum, 171.30 + 87) << kind;
        EXPECT_DOUBLE_EQ(file["totais"]["valorTotal"].get<double>(), sum) << kind;
    }
}

/// No rule judges the totals by category of 2.x; a listing compares what a guide tells of them itself.
TEST_F(Listing, ComparesTheTotalsOf2) {
    std::string lot = ReadTestFile(Example("spsadt-2.02.03-valido.xml"));
    WriteTestFile(File("a.xml"), lot);
    const auto differing = [&](const char* kind) {
        std::string text;
        for (const json& row : Rows(FileOf(kind, File("a.xml"))))
            if (row["difere"] == true)
                text += fmt::format("{} {};", row.value("composicao", row.value("tipo", "")),
                                    row["diferenca"].dump());
        return text;
    };
    EXPECT_EQ(differing("capa") + differing("despesas"), "");
    constexpr std::string_view kMaterials = "<ansTISS:materiais>"; // of the guide with expenses the last
    WriteTestFile(File("a.xml"), lot.insert(lot.rfind(kMaterials) + kMaterials.size(), "1000"));
    EXPECT_THAT(differing("capa"), MatchesPattern("Materiais [0-9.]+;"));
    EXPECT_EQ(differing("despesas"), differing("capa"));
    EXPECT_THAT(Run({"listar", "capa", File("a.xml")}).Out, HasSubstr("* Um total não é a soma"));
    // Of a guide that does not list its expenses there is nothing to compare.
    constexpr std::string_view kEnd = "</ansTISS:outrasDespesas>";
    const std::size_t first = lot.find("<ansTISS:outrasDespesas>");
    lot.erase(first, lot.find(kEnd) - first + kEnd.size());
    WriteTestFile(File("a.xml"), lot);
    EXPECT_EQ(differing("capa"), "");
}

TEST_F(Listing, KeepsLotsAndMonitoringApart) {
    // Two guides informed otherwise than their items, one of them and another paid otherwise.
    EXPECT_THAT(Run({"listar", "guias", Example("monitoramento-1.06.00-com-erros.xml").string()}).Out,
                HasSubstr("Guias com diferença: 3 *\n"));
    const std::string monitoring = Example("monitoramento-1.06.00-valido.xml").string();
    const std::string lot = Example("consulta-4.01.00-valido.xml").string();
    const std::string fees = Example("honorarios-4.01.00-valido.xml").string();
    const TCommandResult both = Run({"listar", "guias", lot, monitoring, fees});
    EXPECT_THAT(both.Out, testing::AllOf(HasSubstr("Total de 2 lotes de guias\n"),
                                         HasSubstr("Total de 1 arquivo de monitoramento\n")));
    const json listing = Run({"listar", "guias", lot, monitoring, fees, "--formato", "json"}).Json();
    EXPECT_EQ(listing["totais"], nullptr);
    EXPECT_EQ(listing["totaisPorTipo"]["taMonitoramento"], listing["arquivos"][1]["totais"]);
    double items = 0;
    for (const json& sum : Column(listing["arquivos"][1], "valorCalculado"))
        items += sum.get<double>();
    EXPECT_DOUBLE_EQ(listing["arquivos"][1]["totais"]["valorCalculado"].get<double>(), items);
    // The foot is the sum of the rows, with the totals of the guides beside it.
    for (const auto& [kind, column] : {std::pair("procedimentos", "valorInformado"),
                                       {"procedimentos", "quantidadePaga"},
                                       {"procedimentos", "valorPago"},
                                       {"despesas", "valorPago"}}) {
        const json file = FileOf(kind, monitoring);
        double sum = 0;
        for (const json& value : Column(file, column))
            sum += value.get<double>();
        EXPECT_DOUBLE_EQ(file["totais"][column].get<double>(), sum) << kind << column;
        EXPECT_EQ(file["totais"]["valorPagoGuias"], listing["arquivos"][1]["totais"]["valorPago"]);
    }
    EXPECT_EQ(listing["totaisPorTipo"]["taMensagemTISS"]["guias"],
              listing["arquivos"][0]["totais"]["guias"].get<int>() +
                  listing["arquivos"][2]["totais"]["guias"].get<int>());
    // A file of other contents is not an empty one.
    const TCommandResult refused =
        Run({"listar", "guias", Example("monitoramento-1.06.00-fornecimento-direto.xml").string()});
    EXPECT_EQ(refused.Status, kExitInvalid);
    EXPECT_THAT(refused.Err, ContainsPattern("o arquivo não tem guias, só [0-9]+ fornecimentos? direto"));
}

TEST_F(Listing, IsATableForSpreadsheetsOfBrazil) {
    WriteTestFile(File("a.xml"), Lot(kGuides));
    const std::string csv = Run({"listar", "guias", File("a.xml"), "--formato", "csv"}).Out;
    EXPECT_THAT(csv, testing::StartsWith("\xEF\xBB\xBF\"Arquivo\";\"Registro\";\"Nº da guia\";"));
    const std::string monitoring = Example("monitoramento-1.06.00-valido.xml").string();
    const struct {
        std::vector<std::string> Words;
        std::string Line; ///< the end of one
    } cases[] = {
        {{"guias", File("a.xml")}, ";02/03/2026;\"'00123\";\"Érica <b>\";;2;2000,10;2000,10;;"},
        {{"procedimentos", File("a.xml")}, "\"22\";\"10101011\";\"'=1+1;\"\"x\"\"\";3;3;1020,15;"},
        {{"procedimentos", File("a.xml")}, "\"total do arquivo\";;;;3;6;2040,30;"},
        {{"entrega", File("a.xml")}, "\"total do arquivo\";;;;;;;2040,29;"},
        {{"profissionais", File("a.xml")}, "\"subtotal\";\"Sem profissional informado\";;;;;;;;6;;2040,30;"},
        {{"guias", File("a.xml"), File("nenhum.xml")},
         "\"total\";;;;;;;;;;2040,29;2040,30;;\"Fora dos totais: 1 arquivo, por não poder ser listado.\""},
    };
    for (const auto& c : cases) {
        std::vector<std::string> words = {"listar", "--formato", "csv"};
        words.insert(words.begin() + 1, c.Words.begin(), c.Words.end());
        EXPECT_THAT(Run(words).Out, HasSubstr(c.Line + "\r\n"));
    }
    // The columns can be told apart by their titles.
    for (const char* kind : {"guias", "capa", "procedimentos", "despesas", "profissionais"})
        for (const std::string& file : {File("a.xml"), monitoring}) {
            std::istringstream head(Run({"listar", kind, file, "--formato", "csv"}).Out);
            std::set<std::string> titles;
            std::string line;
            std::getline(head, line, '\r');
            std::istringstream columns(line);
            for (std::string title; std::getline(columns, title, ';');)
                EXPECT_TRUE(titles.insert(title).second) << kind << title;
        }
    const TCommandResult mixed = Run({"listar", "guias", File("a.xml"), monitoring, "--formato", "csv"});
    EXPECT_EQ(mixed.Status, kExitUnreadable);
    EXPECT_EQ(mixed.Out, "");
    EXPECT_THAT(mixed.Err, HasSubstr("1 lote de guias e 1 arquivo de monitoramento têm colunas diferentes e "
                                     "não cabem em um só CSV"));
}

TEST_F(Listing, IsAPageOrPaperThatShowsWhatFilesSayAndDoesNothingElse) {
    WriteTestFile(File("a.xml"), Lot(kGuides));
    const std::string page = File("lista.html");
    EXPECT_EQ(Run({"listar", "entrega", File("a.xml"), "--formato", "html", "--saida", page}).Out, "");
    const std::string html = ReadTestFile(page);
    EXPECT_THAT(html, HasSubstr("Érica &lt;b&gt;"));
    EXPECT_THAT(html, Not(HasSubstr("<b>")));
    EXPECT_THAT(html, HasSubstr("default-src 'none'"));
    EXPECT_THAT(html, HasSubstr("Recebido por"));
    EXPECT_THAT(html, Not(HasSubstr("://")));

    std::vector<TGuide> many(100, kGuides.front());
    WriteTestFile(File("b.xml"), Lot(many));
    for (const auto& [kind, pages] : {std::pair("capa", 1), std::pair("guias", 3), std::pair("entrega", 2)}) {
        const std::string pdf = Run({"listar", kind, File("b.xml"), "--formato", "pdf"}).Out;
        EXPECT_THAT(pdf, testing::StartsWith("%PDF-"));
        EXPECT_THAT(pdf, testing::EndsWith("%%EOF\n"));
        EXPECT_THAT(pdf, HasSubstr(fmt::format("/Count {}", pages))) << kind;
    }
    // Each row once, with a rule below it, though cells repeat those above them.
    const std::string pdf = Run({"listar", "guias", File("b.xml"), "--formato", "pdf"}).Out;
    std::size_t rules = 0;
    for (const std::string& stream : PdfStreams(pdf))
        rules += CountOf(stream, " l S");
    EXPECT_EQ(rules, many.size());
    EXPECT_EQ(CountOf(PdfTexts(pdf), "2.000,10\n"), 2 * many.size());
    EXPECT_EQ(CountOf(PdfTexts(pdf), "Carteira\n"), 3U);
}

} // namespace
} // namespace conferix
