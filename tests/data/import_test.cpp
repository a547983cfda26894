#include "data/import_fixture.h"

#include "data/tuss_connection.h"
#include "data/tuss_search.h"
#include "platform/program.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

const std::string kHeader = "Código do Termo;Termo;Data de início de vigência;Data de fim de vigência;"
                            "Data de fim de implantação\n";
/// Files of one import and what is then known.
struct TImportCase {
    std::string What;
    char Mark = ' ';
    std::vector<fs::path> Files;
    std::vector<std::string> Rejected;
    std::vector<std::string> Rows;
};

std::ifstream OpenCases(const char* name) {
    return std::ifstream(fs::path(CONFERIX_FONTE) / "tests/data/cases" / name);
}

/// The bytes that a line of a case stands for.
std::string Unescape(std::string_view line) {
    std::string bytes;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '\\') {
            bytes += line[i];
        } else if (line[++i] == 'x') {
            bytes += static_cast<char>(std::stoi(std::string(line.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            bytes += line[i] == 'r' ? '\r' : '\t';
        }
    }
    return bytes;
}

TEST_F(Imports, BringsPublicationsIntoTheDatabase) {
    std::vector<TImportCase> cases;
    std::ifstream stream = OpenCases("imports.txt"); // its head tells the form
    std::string content;
    const auto save = [&] {
        if (!content.empty())
            Write(cases.back().Files.back().lexically_relative(folder_.Path()).string(), content.substr(1));
        content.clear();
    };
    for (std::string line; std::getline(stream, line);) {
        const std::string text = line.substr(std::min(line.size(), line.find(' ') + 1));
        if (line.starts_with("|")) {
            content += '\n' + (line == "|"   ? ""
                               : text == "@" ? kHeader.substr(0, kHeader.size() - 1)
                                             : Unescape(text));
            continue;
        }
        save();
        if (line.starts_with("="))
            cases.push_back({text, line[1], {}, {}, {}});
        else if (line.starts_with(":"))
            cases.back().Files.push_back(File(std::to_string(cases.size())) / text);
        else if (line.starts_with("!"))
            cases.back().Rejected.push_back(text);
        else if (line.starts_with(">"))
            cases.back().Rows.push_back(text);
    }
    EXPECT_EQ(cases.size(), 26U);
    for (TImportCase& c : cases) {
        SCOPED_TRACE(c.What);
        Forget();
        const TImportReport report = Import(c.Files);
        std::vector<std::string> rejected;
        for (const TRejectedRow& row : report.Rejected)
            rejected.push_back(fmt::format("{}: {}", row.Row, row.Reason));
        EXPECT_THAT(rejected, ElementsAreArray(c.Rejected));
        EXPECT_EQ(report.Files[0].Rejected, static_cast<std::int64_t>(rejected.size()));
        EXPECT_EQ(report.WithoutDates.size(), c.What.starts_with("dates under labels") ? 1U : 0U);
        std::vector<std::string> rows = Dump();
        std::erase_if(rows, [&](const std::string& row) {
            return c.Mark == '~' && (row.starts_with("TUSS_TERMO") || row.starts_with("TUSS_PERIODO"));
        });
        EXPECT_THAT(rows, UnorderedElementsAreArray(c.Rows));
        if (c.Mark != '*')
            continue;
        EXPECT_EQ(report.Tables.at("22"), (TTableChanges{3, 0, 1, 0, 0}));
        EXPECT_EQ(report.Tables.at("64"), (TTableChanges{1, 0, 1, 0, 0}));
        EXPECT_EQ(report.WithoutTable, 1);
        // Each before and after each other one: all rotations, forwards and backwards.
        for (std::size_t round = 0; round < 2 * c.Files.size(); ++round) {
            if (round == c.Files.size())
                std::reverse(c.Files.begin(), c.Files.end());
            Forget();
            for (const fs::path& file : c.Files)
                Import({file});
            ASSERT_THAT(Dump(), ElementsAreArray(c.Rows)) << round;
            for (const auto& [table, changes] : Import(c.Files).Tables)
                ASSERT_EQ(changes, (TTableChanges{0, 0, 0, changes.Same, 0})) << table;
            ASSERT_THAT(Dump(), ElementsAreArray(c.Rows));
            std::rotate(c.Files.begin(), c.Files.begin() + 1, c.Files.end());
        }
    }
}

TEST_F(Imports, ReadsWorkbooksInPackages) {
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

TEST_F(Imports, ForgetsOnlyWhenToldToReplace) {
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

TEST_F(Imports, StartsFromTheDeliveredDatabaseAndTakesItsNewCodes) {
    TImportOptions options;
    options.Sources = {Write("Tabela 22.csv", kHeader + "10101012;A;13/02/2009;;\n")};
    options.Target = Database();
    options.Delivered = CONFERIX_TUSS_DB;
    const std::string delivered = ReadTestFile(CONFERIX_TUSS_DB);
    ImportTerminology(options);
    std::optional<TTussConnection> open; // an open validation
    if (OpenFilesCanBeReplaced())
        open.emplace(Database());
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
    if (open) {
        EXPECT_FALSE(open->StartOfValidity("22", "10101020").Found);
    }
    EXPECT_EQ(ReadTestFile(CONFERIX_TUSS_DB), delivered);
    std::vector<std::string> imports;
    for (const TTableImport& import : NewestImports(Database()))
        imports.push_back(
            fmt::format("{} {} {} {}", import.Tabela, import.File, import.Rows, import.NewestStart));
    EXPECT_THAT(imports, ElementsAre("22 Tabela 22 nova.csv 1 2009-02-13"));
}

TEST_F(Imports, FindsTermsByWordsAndNearCodes) {
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

TEST_F(Imports, PublishedFilesGiveTheCountsOfAHandCount) {
    const char* named = std::getenv("CONFERIX_TERMINOLOGIA_PUBLICADA");
    const fs::path published =
        named != nullptr ? fs::path(named) : fs::path(CONFERIX_FONTE) / "../shared/terminology";
    if (!fs::is_directory(published))
        GTEST_SKIP() << "sem os arquivos publicados (CONFERIX_TERMINOLOGIA_PUBLICADA)";
    std::vector<fs::path> files;
    std::ifstream stream = OpenCases("published_counts.txt");
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("#"))
            continue;
        Forget();
        const std::size_t colon = line.rfind(": ");
        files.push_back(published / PathOf(line.substr(0, colon)));
        TImportReport report = Import({files.back()});
        std::string counts;
        for (const auto& [table, content] : report.Files[0].Tables)
            counts += fmt::format("{}{}={}/{}/{}", counts.empty() ? "" : " ", table, content.Rows,
                                  report.Tables[table].Added, report.Tables[table].Ended);
        EXPECT_EQ(counts, line.substr(colon + 2)) << line;
        EXPECT_THAT(report.WithoutDates, IsEmpty());
        EXPECT_EQ(report.Files[0].Rejected, 0) << line;
    }
    Forget();
    Import({published});
    const std::vector<std::string> together = Dump();
    Forget();
    std::reverse(files.begin(), files.end());
    for (const fs::path& file : files)
        Import({file});
    EXPECT_THAT(Dump(), ElementsAreArray(together));
}

} // namespace
} // namespace conferix
