// Makes publications, imports them and shows what the database then holds.
#pragma once

#include "data/import/import_errors.h"
#include "data/import/tuss_importer.h"
#include "support/test_files.h"
#include "support/test_zip.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace conferix {

/// The entries of a workbook. A sheet is its name and the XML of its rows.
inline std::vector<TTestEntry> Workbook(const std::vector<std::pair<std::string, std::string>>& sheets,
                                        const std::vector<std::string>& shared = {},
                                        const std::string& properties = "") {
    std::string list;
    std::string relations;
    std::vector<TTestEntry> entries;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        list +=
            fmt::format("<sheet name=\"{}\" sheetId=\"{}\" r:id=\"rId{}\"/>", sheets[i].first, i + 1, i + 1);
        relations += fmt::format("<Relationship Id=\"rId{}\" Type=\"t\" Target=\"worksheets/folha{}.xml\"/>",
                                 i + 1, i);
        entries.push_back({fmt::format("xl/worksheets/folha{}.xml", i),
                           "<worksheet><sheetData>" + sheets[i].second + "</sheetData></worksheet>"});
    }
    std::string texts;
    for (const std::string& text : shared)
        texts += "<si><t>" + text + "</t></si>";
    entries.push_back({"xl/sharedStrings.xml", "<sst>" + texts + "</sst>"});
    entries.push_back({"xl/_rels/workbook.xml.rels", "<Relationships>" + relations + "</Relationships>"});
    entries.push_back({"xl/workbook.xml", "<workbook xmlns:r=\"r\"><workbookPr" + properties + "/><sheets>" +
                                              list + "</sheets></workbook>"});
    return entries;
}

/// A row of inline texts.
inline std::string InlineRow(int number, const std::vector<std::string>& cells) {
    std::string row = fmt::format("<row r=\"{}\">", number);
    for (std::size_t i = 0; i < cells.size(); ++i)
        row += fmt::format("<c r=\"{}{}\" t=\"inlineStr\"><is><t>{}</t></is></c>", static_cast<char>('A' + i),
                           number, cells[i]);
    return row + "</row>";
}

class Imports : public testing::Test {
  protected:
    std::filesystem::path File(const std::string& name) const { return folder_ / name; }
    std::filesystem::path Database() const { return folder_ / "dados/tuss.db"; }

    std::filesystem::path Write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories(File(name).parent_path());
        WriteTestFile(File(name), bytes);
        return File(name);
    }

    TImportReport Import(const std::vector<std::filesystem::path>& sources, bool replace = false) const {
        TImportOptions options;
        options.Sources = sources;
        options.Target = Database();
        options.Replace = replace;
        return ImportTerminology(options);
    }

    void Forget() const { std::filesystem::remove_all(folder_ / "dados"); }

    /// All that the database knows, a line a row ("TABLE|value|value"), in a fixed order, "~" for NULL; but
    /// the list of imports. `tables`: only these.
    std::vector<std::string> Dump(std::vector<std::string> tables = {}) const {
        if (tables.empty())
            tables = {"TB_TUSS_18",
                      "TB_TUSS_19",
                      "TB_TUSS_20",
                      "TB_TUSS_22",
                      "TB_TUSS_63",
                      "TB_TUSS_87",
                      "TB_TUSS_64",
                      "TB_TUSS_INATIVADO",
                      "TB_CIDADE",
                      "TB_TUSS_PERIODO",
                      "TB_TUSS_64_SEM_TABELA",
                      "TB_TUSS_TERMO"};
        const SQLite::Database database(Database().string());
        std::vector<std::string> lines;
        for (const std::string& table : tables) {
            const std::string from =
                table == "TB_TUSS_TERMO" ? "(SELECT TABELA, CODIGO, TERMO FROM TB_TUSS_TERMO)" : table;
            SQLite::Statement query(database, "SELECT * FROM " + from);
            std::vector<std::string> ofTable;
            while (query.executeStep()) {
                std::string line = table.substr(3);
                for (int i = 0; i < query.getColumnCount(); ++i)
                    line += "|" + (query.getColumn(i).isNull() ? "~" : query.getColumn(i).getString());
                ofTable.push_back(line);
            }
            std::sort(ofTable.begin(), ofTable.end());
            lines.insert(lines.end(), ofTable.begin(), ofTable.end());
        }
        return lines;
    }

    TTemporaryFolder folder_;
};

/// Imports into a database that holds the terms of an older one.
class ImportsOverOlder : public Imports {
  protected:
    void SetUp() override {
        Import({Write("Tabela 22.csv", kHeader + "10101012;Consulta\n")});
        before_ = ReadTestFile(Database());
    }

    void ExpectUntouched() const {
        EXPECT_EQ(ReadTestFile(Database()), before_);
        EXPECT_FALSE(std::filesystem::exists(Database().string() + ".importacao"));
        EXPECT_FALSE(std::filesystem::exists(Database().string() + ".trava"));
    }

    TImportOptions Options() const {
        TImportOptions options;
        options.Sources = {File("muitos/Tabela 18.csv")};
        options.Target = Database();
        return options;
    }

    /// A file that takes a while.
    void WriteMany() const {
        std::string text = kHeader;
        for (int i = 0; i < 20000; ++i)
            text += fmt::format("6{:07d};Termo de número {}\n", i, i);
        Write("muitos/Tabela 18.csv", text);
    }

    inline static const std::string kHeader = "Código do Termo;Termo\n";
    std::string before_;
};

} // namespace conferix
