#include "data/notice_box.h"
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

class NoticeBox : public testing::Test {
  protected:
    TNoticeBox Open() {
        return TNoticeBox(TDatabase(file_), [this](const std::string& text) { told_.push_back(text); });
    }
    /// Titles, newest first.
    std::vector<std::string> Titles(bool alsoRead = false) {
        std::vector<std::string> titles;
        for (const TNotice& notice : Open().Notices(alsoRead))
            titles.push_back(notice.Title);
        return titles;
    }
    static TNotice Notice(const std::string& subject, const std::string& key) {
        return {.Subject = subject, .Key = key, .Title = subject + key, .Text = "texto"};
    }

    const TTemporaryFolder folder_;
    const std::filesystem::path file_ = folder_ / "conferix.db";
    std::vector<std::string> told_;
};

TEST_F(NoticeBox, TellsEachThingOnce) {
    EXPECT_THAT(Titles(), IsEmpty());
    EXPECT_FALSE(Open().MarkRead(1));
    Open().SetAll("x", {});
    EXPECT_FALSE(std::filesystem::exists(file_)) << "what only reads makes no file";
    for (const char* key : {"1", "2", "1", "3"})
        Open().Add(Notice("a", key));
    EXPECT_THAT(Titles(), ElementsAre("a3", "a2", "a1"));
    EXPECT_TRUE(Open().MarkRead(2));
    EXPECT_TRUE(Open().Delete(3));
    EXPECT_FALSE(Open().Delete(3));
    EXPECT_FALSE(Open().MarkRead(3)) << "it is gone";
    for (const char* key : {"1", "2", "3"})
        Open().Add(Notice("a", key));
    EXPECT_THAT(Titles(), ElementsAre("a1")) << "neither what was read nor what was deleted comes back";
    EXPECT_THAT(Titles(true), ElementsAre("a2", "a1"));
    EXPECT_EQ(Open().Unread(), 1);
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(NoticeBox, ForgetsWhatHoldsNoLonger) {
    Open().Add(Notice("b", "1"));
    const std::vector<TNotice> before = {Notice("a", "1"), Notice("a", "2")};
    Open().SetAll("a", before);
    Open().MarkRead(Open().Notices(true).back().Number + 1);
    const auto written = std::filesystem::last_write_time(file_);
    Open().SetAll("a", before);
    EXPECT_EQ(std::filesystem::last_write_time(file_), written) << "nothing is new";
    const std::vector<TNotice> after = {Notice("a", "1"), Notice("a", "3")};
    Open().SetAll("a", after);
    EXPECT_THAT(Titles(), ElementsAre("a3", "b1"));
    EXPECT_THAT(Titles(true), ElementsAre("a3", "a1", "b1"));
}

TEST_F(NoticeBox, StopsNobodyWhereItCannotBeUsed) {
    WriteTestFile(file_, "isto não é um banco de dados");
    TNoticeBox box = Open();
    box.Add(Notice("a", "1"));
    EXPECT_THAT(box.Notices(true), IsEmpty());
    EXPECT_EQ(box.Unread(), 0);
    EXPECT_FALSE(box.Delete(1));
    EXPECT_THAT(told_, ElementsAre(HasSubstr("Os avisos não serão guardados")));
}

} // namespace
} // namespace conferix
