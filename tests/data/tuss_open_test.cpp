#include "data/tuss_connection.h"
#include "data/tuss_writer.h"
#include "support/system.h"
#include "support/test_files.h"

#include <SQLiteCpp/Database.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;

// Files that are no terminology database, each to be refused with its reason and left as it was.
class TussOpen : public testing::Test {
  protected:
    fs::path NewDatabase() const {
        fs::path file = folder_ / "tuss.db";
        TTussWriter writer(file);
        for (int i = 0; i < 2000; ++i)
            writer.Insert(TTuss22{{std::to_string(10'000'000 + i), {}, {}}});
        writer.Commit();
        return file;
    }

    static void Execute(const fs::path& file, const std::string& sql) {
        SQLite::Database(file.string(), SQLite::OPEN_READWRITE).exec(sql);
    }

    static std::string Refusal(const fs::path& file) {
        return TextOf<ETerminologyNotOpened>([&] { const TTussConnection connection(file); });
    }

    static std::string Text(const fs::path& file, const std::string& reason) {
        return "Não foi possível abrir a base de terminologia \"" + file.string() + "\": " + reason;
    }

    TTemporaryFolder folder_;
};

TEST_F(TussOpen, RefusesWhatIsNoFile) {
    fs::create_directory(folder_ / "pasta");
    const bool hasPipe = MakePipe(folder_ / "cano");
    const auto names = folder_.Names();
    const struct {
        fs::path File;
        const char* Reason;
    } cases[] = {
        {folder_ / "falta.db", "o arquivo não existe"},
        {folder_ / "pasta", "é uma pasta, não um arquivo"},
        {folder_ / "cano", hasPipe ? "não é um arquivo comum" : "o arquivo não existe"},
        {"", "o arquivo não existe"},
        {":memory:", "o arquivo não existe"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Refusal(c.File), Text(c.File, c.Reason));
    EXPECT_THAT(folder_.Names(), testing::ContainerEq(names)) << "nothing is created";
}

TEST_F(TussOpen, RefusesForeignFiles) {
    const fs::path file = folder_ / "estranho.db";
    const std::string contents[] = {"uma linha de texto\n", std::string(10'000, 'x'), std::string(4096, '\0'),
                                    "SQLite format 3"};
    for (const std::string& content : contents) {
        WriteTestFile(file, content);
        EXPECT_EQ(Refusal(file), Text(file, "o arquivo não é um banco de dados SQLite"));
        EXPECT_EQ(ReadTestFile(file), content);
    }
    WriteTestFile(file, "");
    EXPECT_EQ(Refusal(file), Text(file, "a tabela TB_TUSS_18 não existe"));
}

TEST_F(TussOpen, NamesTheTableOrColumnThatIsMissing) {
    const struct {
        const char* Change;
        const char* Reason;
    } cases[] = {
        {"DROP TABLE TB_CIDADE", "a tabela TB_CIDADE não existe"},
        {"ALTER TABLE TB_TUSS_64 RENAME TO OUTRA", "a tabela TB_TUSS_64 não existe"},
        {"ALTER TABLE TB_TUSS_22 RENAME COLUMN DATA_INICIO_VIGENCIA TO INICIO",
         "a tabela TB_TUSS_22 não tem a coluna DATA_INICIO_VIGENCIA"},
        {"ALTER TABLE TB_TUSS_87 DROP COLUMN DATA_FIM_IMPLANTACAO",
         "a tabela TB_TUSS_87 não tem a coluna DATA_FIM_IMPLANTACAO"},
    };
    for (const auto& c : cases) {
        const fs::path file = NewDatabase();
        Execute(file, c.Change);
        EXPECT_EQ(Refusal(file), Text(file, c.Reason));
        fs::remove(file);
    }
}

TEST_F(TussOpen, AcceptsTablesOfAnotherMaker) {
    const fs::path file = NewDatabase();
    Execute(file, "DROP TABLE TB_CIDADE; CREATE TABLE tb_cidade (nome TEXT, codigo VARCHAR(7));"
                  "INSERT INTO tb_cidade VALUES ('São Paulo', '3550308')");
    EXPECT_TRUE(TTussConnection(file).HasCity("3550308"));
}

TEST_F(TussOpen, RefusesADamagedFile) {
    const fs::path file = NewDatabase();
    const std::string whole = ReadTestFile(file);

    WriteTestFile(file, whole.substr(0, 1000));
    EXPECT_THAT(Refusal(file), AnyOf(Text(file, "o banco de dados está danificado"),
                                     Text(file, "o arquivo não é um banco de dados SQLite")));

    std::string schemaGone = whole;
    schemaGone.replace(100, 3900, 3900, '\xAA');
    WriteTestFile(file, schemaGone);
    EXPECT_EQ(Refusal(file), Text(file, "o banco de dados está danificado"));

    std::string rowsGone = whole;
    rowsGone.replace(4096, rowsGone.size() - 4096, rowsGone.size() - 4096, '\xAA');
    WriteTestFile(file, rowsGone);
    EXPECT_THAT(TextOf<ETerminologyNotRead>([&] { TTussConnection(file).StartOfValidity("22", "10000001"); }),
                testing::EndsWith(": o banco de dados está danificado (CODIGO = 10000001)"));
}

TEST_F(TussOpen, RefusesAFileThatIsLocked) {
    const fs::path file = NewDatabase();
    SQLite::Database other(file.string(), SQLite::OPEN_READWRITE);
    other.exec("BEGIN EXCLUSIVE");
    EXPECT_EQ(Refusal(file), Text(file, "o banco de dados está em uso por outro programa"));
    other.exec("ROLLBACK");
    EXPECT_TRUE(TTussConnection(file).IsInstalled("22"));
}

TEST_F(TussOpen, RefusesAFileWhoseLastWriterDied) {
    const fs::path file = NewDatabase();
    const fs::path copy = folder_ / "copia.db";
    {
        // Pages go to the file before the end of the transaction when they find no room in the cache.
        SQLite::Database writer(file.string(), SQLite::OPEN_READWRITE);
        writer.exec(
            "PRAGMA cache_size = 1; BEGIN; UPDATE TB_TUSS_22 SET DATA_FIM_IMPLANTACAO = '2020-01-01'");
        fs::copy_file(file, copy);
        fs::copy_file(file.string() + "-journal", copy.string() + "-journal");
    }
    const std::string before = ReadTestFile(copy);
    EXPECT_EQ(Refusal(copy), Text(copy, "a última gravação foi interrompida e precisa ser refeita"));
    EXPECT_EQ(ReadTestFile(copy), before);
}

} // namespace
} // namespace conferix
