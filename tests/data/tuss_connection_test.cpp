#include "data/tuss_connection.h"
#include "data/tuss_writer.h"
#include "support/case_file.h"

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
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

fs::path FilledFile(const TTemporaryFolder& folder) {
    TTussWriter writer(folder / "tuss.db");
    Fill(writer);
    writer.Commit();
    return folder / "tuss.db";
}

// The same questions to a file and to a database in memory.
class TussConnection : public testing::TestWithParam<bool> {
  protected:
    std::shared_ptr<TTussConnection> Connect() const {
        return GetParam() ? TTussConnection::InMemory(Fill)
                          : std::make_shared<TTussConnection>(FilledFile(folder_));
    }

    TTemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(, TussConnection, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "InMemory" : "InAFile"; });

std::string Shown(const std::optional<TDate>& date) {
    return date ? FormatIsoDate(*date) : "-";
}

/// The answers to a question: its words, then table and code.
std::vector<std::string> Answers(const TTussConnection& connection, const tests::TCase& question) {
    const auto& [about, what] = question.Inputs[0];
    const std::size_t blank = std::min(what.find(' '), what.size());
    const std::string table = what.substr(0, blank);
    const std::string code = what.substr(std::min(blank + 1, what.size()));
    const auto told = [](const TDateLookup& answer) {
        return answer.Found ? Shown(answer.Date) : std::string("desconhecido");
    };
    const auto yesOrNo = [](bool answer) { return std::string(answer ? "sim" : "não"); };
    std::vector<std::string> lines;
    try {
        if (about == "inicio")
            return {told(connection.StartOfValidity(table, code))};
        if (about == "inativado")
            return {told(connection.Inactivation(table, code))};
        if (about == "instalada")
            return {yesOrNo(connection.IsInstalled(table))};
        if (about == "64 de")
            return {yesOrNo(connection.IsTable64InstalledFor(table))};
        if (about == "64")
            return {yesOrNo(connection.IsTable64Installed())};
        if (about == "cidades")
            return {yesOrNo(connection.AreCitiesInstalled())};
        if (about == "cidade")
            return {yesOrNo(connection.HasCity(table))};
        if (about == "envio")
            for (const TTuss64& row : connection.Table64(table, code))
                lines.push_back(fmt::format("{} {} {} [{}] {} {} {}", row.Tabela, row.Codigo,
                                            row.EnvioConsolidado ? "consolidado" : "individual", row.Grupo,
                                            Shown(row.DataInicioVigencia), Shown(row.DataFimVigencia),
                                            Shown(row.DataFimImplantacao)));
        if (about == "tabelas")
            for (const TTussTableStatistics& row : connection.Statistics())
                lines.push_back(fmt::format("{} {} {}{}", row.Name, row.Rows, Shown(row.NewestStart),
                                            row.Installed ? "" : " ausente"));
    } catch (const ETussTableWithoutEntity& error) {
        return {error.what()};
    }
    return lines;
}

TEST_P(TussConnection, AnswersWhatIsAsked) {
    const auto connection = Connect();
    const auto empty = TTussConnection::InMemory();
    for (int round = 0; round < 2; ++round)
        for (const tests::TCase& question : tests::Cases("data/cases/questions.casos"))
            ExpectLines(question, Answers(question.Section == "vazia" ? *empty : *connection, question));
    EXPECT_FALSE(connection->StartOfValidity("22", std::string("1010\0", 5)).Found);
}

TEST(TussConnectionOnAFile, SaysWhichDateIsMalformed) {
    const TTemporaryFolder folder;
    const fs::path file = FilledFile(folder);
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
    const fs::path file = FilledFile(folder);
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
