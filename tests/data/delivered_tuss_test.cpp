#include "data/tuss_connection.h"
#include "support/system.h"
#include "support/test_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(DeliveredTuss, HoldsMunicipalitiesGroupsAndTables) {
    const TTussConnection connection(CONFERIX_TUSS_DB);
    for (const char* code : {"3550308", "355030", "5300108", "530010", "2201919", "220191"})
        EXPECT_TRUE(connection.HasCity(code)) << code;
    for (const char* code : {"3550307", "35503", "0355030", "03550308", "", "999999"})
        EXPECT_FALSE(connection.HasCity(code)) << code;
    const struct {
        const char* Table;
        const char* Code;
        bool Found;
    } terms[] = {{"63", "001", true},  {"63", "1", false}, {"63", "01", false}, {"63", "031", true},
                 {"63", "032", false}, {"87", "00", true}, {"87", "0", false},  {"87", "22", true},
                 {"87", "022", false}, {"87", "90", true}, {"87", "98", true},  {"87", "99", false}};
    for (const auto& c : terms) {
        const TDateLookup answer = connection.StartOfValidity(c.Table, c.Code);
        EXPECT_EQ(answer.Found, c.Found) << c.Table << " " << c.Code;
        EXPECT_FALSE(answer.Date.has_value());
    }
    std::vector<std::int64_t> rows;
    for (const auto& table : connection.Statistics())
        rows.push_back(table.Rows);
    EXPECT_THAT(rows, ElementsAre(0, 0, 0, 0, 31, 68, 0, 0, 2 * 5571));
}

class GeraTuss : public testing::Test {
  protected:
    GeraTuss() {
        fs::create_directory(folder_ / "listas");
        WriteTestFile(folder_ / "listas/tuss63.txt", "# grupos\n001\n002\n");
        WriteTestFile(folder_ / "listas/tuss87.txt", "00\r\n22\r\n");
        WriteTestFile(folder_ / "listas/municipios.txt", "3550308");
    }

    // The exit status; what the program says is in "erros".
    int Run(const std::string& output) const {
        return RunProgram({CONFERIX_GERA_TUSS, (folder_ / "listas").string(), (folder_ / output).string()},
                          {}, folder_ / "erros")
            .value();
    }

    TTemporaryFolder folder_;
};

TEST_F(GeraTuss, WritesTheSameBytesForTheSameLists) {
    ASSERT_EQ(Run("a.db"), 0) << ReadTestFile(folder_ / "erros");
    ASSERT_EQ(Run("b.db"), 0);
    ASSERT_EQ(Run("b.db"), 0) << "over an older file";
    EXPECT_EQ(ReadTestFile(folder_ / "a.db"), ReadTestFile(folder_ / "b.db"));
    EXPECT_THAT(folder_.Names(), ElementsAre("a.db", "b.db", "erros", "listas"));
    const TTussConnection connection(folder_ / "a.db");
    EXPECT_TRUE(connection.StartOfValidity("87", "22").Found);
    EXPECT_TRUE(connection.HasCity("355030"));
}

TEST_F(GeraTuss, RefusesListsThatAreNot) {
    const struct {
        const char* Content;
        const char* Reason;
    } cases[] = {
        {"001\n002\n001\n", "tuss63.txt:3: código repetido"},
        {"001\n02\n", "tuss63.txt:2: esperado um código de 3 dígitos"},
        {"001\n0022\n", "tuss63.txt:2: esperado um código de 3 dígitos"},
        {"001\n\n002\n", "tuss63.txt:2: esperado um código de 3 dígitos"},
        {"# grupos\n00a\n", "tuss63.txt:2: esperado um código de 3 dígitos"},
        {" 001\n", "tuss63.txt:1: esperado um código de 3 dígitos"},
        {"# só isto\n", "tuss63.txt: nenhum código"},
    };
    for (const auto& c : cases) {
        WriteTestFile(folder_ / "listas/tuss63.txt", c.Content);
        EXPECT_NE(Run("a.db"), 0);
        EXPECT_THAT(ReadTestFile(folder_ / "erros"), HasSubstr(c.Reason));
        EXPECT_THAT(folder_.Names(), ElementsAre("erros", "listas")) << "nothing half-written stays";
    }
}

} // namespace
} // namespace conferix
