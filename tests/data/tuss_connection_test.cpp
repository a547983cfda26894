#include "data/tuss_connection.h"
#include "data/tuss_writer.h"
#include "support/test_files.h"

#include <SQLiteCpp/Database.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr TDate kStart = 2020y / 1 / 31;
constexpr TDate kEnd = 2021y / 12 / 31;

void Fill(TTussWriter& writer) {
    writer.Insert(TTuss22{{"10101012", kStart, kEnd}});
    writer.Insert(TTuss22{{"1010", {}, {}}});
    writer.Insert(TTuss18{{"0060", kEnd, {}}});
    writer.Insert("19", {"60", kStart, {}});
    writer.Insert(TTussInativado{"22", "40501248", kEnd});
    writer.Insert(TTussInativado{"98", "40501248", kStart});
    writer.Insert(TTussInativado{"00", "1", {}});
    writer.Insert(TTussInativado{"63", "031", kEnd});
    writer.Insert(TTuss64{"22", "10101012", true, "001", 2022y / 1 / 1, {}, {}});
    writer.Insert(TTuss64{"22", "10101012", false, "", kStart, kEnd, 2020y / 6 / 30});
    writer.Insert(TTuss64{"22", "10101012", true, "029", {}, kStart, {}});
    writer.Insert(TTuss64{"19", "10101012", true, "030", kStart, {}, {}});
    writer.Insert(TCidade{"3550308"});
}

// The same questions to a file and to a database in memory.
class TussConnection : public testing::TestWithParam<bool> {
  protected:
    std::shared_ptr<TTussConnection> Connect(const std::function<void(TTussWriter&)>& fill) const {
        if (GetParam())
            return TTussConnection::InMemory(fill);
        const fs::path file = folder_ / "tuss.db";
        {
            TTussWriter writer(file);
            fill(writer);
            writer.Commit();
        }
        return std::make_shared<TTussConnection>(file);
    }

    TTemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(, TussConnection, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "InMemory" : "InAFile"; });

TEST_P(TussConnection, FindsTheStartOfValidity) {
    const auto connection = Connect(Fill);
    const struct {
        const char* Table;
        const char* Code;
        bool Found;
        std::optional<TDate> Date;
    } cases[] = {
        {"22", "10101012", true, kStart}, {"22", "1010", true, {}},      {"18", "0060", true, kEnd},
        {"18", "60", false, {}},          {"19", "60", true, kStart},    {"19", "0060", false, {}},
        {"20", "10101012", false, {}},    {"22", "40501248", false, {}}, {"63", "", false, {}},
        {"22", "1010%", false, {}},       {"22", " 1010", false, {}},    {"87", "' OR 1=1 --", false, {}},
    };
    for (int round = 0; round < 2; ++round) {
        for (const auto& c : cases) {
            const TDateLookup answer = connection->StartOfValidity(c.Table, c.Code);
            EXPECT_EQ(answer.Found, c.Found) << c.Table << " " << c.Code;
            EXPECT_EQ(answer.Date, c.Date) << c.Table << " " << c.Code;
        }
    }
    EXPECT_THROW(connection->StartOfValidity("64", "10101012"), ETussTableWithoutEntity);
    EXPECT_FALSE(connection->StartOfValidity("22", std::string("1010\0", 5)).Found);
}

TEST_P(TussConnection, FindsInactivatedTermsOfAnyTable) {
    const auto connection = Connect(Fill);
    EXPECT_EQ(connection->Inactivation("22", "40501248").Date, kEnd);
    EXPECT_EQ(connection->Inactivation("98", "40501248").Date, kStart);
    EXPECT_TRUE(connection->Inactivation("00", "1").Found);
    EXPECT_FALSE(connection->Inactivation("00", "1").Date.has_value());
    for (const auto& [table, code] :
         {std::pair("19", "40501248"), {"22", "10101012"}, {"00", "01"}, {"0", "1"}})
        EXPECT_FALSE(connection->Inactivation(table, code).Found) << table << " " << code;
}

TEST_P(TussConnection, GivesThePeriodsOfTable64InOrderOfTheirStart) {
    const auto connection = Connect(Fill);
    const auto rows = connection->Table64("22", "10101012");
    ASSERT_EQ(rows.size(), 3U);
    const TTuss64 expected[] = {
        {"22", "10101012", true, "029", {}, kStart, {}},
        {"22", "10101012", false, "", kStart, kEnd, 2020y / 6 / 30},
        {"22", "10101012", true, "001", 2022y / 1 / 1, {}, {}},
    };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].Tabela, expected[i].Tabela);
        EXPECT_EQ(rows[i].Codigo, expected[i].Codigo);
        EXPECT_EQ(rows[i].EnvioConsolidado, expected[i].EnvioConsolidado);
        EXPECT_EQ(rows[i].Grupo, expected[i].Grupo);
        EXPECT_EQ(rows[i].DataInicioVigencia, expected[i].DataInicioVigencia);
        EXPECT_EQ(rows[i].DataFimVigencia, expected[i].DataFimVigencia);
        EXPECT_EQ(rows[i].DataFimImplantacao, expected[i].DataFimImplantacao);
    }
    EXPECT_EQ(connection->Table64("19", "10101012").size(), 1U);
    EXPECT_TRUE(connection->Table64("22", "010101012").empty());
}

TEST_P(TussConnection, TellsWhichTablesHaveRows) {
    const auto connection = Connect(Fill);
    for (const char* table : {"18", "19", "22", "63"}) // 63: inactivated terms only
        EXPECT_TRUE(connection->IsInstalled(table)) << table;
    for (const char* table : {"20", "87"})
        EXPECT_FALSE(connection->IsInstalled(table)) << table;
    for (const std::string table : {"18", "19", "20", "22"})
        EXPECT_EQ(connection->IsTable64InstalledFor(table), table == "19" || table == "22") << table;
    EXPECT_TRUE(connection->IsTable64Installed());
    EXPECT_TRUE(connection->AreCitiesInstalled());
    EXPECT_TRUE(connection->HasCity("3550308"));
    EXPECT_FALSE(connection->HasCity("355030"));
    EXPECT_THROW(connection->IsInstalled("98"), ETussTableWithoutEntity);
    EXPECT_THROW(connection->IsTable64InstalledFor("98"), ETussTableWithoutEntity);

    const auto empty = TTussConnection::InMemory();
    EXPECT_FALSE(empty->IsTable64Installed());
    EXPECT_FALSE(empty->IsTable64InstalledFor("22"));
    EXPECT_FALSE(empty->AreCitiesInstalled());
}

TEST_P(TussConnection, CountsRowsAndNamesTheNewestStart) {
    const auto statistics = Connect(Fill)->Statistics();
    std::vector<std::string> lines;
    lines.reserve(statistics.size());
    for (const TTussTableStatistics& table : statistics) {
        lines.push_back(table.Name + " " + std::to_string(table.Rows) + " " +
                        (table.NewestStart ? FormatIsoDate(*table.NewestStart) : "-") +
                        (table.Installed ? "" : " absent"));
    }
    EXPECT_THAT(lines,
                ElementsAre("TB_TUSS_18 1 2021-12-31", "TB_TUSS_19 1 2020-01-31", "TB_TUSS_20 0 - absent",
                            "TB_TUSS_22 2 2020-01-31", "TB_TUSS_63 0 -", "TB_TUSS_87 0 - absent",
                            "TB_TUSS_64 4 2022-01-01", "TB_TUSS_INATIVADO 4 -", "TB_CIDADE 1 -"));
}

TEST(TussConnectionOnAFile, SaysWhichDateIsMalformed) {
    const TTemporaryFolder folder;
    const fs::path file = folder / "tuss.db";
    {
        TTussWriter writer(file);
        Fill(writer);
        writer.Commit();
    }
    for (const std::string value : {"'31/01/2020'", "43861", "43861.5", "''", "'2020-02-30'"}) {
        SQLite::Database(file.string(), SQLite::OPEN_READWRITE)
            .exec("UPDATE TB_TUSS_22 SET DATA_INICIO_VIGENCIA = " + value + " WHERE CODIGO = '10101012'");
        const TTussConnection connection(file);
        EXPECT_THAT(TextOf<ETerminologyNotRead>([&] { connection.StartOfValidity("22", "10101012"); }),
                    AllOf(HasSubstr(file.string()), HasSubstr("DATA_INICIO_VIGENCIA"),
                          HasSubstr("não tem a forma AAAA-MM-DD")));
        EXPECT_TRUE(connection.StartOfValidity("22", "1010").Found) << "the connection is still of use";
    }
}

TEST(TussConnectionOnAFile, SharesTheFileWithAWriterAndLeavesNothingBesideIt) {
    const TTemporaryFolder folder;
    const fs::path file = folder / "tuss.db";
    {
        TTussWriter writer(file);
        Fill(writer);
        writer.Commit();
    }
    const std::string before = ReadTestFile(file);
    {
        const TTussConnection connection(file);
        const TTussConnection another(file);
        TTussWriter writer(file);
        writer.Insert(TTuss20{{"90000001", {}, {}}});
        EXPECT_TRUE(connection.HasCity("3550308"));
        EXPECT_FALSE(connection.IsInstalled("20"));
        EXPECT_FALSE(another.StartOfValidity("20", "90000001").Found);
    }
    EXPECT_EQ(ReadTestFile(file), before) << "rows that were not committed";
    EXPECT_THAT(folder.Names(), ElementsAre("tuss.db"));
}

TEST(TussWriter, RefusesASecondRowOfAKeyAndKeepsNothingWithoutCommit) {
    const TTemporaryFolder folder;
    const fs::path file = folder / "tuss.db";
    const std::function<void(TTussWriter&)> repeated[] = {
        [](TTussWriter& w) {
            w.Insert(TTuss22{{"10101012", {}, {}}});
        },
        [](TTussWriter& w) {
            w.Insert(TTussInativado{"22", "40501248", {}});
        },
        [](TTussWriter& w) {
            w.Insert(TTuss64{"22", "10101012", false, "", kStart, {}, {}});
        },
        [](TTussWriter& w) {
            w.Insert(TTuss64{"22", "10101012", false, "", {}, {}, {}});
        },
        [](TTussWriter& w) { w.Insert(TCidade{"3550308"}); },
    };
    for (const auto& insert : repeated) {
        TTussWriter writer(file);
        Fill(writer);
        EXPECT_THAT(TextOf<ETerminologyNotWritten>([&] { insert(writer); }),
                    AllOf(HasSubstr("já existe uma linha com essa chave"), HasSubstr("CODIGO = ")));
    }
    TTussWriter writer(file);
    writer.Insert(TCidade{"3550308"});
    writer.Commit();
    EXPECT_FALSE(TTussConnection(file).IsInstalled("22"));
    EXPECT_TRUE(TTussConnection(file).HasCity("3550308"));
}

TEST(TussWriter, AddsToAnExistingFileAndRefusesWhatIsNoDatabase) {
    const TTemporaryFolder folder;
    for (const char* code : {"1111111", "2222222"}) {
        TTussWriter writer(folder / "tuss.db");
        writer.Insert(TCidade{code});
        writer.Commit();
    }
    EXPECT_EQ(TTussConnection(folder / "tuss.db").Statistics().back().Rows, 2);

    const std::string text(5000, 't');
    WriteTestFile(folder / "texto.db", text);
    EXPECT_THROW(TTussWriter(folder / "texto.db"), ETerminologyNotWritten);
    EXPECT_THROW(TTussWriter(folder / "falta/tuss.db"), ETerminologyNotWritten);
    EXPECT_EQ(ReadTestFile(folder / "texto.db"), text);
}

} // namespace
} // namespace conferix
