#include "data/database.h"
#include "support/test_files.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

int SchemaVersionOf(const TDatabase& database) {
    return database.CreateConnection()->execAndGet("PRAGMA user_version").getInt();
}

TEST(ApplicationDatabase, IsBuiltInTheDataFolder) {
    const TTemporaryFolder folder;
    const TEnvironment dados("CONFERIX_DADOS", (folder / "dados").string());
    const TDatabase database;
    EXPECT_EQ(database.DatabaseFileName(), folder / "dados/conferix.db");
    EXPECT_FALSE(database.ExistsDatabase());
    EXPECT_THROW(database.CreateConnection(), EDatabaseNotOpened);
    EXPECT_THROW(database.Update(), EDatabaseNotOpened);
    EXPECT_FALSE(database.ExistsDatabase()) << "only Build creates the file";

    database.Build();
    EXPECT_TRUE(database.ExistsDatabase());
    EXPECT_EQ(SchemaVersionOf(database), TDatabase::SchemaVersion());
}

TEST(ApplicationDatabase, MigratesStepByStepAndOnce) {
    const TTemporaryFolder folder;
    const TDatabase database(folder / "conferix.db");
    WriteTestFile(database.DatabaseFileName(), ""); // an empty file is an SQLite database of version 0
    const auto steps = [&] {
        return database.CreateConnection()->execAndGet("SELECT COUNT(*) FROM TB_MIGRACAO").getInt();
    };
    database.Update();
    EXPECT_EQ(SchemaVersionOf(database), TDatabase::SchemaVersion());
    EXPECT_EQ(steps(), TDatabase::SchemaVersion());
    database.CreateConnection()->exec("UPDATE TB_MIGRACAO SET DATA = 'antes'");
    database.Update();
    database.Build();
    EXPECT_EQ(steps(), TDatabase::SchemaVersion());
    EXPECT_EQ(database.CreateConnection()->execAndGet("SELECT DATA FROM TB_MIGRACAO").getString(), "antes");
}

TEST(ApplicationDatabase, LeavesTheFileOfANewerProgramAlone) {
    const TTemporaryFolder folder;
    const TDatabase database(folder / "conferix.db");
    database.Build();
    const std::string newer = std::to_string(TDatabase::SchemaVersion() + 1);
    database.CreateConnection()->exec("PRAGMA user_version = " + newer);
    EXPECT_THAT(TextOf<EDatabaseNotOpened>([&] { database.Update(); }),
                HasSubstr("foi gravado por uma versão mais nova do programa"));
    EXPECT_EQ(std::to_string(SchemaVersionOf(database)), newer);
}

TEST(ApplicationDatabase, NamesTheFileAndTheReasonOfAFailure) {
    const TTemporaryFolder folder;
    WriteTestFile(folder / "texto.db", std::string(3000, 't'));
    fs::create_directory(folder / "pasta.db");
    const struct {
        const char* Name;
        const char* Reason;
    } cases[] = {
        {"texto.db", "o arquivo não é um banco de dados SQLite"},
        {"pasta.db", "é uma pasta, não um arquivo"},
        {"falta/conferix.db", "o arquivo não pôde ser aberto"},
    };
    for (const auto& c : cases) {
        const fs::path file = folder / c.Name;
        EXPECT_EQ(TextOf<EDatabaseNotOpened>([&] { TDatabase(file).Build(); }),
                  "Não foi possível abrir o banco de dados \"" + file.string() + "\": " + c.Reason);
    }
}

} // namespace
} // namespace conferix
