#include "data/import_fixture.h"

#include "data/tuss_connection.h"
#include "data/tuss_search.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::string kHeader = "Código do Termo;Termo;Data de início de vigência;Data de fim de vigência;"
                            "Data de fim de implantação\n";
const std::vector<std::string> kTerms = {"TB_TUSS_18", "TB_TUSS_19",        "TB_TUSS_20",
                                         "TB_TUSS_22", "TB_TUSS_INATIVADO", "TB_TUSS_64",
                                         "TB_TUSS_63", "TB_TUSS_87",        "TB_CIDADE"};

TEST_F(Importacao, PeriodsBecomeRows) {
    const struct {
        const char* What;
        const char* Rows;
        std::vector<std::string> Expected;
    } cases[] = {
        {"one period, without end of implementation",
         "10101012;Consulta;13/02/2009;;",
         {"TUSS_22|10101012|2009-02-13|~"}},
        {"it comes back after a gap",
         "40501248;A;01/01/2016;;31/03/2016\n40501248;A;10/10/2012;31/07/2013;30/11/2013",
         {"TUSS_22|40501248|2016-01-01|2016-03-31", "TUSS_INATIVADO|22|40501248|2013-07-31"}},
        {"the text changes: one period follows the other",
         "30310040;A;13/02/2009;31/03/2021;-\n30310040;B;01/04/2021;-;-",
         {"TUSS_22|30310040|2021-04-01|~", "TUSS_INATIVADO|22|30310040|2021-03-31"}},
        {"two open periods: the older ends where the newer begins",
         "40404153;A;09/09/2010;;15/10/2010\n40404153;A;01/06/2020;;15/10/2010",
         {"TUSS_22|40404153|2020-06-01|2010-10-15", "TUSS_INATIVADO|22|40404153|2020-05-31"}},
        {"an ended period within an open one",
         "87000016;A;09/06/2010;;06/03/2011\n87000016;A;01/01/2016;14/01/2016;31/03/2016",
         {"TUSS_22|87000016|2010-06-09|2011-03-06", "TUSS_INATIVADO|22|87000016|2016-01-14"}},
        {"ended periods alone",
         "30912156;A;13/02/2009;31/07/2021;\n30912156;A;01/08/2021;31/10/2021;",
         {"TUSS_INATIVADO|22|30912156|2021-10-31"}},
        {"the same start with and without an end",
         "30912156;A;13/02/2009;;\n30912156;A;13/02/2009;31/10/2021;",
         {"TUSS_INATIVADO|22|30912156|2021-10-31"}},
        {"no date at all, beside a known one",
         "10101012;A;;;\n10101012;A;13/02/2009;;",
         {"TUSS_22|10101012|2009-02-13|~"}},
        {"no start", "10101012;A;;;", {"TUSS_22|10101012|~|~"}},
    };
    for (const auto& c : cases) {
        Forget();
        Import({Write("Tabela 22.csv", kHeader + c.Rows)});
        EXPECT_THAT(Dump(kTerms), ElementsAreArray(c.Expected)) << c.What;
    }
}

TEST_F(Importacao, ReadsEveryLayoutOfText) {
    const std::string utf16 = [] {
        std::string text = "\xFF\xFE";
        for (const char c : std::string("Codigo\tGrupo\r\n001\tA\r\n")) {
            text += c;
            text += '\0';
        }
        return text;
    }();
    const struct {
        const char* Name;
        std::string Content;
        std::vector<std::string> Expected;
    } cases[] = {
        {"Tabela 20.csv",
         "\xEF\xBB\xBF"
         "Código do Termo;Termo;Apresentação;Data de início de vigência\n90051505;\"REO;PRO\";5 "
         "ML;10/10/2012\n",
         {"TUSS_20|90051505|2012-10-10|~", "TUSS_TERMO|20|90051505|REO;PRO, 5 ML"}},
        {"Tabela63.csv",
         "C\xF3"
         "digo;Grupo\r\n001;ANATOMIA PATOL\xD3GICA\r\n",
         {"TUSS_63|001|~|~", "TUSS_TERMO|63|001|ANATOMIA PATOLÓGICA"}},
        {"grupos.txt", utf16, {"TUSS_63|001|~|~", "TUSS_TERMO|63|001|A"}},
        {"Tabela_18_x.csv",
         "Publicação de julho\n\nDATA INICIO VIGENCIA|codigo do termo|termo\n2023-04-01|60000015|A\n",
         {"TUSS_18|60000015|2023-04-01|~", "TUSS_TERMO|18|60000015|A"}},
        {"lista.csv",
         "Tabela 18 - Diárias\nCódigo do Termo,Termo\n60000015,\"a, \"\"b\"\"\"\n",
         {"TUSS_18|60000015|~|~", "TUSS_TERMO|18|60000015|a, \"b\""}},
        {"tuss-22.csv",
         "id;source;display_name;extras_fim_vigencia;extras_inicio_vigencia\n\"10101012\";\"tuss-22\";\"A\";"
         "\"-\";\"2026-08-01\"\n",
         {"TUSS_22|10101012|2026-08-01|~", "TUSS_TERMO|22|10101012|A"}},
        {"x.json",
         R"({"total": 1, "results": [{"extras":{"fim_vigencia":"2026-10-31","inicio_vigencia":"2026-08-01T00:00:00"},"id":10101012,"source":"tuss-22","outros":[1],"display_name":"A"},
            {"id":"10101020","source":"tuss-22","extras":{"inicio_vigencia":"-"}}]})",
         {"TUSS_22|10101020|~|~", "TUSS_INATIVADO|22|10101012|2026-10-31",
          "TUSS_PERIODO|22|10101012|2026-08-01|2026-10-31|~", "TUSS_TERMO|22|10101012|A"}},
        {"fontes.json",
         R"([{"Codigo":"tuss-56","Descricao":"Natureza da guia","Total_sources":3}])",
         {"TUSS_87|56|~|~", "TUSS_TERMO|87|56|Natureza da guia"}},
        {"municipios.csv", "codigo_ibge,nome\n3550308,São Paulo\n", {"CIDADE|355030", "CIDADE|3550308"}},
        {"64.csv",
         "Terminologia;Código TUSS;Forma de envio;Código do grupo;Descrição do grupo;Data de início de "
         "vigência\n"
         "22;10101012;Consolidado;029;X;10/10/2012\n0;1;INDIVIDUALIZADO;-;-;10/10/"
         "2012\n22;2;Consolidado;29;-;\n",
         {"TUSS_64|00|1|0|~|2012-10-10|~|~", "TUSS_64|22|10101012|1|029|2012-10-10|~|~",
          "TUSS_64|22|2|1|029|~|~|~"}},
        {"Tabela 18 datas.csv",
         "Código do Termo;Termo;Início;Fim\n60000015;A;01/01/2020;31/12/2020\n",
         {"TUSS_18|60000015|~|~", "TUSS_TERMO|18|60000015|A"}},
        {"pai.json",
         R"([{"pai":{"id":"99999999","display_name":"PAI"},"id":"10101012","source":"tuss-22","display_name":"A"},
            {"id":"10101020","source":"tuss-22","display_name":"B","pai":{"id":"99999999","source":"tuss-18"}}])",
         {"TUSS_22|10101012|~|~", "TUSS_22|10101020|~|~", "TUSS_TERMO|22|10101012|A",
          "TUSS_TERMO|22|10101020|B"}},
    };
    for (const auto& c : cases) {
        Forget();
        const TImportReport report = Import({Write(c.Name, c.Content)});
        EXPECT_THAT(Dump(), ElementsAreArray(c.Expected)) << c.Name;
        EXPECT_EQ(report.Files[0].Rejected, 0) << c.Name;
        EXPECT_EQ(report.WithoutDates.size(), c.Content.find(";Fim\n") == std::string::npos ? 0U : 1U)
            << c.Name;
    }
}

TEST_F(Importacao, ReadsWorkbooksInPackages) {
    // Header on row 12, texts shared and inline, codes and dates as numbers, cells left out, a cover, a sheet
    // of another table, an XLSX in a ZIP in a ZIP, names in code page 850, lock files and other documents.
    const std::string rows =
        "<row r=\"8\"><c r=\"A8\" t=\"s\"><v>0</v></c></row>"
        "<row r=\"12\"><c r=\"B12\" t=\"s\"><v>1</v></c><c r=\"C12\" t=\"s\"><v>2</v></c><c r=\"F12\" "
        "t=\"s\"><v>3</v></c>"
        "<c r=\"G12\" t=\"s\"><v>4</v></c></row>"
        "<row r=\"13\"><c r=\"B13\"><v>7.0965676E7</v></c><c r=\"C13\" t=\"inlineStr\"><is><r><t>Prótese "
        "</t></r><r><t>X</t></r></is></c>"
        "<c r=\"F13\"><v>41192</v></c></row>"
        "<row r=\"14\"><c r=\"B14\" t=\"str\"><v>71000000</v></c><c r=\"G14\"><v>41486</v></c></row>"
        "<row r=\"15\"><c r=\"B15\" t=\"s\"><v>5</v></c><c r=\"F15\" t=\"d\"><v>2012-10-10</v></c><c "
        "r=\"G15\" t=\"s\"><v>6</v></c></row>"
        "<row r=\"16\"><c r=\"B16\"><v>123</v></c><c r=\"C16\" t=\"e\"><v>#N/A</v></c></row><row r=\"17\"/>"
        "<row r=\"18\"><c r=\"B18\"><v>124</v></c><c r=\"G18\" t=\"e\"><v>#VALUE!</v></c></row>"
        "<row r=\"19\"><c r=\"B19\"><v>125</v></c><c r=\"F19\" t=\"b\"><v>1</v></c></row>"
        "<row r=\"20\"><c r=\"B20\" t=\"e\"><v>#REF!</v></c></row>";
    const std::vector<std::string> shared = {"Título",
                                             "Código do Termo",
                                             "Termo",
                                             "Data de início de vigência",
                                             "Data de fim de vigência",
                                             "00000017",
                                             " "};
    WriteZip(File("19.xlsx"),
             Workbook({{"Capa", InlineRow(3, {"ANS", "Versão 202607"})}, {"OPME", rows}}, shared));
    WriteZip(
        File("demais.xlsx"),
        Workbook({{"63", InlineRow(1, {"Código", "Grupo"}) + "<row r=\"2\"><c r=\"A2\"><v>1</v></c></row>"},
                  {"TUSS 87",
                   InlineRow(4, {"Código da Tabela", "Descrição"}) + InlineRow(5, {"00", "Própria"})}}));
    WriteZip(File("interno.zip"),
             {{"TUSS 64.csv", "Terminologia;Código TUSS;Forma de envio\n19;70965676;Individualizado\n"}});
    WriteZip(File("pacote.zip"),
             {{"Represent\x87\xC6o/TUSS 19 - Materiais.xlsx", ReadTestFile(File("19.xlsx"))},
              {"TUSS - Demais.xlsx", ReadTestFile(File("demais.xlsx"))},
              {"~$TUSS 19.xlsx", "x"},
              {"Nota.pdf", "%PDF"},
              {"Forma de envio.zip", ReadTestFile(File("interno.zip"))},
              {"notas.csv", "a;b\n1;2\n"}});
    const TImportReport report = Import({File("pacote.zip")});
    EXPECT_THAT(Dump(), ElementsAre("TUSS_19|00000017|2012-10-10|~", "TUSS_19|00000123|~|~",
                                    "TUSS_19|70965676|2012-10-10|~", "TUSS_63|001|~|~", "TUSS_87|00|~|~",
                                    "TUSS_64|19|70965676|0|~|~|~|~", "TUSS_INATIVADO|19|71000000|2013-07-31",
                                    "TUSS_PERIODO|19|71000000||2013-07-31|~",
                                    "TUSS_TERMO|19|70965676|Prótese X", "TUSS_TERMO|87|00|Própria"));
    EXPECT_THAT(report.Ignored, ElementsAre((File("pacote.zip") / "notas.csv").string()));
    EXPECT_EQ(report.Files[0].Tables.at("19").Rows, 4);
    std::vector<std::string> reasons;
    for (const TRejectedRow& line : report.Rejected)
        reasons.push_back(std::to_string(line.Row) + ": " + line.Reason);
    EXPECT_THAT(reasons, ElementsAre("18: \"#VALUE!\" não é uma data", "19: \"1\" não é uma data",
                                     "20: \"#REF!\" não é um código"));
    EXPECT_EQ(report.Files[0].Sha256.size(), 64U);
    EXPECT_THAT(TTemporaryFolder().Names(), IsEmpty());
    EXPECT_FALSE(fs::exists(Database().string() + ".importacao"));
}

TEST_F(Importacao, TellsTheLinesThatItDoesNotUnderstand) {
    const std::string unclosed = "as aspas abertas nesta linha não se fecham";
    const struct {
        const char* Name;
        std::string Content;
        std::vector<std::string> Lines;
        std::vector<std::string> Terms;
    } cases[] = {
        {"Tabela 22.csv",
         kHeader +
             "10101012;A;13/02/2009;;\n\n1010101;A;;;\n;A;;;\n10101039;A;30/02/2009;;\n"
             "10101020;\"duas\nlinhas\";;;\nFonte: ANS;;;;\n10101047;A;;45000,5;\n" +
             kHeader,
         {"4: o código \"1010101\" não tem 8 dígitos", "5: falta o código",
          "6: \"30/02/2009\" não é uma data", "9: \"Fonte: ANS\" não é um código",
          "10: \"45000,5\" não é uma data"},
         {"TUSS_22|10101012|2009-02-13|~", "TUSS_22|10101020|~|~"}},
        // Quotation marks that nobody closes: before plain rows, quoted ones, short ones, at the end.
        {"Tabela 22.csv",
         kHeader + "10101011;\"CATETER 3;01/01/2020;;\n10101012;B;01/01/2020;;\n10101013;B 3\";;;\n"
                   "10101014;\"C;D\nE;F\";;;\r\n10101015;\"X;;;\r\n\r\n10101016;\"B\";;;\r\n"
                   "10101017;\"X;;;\n10101018;B\n10101019;\"X;;;",
         {"2: " + unclosed, "7: " + unclosed, "10: " + unclosed, "12: " + unclosed},
         {"TUSS_22|10101012|2020-01-01|~", "TUSS_22|10101013|~|~", "TUSS_22|10101014|~|~",
          "TUSS_22|10101016|~|~", "TUSS_22|10101018|~|~"}},
        {"tuss-22.csv",
         "source;id;display_name\n\"tuss-22\";\"10101012\";\"A\n\"tuss-22\";\"10101020\";\"B\"\n",
         {"2: " + unclosed},
         {"TUSS_22|10101020|~|~"}},
        {"TUSS 64.csv",
         "Terminologia;Código TUSS;Forma de envio;Código do grupo\n22;1;Consolidado;X1\n"
         "22;1;Consolidado;1.0\n22;1;Consolidado;0029\n22;2;Individualizado;\n",
         {"2: \"X1\" não é um código de grupo", "3: \"1.0\" não é um código de grupo",
          "4: \"0029\" não é um código de grupo"},
         {"TUSS_64|22|2|0|~|~|~|~"}},
    };
    for (const auto& c : cases) {
        Forget();
        const TImportReport report = Import({Write(c.Name, c.Content)});
        std::vector<std::string> lines;
        lines.reserve(report.Rejected.size());
        for (const TRejectedRow& line : report.Rejected)
            lines.push_back(std::to_string(line.Row) + ": " + line.Reason);
        EXPECT_THAT(lines, ElementsAreArray(c.Lines)) << c.Content;
        EXPECT_EQ(report.Files[0].Rejected, static_cast<std::int64_t>(c.Lines.size()));
        EXPECT_THAT(Dump({"TB_TUSS_22", "TB_TUSS_64"}), ElementsAreArray(c.Terms)) << c.Content;
    }
}

/// Publications that say different things of the same terms.
std::vector<fs::path>
Publications(const std::function<fs::path(const std::string&, const std::string&)>& write) {
    return {
        write("Tabela 22 de 2020.csv",
              kHeader + "10101012;Consulta;13/02/2009;;\n20101201;Antigo;13/02/2009;;\n"
                        "30912156;Sai;13/02/2009;;\n40501248;Volta;10/10/2012;31/07/2013;\n"),
        write("Tabela 22 de 2026.csv", kHeader +
                                           "10101012;Consulta;13/02/2009;;\n20101201;Novo;01/04/2021;;\n"
                                           "40501248;Volta;01/01/2016;;31/03/2016\n"),
        write("Tabela 22.csv", "Código do Termo;Termo\n10101012;Consulta médica\n30912156;Sai\n"),
        write("Histórico.txt",
              "Competência\tCódigo da terminologia\tCódigo do Termo\tTermo\tData de início de vigência\t"
              "Data de fim de vigência\tTipo de "
              "Ação\r\nJulho/2021\t22\t30912156\tSai\t13/02/2009\t31/10/2021\tInativado\r\n"
              "Julho/2021\t64\t30912156\tConsolidado\t10/10/2012\t31/10/2021\tInativado\r\n"
              "Julho/2021\t64\t99999999\tConsolidado\t10/10/2012\t\tIncluído\r\n"
              "Julho/2021\t24\t223625\tX\t10/10/2012\t31/10/2021\tinativado\r\n"),
        write("TUSS 64.csv",
              "Terminologia;Código TUSS;Forma de envio;Código do grupo;Data de início de vigência;Data de "
              "fim de vigência\n"
              "22;30912156;Consolidado;029;10/10/2012;\n22;10101012;Individualizado;;10/10/2012;\n"),
    };
}

const std::vector<std::string> kMerged = {"TUSS_22|10101012|2009-02-13|~",
                                          "TUSS_22|20101201|2021-04-01|~",
                                          "TUSS_22|40501248|2016-01-01|2016-03-31",
                                          "TUSS_64|22|10101012|0|~|2012-10-10|~|~",
                                          "TUSS_64|22|30912156|1|029|2012-10-10|2021-10-31|~",
                                          "TUSS_INATIVADO|22|20101201|2021-03-31",
                                          "TUSS_INATIVADO|22|30912156|2021-10-31",
                                          "TUSS_INATIVADO|22|40501248|2013-07-31",
                                          "TUSS_INATIVADO|24|223625|2021-10-31",
                                          "TUSS_PERIODO|22|20101201|2009-02-13|~|~",
                                          "TUSS_PERIODO|22|30912156|2009-02-13|2021-10-31|~",
                                          "TUSS_PERIODO|22|40501248|2012-10-10|2013-07-31|~",
                                          "TUSS_PERIODO|24|223625|2012-10-10|2021-10-31|~",
                                          "TUSS_64_SEM_TABELA|30912156|2012-10-10|2021-10-31||1",
                                          "TUSS_64_SEM_TABELA|99999999|2012-10-10|||1",
                                          "TUSS_TERMO|22|10101012|Consulta",
                                          "TUSS_TERMO|22|20101201|Novo",
                                          "TUSS_TERMO|22|30912156|Sai",
                                          "TUSS_TERMO|22|40501248|Volta"};

TEST_F(Importacao, GivesOneResultInAnyOrderAndTogether) {
    std::vector<fs::path> files =
        Publications([this](const std::string& name, const std::string& text) { return Write(name, text); });
    // Each before and after each other one: all rotations, forwards and backwards.
    for (std::size_t round = 0; round < 2 * files.size(); ++round) {
        if (round == files.size())
            std::reverse(files.begin(), files.end());
        Forget();
        for (const fs::path& file : files)
            Import({file});
        ASSERT_THAT(Dump(), ElementsAreArray(kMerged)) << files[0] << files[1] << files[2] << files[3];
        const TImportReport again = Import(files);
        for (const auto& [table, changes] : again.Tables)
            ASSERT_EQ(changes, (TTableChanges{0, 0, 0, changes.Same, 0})) << table;
        ASSERT_THAT(Dump(), ElementsAreArray(kMerged));
        std::rotate(files.begin(), files.begin() + 1, files.end());
    }
    Forget();
    const TImportReport together = Import(files);
    EXPECT_THAT(Dump(), ElementsAreArray(kMerged));
    EXPECT_EQ(together.Tables.at("22"), (TTableChanges{3, 0, 1, 0, 0}));
    EXPECT_EQ(together.Tables.at("64"), (TTableChanges{1, 0, 1, 0, 0}));
    EXPECT_EQ(together.WithoutTable, 1);
}

TEST_F(Importacao, ForgetsOnlyWhenToldToReplace) {
    Import(
        {Write("Tabela 22.csv",
               kHeader + "10101012;Velho;13/02/2009;;\n10101020;Domicílio;13/02/2009;31/12/2020;\n"),
         Write("TUSS 64.csv",
               "Terminologia;Código TUSS;Forma de envio\n22;1;Consolidado\n18;1;Consolidado\n"),
         Write("Histórico.txt", "Competência;Código da terminologia;Código do Termo;Termo\n"
                                "Julho/2021;64;10101012;Consolidado\nJulho/2021;64;60000015;Consolidado\n"),
         Write("Tabela 18.csv", "Código do Termo;Termo\n60000015;A\n")});
    const TImportReport report =
        Import({Write("Tabela 22.csv",
                      kHeader + "10101012;A nova;01/01/2020;;\n10101039;Pronto socorro;01/01/2020;;\n"),
                Write("TUSS 64.csv", "Terminologia;Código TUSS;Forma de envio\n22;2;Consolidado\n")},
               true);
    EXPECT_THAT(Dump(),
                ElementsAre("TUSS_18|60000015|~|~", "TUSS_22|10101012|2020-01-01|~",
                            "TUSS_22|10101039|2020-01-01|~", "TUSS_64|18|1|1|~|~|~|~",
                            "TUSS_64|18|60000015|1|~|~|~|~", "TUSS_64|22|2|1|~|~|~|~",
                            "TUSS_64_SEM_TABELA|60000015||||1", "TUSS_TERMO|18|60000015|A",
                            "TUSS_TERMO|22|10101012|A nova", "TUSS_TERMO|22|10101039|Pronto socorro"));
    EXPECT_EQ(report.Tables.at("22"), (TTableChanges{1, 1, 0, 0, 1}));
    EXPECT_EQ(report.Tables.at("64"), (TTableChanges{1, 0, 0, 0, 2}));
    const TTussSearch search(Database());
    const auto any = [](const TFoundTerm&) { return true; };
    EXPECT_THAT(search.Search("velho", "", any, 20), IsEmpty());
    EXPECT_EQ(search.Search("NOVÁ", "22", any, 20).size(), 1U);
}

TEST_F(Importacao, StartsFromTheDeliveredDatabaseAndTakesItsNewCodes) {
    TImportOptions options;
    options.Sources = {Write("Tabela 22.csv", kHeader + "10101012;A;13/02/2009;;\n")};
    options.Target = Database();
    options.Delivered = CONFERIX_TUSS_DB;
    const std::string delivered = ReadTestFile(CONFERIX_TUSS_DB);
    ImportTerminology(options);
    const TTussConnection open(Database()); // an open validation
    {
        fs::rename(Database(), File("dados/lida.db")); // the reader keeps its own
        fs::copy_file(File("dados/lida.db"), Database());
        SQLite::Database older(Database().string(), SQLite::OPEN_READWRITE);
        older.exec(
            "DELETE FROM TB_CIDADE WHERE CODIGO = '3550308'; DELETE FROM TB_TUSS_87 WHERE CODIGO = '22';"
            "INSERT INTO TB_TUSS_INATIVADO VALUES ('87', '22', '2020-01-01')");
    }
    options.Sources = {Write("Tabela 22 nova.csv", kHeader + "10101020;A;13/02/2009;;\n")};
    ImportTerminology(options);
    const TTussConnection now(Database());
    EXPECT_TRUE(now.HasCity("3550308"));
    EXPECT_FALSE(now.StartOfValidity("87", "22").Found); // was inactivated since
    EXPECT_TRUE(now.StartOfValidity("22", "10101012").Found);
    EXPECT_TRUE(now.StartOfValidity("22", "10101020").Found);
    EXPECT_FALSE(open.StartOfValidity("22", "10101020").Found);
    EXPECT_EQ(ReadTestFile(CONFERIX_TUSS_DB), delivered);
    std::vector<std::string> imports;
    for (const TTableImport& import : NewestImports(Database()))
        imports.push_back(
            fmt::format("{} {} {} {}", import.Tabela, import.File, import.Rows, import.NewestStart));
    EXPECT_THAT(imports, ElementsAre("22 Tabela 22 nova.csv 1 2009-02-13"));
}

TEST_F(Importacao, FindsTermsByWordsAndNearCodes) {
    Import({Write("Tabela 22.csv", kHeader + "10101012;Consulta em consultório;13/02/2009;;\n"
                                             "10101020;Consulta em domicílio;13/02/2009;31/12/2020;\n"
                                             "10102019;Visita hospitalar;13/02/2009;;\n"),
            Write("Tabela 18.csv", "Código do Termo;Termo\n60000015;Consulta de sala\n10101021;Sala\n")});
    const TTussSearch search(Database());
    const auto codes = [](const std::vector<TFoundTerm>& terms) {
        std::vector<std::string> found;
        found.reserve(terms.size());
        for (const TFoundTerm& term : terms)
            found.push_back(term.Tabela + " " + term.Codigo);
        return found;
    };
    const auto any = [](const TFoundTerm&) { return true; };
    EXPECT_THAT(codes(search.Search("consult", "", any, 20)),
                ElementsAre("18 60000015", "22 10101020", "22 10101012"));
    EXPECT_THAT(codes(search.Search("CONSULTORIO \"em", "22", any, 20)), ElementsAre("22 10101012"));
    EXPECT_THAT(codes(search.Search(
                    "consulta", "22", [](const auto& term) { return !term.FimVigencia; }, 1)),
                ElementsAre("22 10101012"));
    for (const char* nothing : {"", "*", "xyz", "\" OR \"", "consulta visita"})
        EXPECT_THAT(search.Search(nothing, "", any, 20), IsEmpty()) << nothing;
    EXPECT_THAT(codes(search.Similar("22", "10101021")),
                ElementsAre("22 10101012", "22 10101020", "18 10101021"));
    EXPECT_THAT(codes(search.Similar("22", "1010201")), ElementsAre("22 10102019"));
    EXPECT_THAT(search.Similar("98", "10101021")[0].Tabela, "18");
}

/// The published files, when the machine has them.
std::optional<fs::path> PublishedTerminology() {
    const char* named = std::getenv("CONFERIX_TERMINOLOGIA_PUBLICADA");
    const fs::path folder =
        named != nullptr ? fs::path(named) : fs::path(CONFERIX_FONTE) / "../shared/terminology";
    return fs::is_directory(folder) ? std::optional(folder) : std::nullopt;
}

TEST_F(Importacao, PublishedFilesGiveTheCountsOfAHandCount) {
    const auto published = PublishedTerminology();
    if (!published)
        GTEST_SKIP() << "sem os arquivos publicados (CONFERIX_TERMINOLOGIA_PUBLICADA)";
    // By table: rows / terms in force / terms that have ended. Tables without terms of their own count the
    // ended ones; of table 64 the codes count that the same file has as terms, the others wait for theirs.
    const struct {
        const char* File;
        const char* Counts;
    } cases[] = {
        {"historico/Padrão TISS - Histórico da TUSS - 201305.txt", "22=4/3/1 38=108/0/16"},
        {"historico/Padrão TISS - Histórico da TUSS - 201305.xlsx", "22=4/3/1 38=108/0/16"},
        {"historico/Padrão TISS - Histórico da TUSS - 201405.xlsx",
         "18=47/45/1 20=808/790/3 22=23/16/1 38=43/0/11"},
        {"historico/Padrão TISS - Histórico da TUSS - 201601.xlsx", "22=35/9/24"},
        {"historico/Padrão TISS - Histórico da TUSS - 201604.xlsx",
         "24=8/0/0 38=92/0/5 54=1/0/0 68=5/0/0 87=7/4/0"},
        {"historico/Padrão TISS - Histórico da TUSS - 201606.xlsx", "22=3/3/0 64=3/3/0"},
        {"historico/Padrão TISS - Histórico da TUSS - 202003.txt", "22=1/1/0 64=15/1/0"},
        {"historico/Padrão TISS - Histórico da TUSS - 202004.txt", "22=2/1/0 50=1/0/0 69=1/0/0"},
        {"historico/Padrão TISS - Histórico da TUSS - 202006.txt", "19=72/24/24 22=1/1/0 64=49/25/24"},
        {"historico/Padrão TISS - Histórico da TUSS - 202006.xlsx", "19=72/24/24 22=1/1/0 64=49/25/24"},
        {"historico/Padrão TISS - Histórico da TUSS - 202103.txt", "22=30/25/0 64=694/20/0"},
        {"historico/Padrão TISS - Histórico da TUSS - 202107.txt",
         "22=191/173/9 24=9/0/0 26=5/0/0 38=7/0/0 40=1/0/0 50=14/0/13 56=1/0/0 64=164/164/0 69=1/0/0 "
         "75=3/0/0 76=5/0/0 "
         "77=6/0/0 78=2/0/0 79=7/0/0 80=4/0/0 81=17/0/0 87=7/7/0"},
        {"historico/Padrão TISS - Histórico da TUSS - 202202.xlsx", "22=3/3/0 64=3/3/0"},
        {"dados-abertos/Tabela 20 - Terminologia de medicamentos.csv", "20=1114/1106/8"},
        {"dados-abertos/Tabela 22 - Terminologia de procedimentos e eventos em saude.csv",
         "22=5907/5743/108"},
        {"dados-abertos/Tabela18.csv", "18=3429/3429/0"},
        {"dados-abertos/Tabela63.csv", "63=31/31/0"},
        {"servico/concepts_tuss-22_page1_excerpt5of25.json", "22=5/5/0"},
        {"servico/source.json", "87=65/65/0"},
        {"servico/tuss-18_excerpt3of3595.json", "18=3/3/0"},
        {"servico/tuss-20_page1_excerpt3of25.json", "20=3/3/0"},
        {"servico/tuss-23_20260929.csv", "23=2/0/0"},
        {"servico/tuss-23_20260929.json", "23=2/0/0"},
        {"ibge/municipios.csv", "municípios=5571/5571/0"},
    };
    std::vector<fs::path> files;
    files.reserve(std::size(cases));
    for (const auto& c : cases) {
        Forget();
        files.push_back(*published / c.File);
        TImportReport report = Import({files.back()});
        EXPECT_THAT(report.WithoutDates, IsEmpty());
        std::string counts;
        for (const auto& [table, content] : report.Files[0].Tables) {
            const TTableChanges& changes = report.Tables[table];
            counts += fmt::format("{}{}={}/{}/{}", counts.empty() ? "" : " ", table, content.Rows,
                                  changes.Added, changes.Ended);
        }
        EXPECT_EQ(counts, c.Counts) << c.File;
        EXPECT_EQ(report.Files[0].Rejected, 0) << c.File;
    }
    Forget();
    Import({*published});
    const std::vector<std::string> together = Dump();
    for (const bool backwards : {false, true}) {
        Forget();
        for (const fs::path& file : files)
            Import({file});
        EXPECT_THAT(Dump(), ElementsAreArray(together)) << backwards;
        for (const auto& [table, changes] : Import({*published}).Tables)
            EXPECT_EQ(changes, (TTableChanges{0, 0, 0, changes.Same, 0})) << table;
        std::reverse(files.begin(), files.end());
    }
}

} // namespace
} // namespace conferix
