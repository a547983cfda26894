// What an import refuses, and what may interrupt it: the database is then as it was.
#include "data/import_fixture.h"

#include "data/tuss.h"
#include "platform/portable_name.h"
#include "support/system.h"

#include <atomic>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class ImportRefusals : public ImportsOverOlder {
  protected:
    /// The reason for which a source is refused, or what happened instead.
    std::string Refusal(const fs::path& source) const {
        try {
            Import({File("Tabela 22.csv"), source});
        } catch (const EInvalidPublication& error) {
            ExpectUntouched();
            return error.Reason();
        } catch (const std::exception& error) {
            return std::string("outro erro: ") + error.what();
        }
        return "importado";
    }
};

TEST_F(ImportRefusals, FilesThatAreNoPublication) {
    const std::string zip = [this] {
        WriteZip(File("bom.zip"), {{"Tabela 22.csv", kHeader + std::string(5000, 'x') + "10101012;A\n"}});
        return ReadTestFile(File("bom.zip"));
    }();
    std::string damaged = zip;
    damaged.replace(60, 8, "ESTRAGO!");
    const std::string nothing = "não foi encontrada nenhuma tabela da TUSS";
    fs::create_directory(File("vazia"));
    const struct {
        fs::path Source;
        std::string Reason;
    } cases[] = {
        {Write("vazio.csv", ""), nothing},
        {Write("texto.txt", "Prezados,\nsegue o arquivo.\n"), nothing},
        {Write("binario.csv", std::string("\x7F"
                                          "ELF\0\0\1",
                                          7)),
         nothing},
        {Write("utf16.txt", "\xFF\xFE\xD8\xD8"), nothing},
        {Write("nota.pdf", "%PDF-1.7\n%%EOF"), nothing},
        {Write("erros.csv", "Código do erro;Descrição do erro\n1002;INVÁLIDO\n"), nothing},
        {Write("numeros.json", "[1, [2], {\"a\": {}}]"), nothing},
        {Write("cortado.json", "[{\"id\":\"10101012\",\"source\":\"tuss-22\"},{\"id\""),
         "não é um arquivo JSON válido"},
        {Write("longo.json", "[{\"id\":\"" + std::string(3 << 20, '1') + "\"}]"), "longo demais"},
        {Write("fundo.json", std::string(100000, '[')), "níveis demais"},
        {Write("aspas.csv", kHeader + "10101012;\"" + std::string(3 << 20, '\n')),
         "linha 2: as aspas abertas nesta linha não se fecham"},
        {Write("linha.csv", kHeader + "10101012;" + std::string(3 << 20, 'x')), "a linha 2 é longa demais"},
        {Write("sem numero.csv", kHeader + "10101012;A\n"), "nada diz de que tabela da TUSS são os termos"},
        {Write("ruim.json", R"([{"id":"10101012"},{"id":"","source":"tuss-22"}])"),
         "registro 2: falta o código"},
        {Write("Tabela 22 ruim.csv", kHeader + "abc;A\n"), "linha 2: \"abc\" não é um código"},
        {Write("cortado.zip", zip.substr(0, zip.size() / 2)), "não é um arquivo ZIP válido"},
        {Write("estragado.zip", damaged), "está danificado"},
        {File("falta.zip"), "o arquivo não existe"},
        {kNullDevice, NamesDevice(kNullDevice) ? kDeviceReason : "não é um arquivo comum"},
        {File("vazia"), "a pasta não tem nenhum arquivo"},
    };
    for (const auto& c : cases)
        EXPECT_THAT(Refusal(c.Source), HasSubstr(c.Reason)) << c.Source;
}

TEST_F(ImportRefusals, PackagesThatAreDangerous) {
    const std::string csv = kHeader + "10101012;A\n";
    std::string much;
    much.resize(110'000'000, '\n');
    std::vector<TTestEntry> many(10001);
    for (std::size_t i = 0; i < many.size(); ++i)
        many[i].Name = std::to_string(i);
    std::string nested = csv;
    for (int level = 0; level < 6; ++level) {
        WriteZip(File("nivel.zip"), {{level == 0 ? "Tabela 22.csv" : "dentro.zip", nested}});
        nested = ReadTestFile(File("nivel.zip"));
    }
    const auto sheet = [](const std::string& rows) { return Workbook({{"Tabela 22", rows}}); };
    std::vector<TTestEntry> withoutSheet = sheet("");
    withoutSheet.erase(withoutSheet.begin());
    const std::string row = InlineRow(1, {"Código do Termo", "Termo"});
    std::vector<TTestEntry> entities = sheet(row);
    entities[0].Content = "<!DOCTYPE x [<!ENTITY a \"a\">]>" + entities[0].Content;
    const struct {
        const char* What;
        std::vector<TTestEntry> Entries;
        const char* Reason;
    } cases[] = {
        {"leaves the folder", {{"../Tabela 22.csv", csv}}, "sai da pasta"},
        {"absolute", {{"/Tabela 22.csv", csv}}, "sai da pasta"},
        {"device", {{"LPT1/Tabela 22.csv", csv}}, "não é o de um arquivo no Windows"},
        {"stream", {{"Tabela 22.csv:b.csv", csv}}, "não é o de um arquivo no Windows"},
        {"link", {{"Tabela 22.csv", "/etc/passwd", true}}, "contém um atalho"},
        {"too many", many, "arquivos demais"},
        {"nested", {{"dentro.zip", nested}}, "há pacotes demais"},
        {"bomb", {{"dentro.zip", much}}, "grande demais"},
        {"long token", sheet("<row r=\"" + std::string(6'000'000, '1') + "\"/>"), "danificada"},
        {"entities", entities, "danificada"},
        {"cut XML", sheet("<row r=\"1\"><c r="), "danificada"},
        {"shared text that is not there", sheet(row + "<row r=\"2\"><c r=\"A2\" t=\"s\"><v>99</v></c></row>"),
         "danificada"},
        {"sheet that is not there", withoutSheet, "falta a folha"},
        {"damaged workbook",
         {{"Tabela 22.csv", csv}, {"TUSS 18.xlsx", "estragada"}},
         "não é uma planilha XLSX"},
        {"archive that is no workbook", {{"TUSS 18.xlsx", nested}}, "não é uma planilha XLSX"},
        {"damaged archive", {{"Tabela 22.csv", csv}, {"b.zip", "estragado"}}, "não é um arquivo ZIP"},
        {"other calendar", Workbook({{"Tabela 22", row}}, {}, " date1904=\"1\""), "a partir de 1904"},
        {"nothing but empty rows", sheet([] {
             std::string rows;
             for (int i = 0; i < 600'000; ++i) // longer than any single token may be
                 rows += "<row/>\n\n";
             return rows;
         }()),
         "nenhuma tabela da TUSS"},
    };
    for (const auto& c : cases) {
        WriteZip(File("pacote.zip"), c.Entries);
        EXPECT_THAT(Refusal(File("pacote.zip")), HasSubstr(c.Reason)) << c.What;
    }
}

TEST_F(ImportRefusals, IsStoppedAndDoneAgain) {
    WriteMany();
    for (const double when : {0.0, 0.3, 0.8}) {
        std::atomic<bool> stop{false};
        TImportOptions options = Options();
        options.Stop = &stop;
        options.OnProgress = [&](const std::string&, double fraction) { stop = stop || fraction >= when; };
        EXPECT_THROW(ImportTerminology(options), EImportInterrupted) << when;
        ExpectUntouched();
    }
    EXPECT_EQ(ImportTerminology(Options()).Tables.at("18").Added, 20000);
}

TEST_F(ImportRefusals, TargetsThatCannotBeWritten) {
    WriteMany();
    TImportOptions options = Options();
    std::string second;
    options.OnProgress = [&](const std::string&, double) {
        try {
            Import({File("Tabela 22.csv")});
        } catch (const ETerminologyNotWritten& error) {
            second = error.Reason();
        }
    };
    ImportTerminology(options);
    EXPECT_EQ(second, "outra importação está em andamento");
    EXPECT_FALSE(fs::exists(Database().string() + ".trava"));

    options.OnProgress = nullptr;
    options.Target = File("Tabela 22.csv") / "tuss.db";
    EXPECT_THROW(ImportTerminology(options), EFolderNotCreated);
    SQLite::Database(File("agenda.db").string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
        .exec("CREATE TABLE CONTATO (NOME TEXT)");
    for (const fs::path& other : {Write("outra.db", std::string(5000, 'x')), File("agenda.db")}) {
        const std::string before = ReadTestFile(other);
        options.Target = other;
        EXPECT_THROW(ImportTerminology(options), ETerminologyNotWritten) << other;
        EXPECT_EQ(ReadTestFile(other), before);
        EXPECT_FALSE(fs::exists(other.string() + ".trava")) << other;
    }
    options.Target = options.Delivered = CONFERIX_TUSS_DB;
    EXPECT_THROW(ImportTerminology(options), ETerminologyNotWritten);
}

} // namespace
} // namespace conferix
