#include "app/config.h"
#include "suporte/suporte.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Config, WithoutFileEveryRuleIsOn) {
    const TTemporaryFolder folder;
    const TConfig config = TConfig::Load(folder.Path() / "config.json");
    EXPECT_TRUE(config.IsEnabled("tiss.mensagem.hash"));
    EXPECT_TRUE(config.IsEnabled("tiss.qualidade.schema"));
    EXPECT_FALSE(config.IsEnabled("tiss.nenhuma"));
    EXPECT_TRUE(std::is_sorted(config.EnabledValidations().begin(), config.EnabledValidations().end()));
}

TEST(Config, ReadsTheListSortedAndOnce) {
    const TTemporaryFolder folder;
    const auto file = folder.Path() / "config.json";
    WriteTestFile(file, R"({"outra": 1, "EnabledValidations": ["b", "a", "b"]})");
    EXPECT_THAT(TConfig::Load(file).EnabledValidations(), ElementsAre("a", "b"));
}

TEST(Config, ADamagedFileIsNamedAndKept) {
    const TTemporaryFolder folder;
    const auto file = folder.Path() / "config.json";
    for (const char* content :
         {"", "{", "[]", "{\"EnabledValidations\": 1}", "{\"EnabledValidations\": [1]}", "\xFF\xFE"}) {
        WriteTestFile(file, content);
        try {
            TConfig::Load(file);
            ADD_FAILURE() << content;
        } catch (const EConfigInvalida& error) {
            EXPECT_THAT(error.what(), HasSubstr(file.string()));
        }
        EXPECT_EQ(ReadTestFile(file), content);
    }
    EXPECT_THROW(TConfig::Load(folder.Path()), EConfigInvalida);
}

} // namespace
} // namespace conferix
