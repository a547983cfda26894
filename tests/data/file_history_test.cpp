#include "data/file_history.h"
#include "support/patterns.h"
#include "support/test_files.h"

#include <SQLiteCpp/Database.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class FileHistory : public testing::Test {
  protected:
    TFileHistory Open() {
        return TFileHistory(TDatabase(file_), [this](const std::string& text) { told_.push_back(text); });
    }

    const TTemporaryFolder folder_;
    const std::filesystem::path file_ = folder_ / "conferix.db";
    std::vector<std::string> told_;
};

TEST_F(FileHistory, KeepsTheLastFilesNewestFirst) {
    TFileHistory history = Open();
    EXPECT_THAT(history.RecentFiles(), IsEmpty());
    history.Clear();
    EXPECT_FALSE(std::filesystem::exists(file_)) << "what only reads makes no file";
    for (const char* file : {"/a/lote.xml", "/b/ção 'x'.xml", "/c.xml", "/a/lote.xml"})
        history.NoteOpened(file);
    EXPECT_THAT(history.RecentFiles(), ElementsAre("/a/lote.xml", "/c.xml", "/b/ção 'x'.xml"));
    history.Forget("/c.xml");
    EXPECT_THAT(Open().RecentFiles(), ElementsAre("/a/lote.xml", "/b/ção 'x'.xml")) << "in another run";
    for (int i = 0; i < 2 * TFileHistory::kRecentFiles; ++i)
        history.NoteOpened(std::to_string(i));
    EXPECT_THAT(history.RecentFiles(), SizeIs(TFileHistory::kRecentFiles));
    EXPECT_EQ(history.RecentFiles().front(), std::to_string(2 * TFileHistory::kRecentFiles - 1));
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(FileHistory, ListsWhatValidationsEndedWith) {
    TFileHistory history = Open();
    history.NoteValidated({"/a.xml", "", "4.01.00", false, 6, 1});
    history.NoteValidated({"/b.xml", "", "", std::nullopt, 0, 0});
    history.NoteValidated({"/a.xml", "", "4.01.00", false, 6, 1}); // nothing has changed
    history.NoteValidated({"/a.xml", "", "4.01.00", true, 0, 1});
    std::vector<std::string> lines;
    for (const TValidationRecord& record : history.Validations()) {
        EXPECT_THAT(record.Time, MatchesPattern("20..-..-.. ..:..:.."));
        lines.push_back(record.File + " " + record.Versao + " " +
                        (record.Valid ? std::to_string(*record.Valid) : "-") + " " +
                        std::to_string(record.Errors) + " " + std::to_string(record.Warnings));
    }
    EXPECT_THAT(lines, ElementsAre("/a.xml 4.01.00 1 0 1", "/a.xml 4.01.00 0 6 1", "/b.xml  - 0 0"));
    // Only so many are kept; the number goes on where many were noted already.
    SQLite::Database(file_.string(), SQLite::OPEN_READWRITE)
        .exec("UPDATE sqlite_sequence SET seq = 5001 WHERE name = 'TB_VALIDACAO'");
    history.NoteValidated({"/c.xml", "", "1.06.00", true, 0, 0});
    EXPECT_THAT(history.Validations(), SizeIs(3)) << "the two before, and the new one";
    history.Clear();
    EXPECT_THAT(history.Validations(), IsEmpty());
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(FileHistory, TakesADatabaseOfAnOlderProgramAlong) {
    SQLite::Database old(file_.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    old.exec("CREATE TABLE TB_MIGRACAO (VERSAO INTEGER NOT NULL PRIMARY KEY, DATA TEXT NOT NULL);"
             "INSERT INTO TB_MIGRACAO VALUES (1, '2025-01-01'); PRAGMA user_version = 1");
    TFileHistory history = Open();
    EXPECT_THAT(history.RecentFiles(), IsEmpty());
    history.NoteOpened("/a.xml");
    EXPECT_THAT(history.RecentFiles(), ElementsAre("/a.xml"));
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(FileHistory, AnUnusableDatabaseIsToldOnceAndStopsNobody) {
    const struct {
        const char* Name;
        const char* Reason;
        std::function<void()> Spoil;
    } cases[] = {
        {"text", "não é um banco de dados", [&] { WriteTestFile(file_, std::string(3000, 't')); }},
        {"cut", "danificado",
         [&] {
             Open().NoteOpened("/a.xml");
             std::filesystem::resize_file(file_, 4096);
         }},
        {"folder", "é uma pasta", [&] { std::filesystem::create_directories(file_ / "x"); }},
        {"newer", "versão mais nova",
         [&] {
             TDatabase(file_).Build();
             SQLite::Database(file_.string(), SQLite::OPEN_READWRITE).exec("PRAGMA user_version = 99");
         }},
    };
    for (const auto& c : cases) {
        std::filesystem::remove_all(file_);
        told_.clear();
        c.Spoil();
        TFileHistory history = Open();
        history.NoteOpened("/a.xml");
        history.NoteValidated({"/a.xml", "", "4.01.00", true, 0, 0});
        EXPECT_THAT(history.Validations(), IsEmpty()) << c.Name;
        EXPECT_THAT(told_, ElementsAre(testing::AllOf(HasSubstr("conferix.db"), HasSubstr(c.Reason),
                                                      HasSubstr("não serão guardados"))))
            << c.Name;
    }
}

TEST_F(FileHistory, GoesOnOnceAnotherProgramHasLetGo) {
    TFileHistory history = Open();
    history.NoteOpened("/a.xml");
    {
        SQLite::Database other(file_.string(), SQLite::OPEN_READWRITE);
        other.exec("BEGIN EXCLUSIVE");
        history.NoteOpened("/b.xml");
        EXPECT_THAT(history.RecentFiles(), IsEmpty());
        EXPECT_THAT(told_, ElementsAre(HasSubstr("em uso por outro programa")));
    }
    history.NoteOpened("/c.xml");
    EXPECT_THAT(history.RecentFiles(), ElementsAre("/c.xml", "/a.xml"));
    EXPECT_THAT(told_, SizeIs(1));
}

} // namespace
} // namespace conferix
