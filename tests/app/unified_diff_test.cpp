// Diffs as another program reads them.
#include "app/unified_diff.h"
#include "support/system.h"
#include "support/test_files.h"

#include <random>
#include <string>
#include <vector>

namespace conferix {
namespace {

TEST(UnifiedDiffTest, AppliedToTheOldTextGivesTheNewOne) {
    const TTemporaryFolder folder;
    std::vector<std::string> expected;
    std::string diffs; // of many files, so that they are applied at once
    const auto add = [&](const std::string& before, const std::string& after) {
        const std::string file = std::to_string(expected.size());
        WriteTestFile(folder / file, before);
        diffs += UnifiedDiff(before, after, file, file);
        expected.push_back(after);
    };
    std::mt19937 random(7);
    const auto text = [&](int lines) {
        std::string all;
        for (int i = 0; i < lines; ++i)
            all += std::string(1, static_cast<char>('a' + random() % 4)) + "\n";
        if (!all.empty() && random() % 4 == 0)
            all.pop_back();
        return all;
    };
    for (int round = 0; round < 500; ++round) {
        const std::string before = text(static_cast<int>(random() % 40));
        const std::string after =
            random() % 3 == 0 ? text(static_cast<int>(random() % 40)) : before + text(3);
        add(before, after);
    }
    add(text(3000), text(2900)); // too long for a table of common lines
    WriteTestFile(folder / "diff", diffs);
    ASSERT_EQ(RunProgram({"patch", "-d", folder.Path().string(), "-s", "-F0", "-p0", "-i", "diff"}), 0);
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(ReadTestFile(folder / std::to_string(i)), expected[i]) << i;
}

} // namespace
} // namespace conferix
