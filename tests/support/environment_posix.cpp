#include "support/system.h"
#include "support/test_files.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace conferix {

const char* const kNullDevice = "/dev/null";

void SetVariable(const std::string& name, const std::optional<std::string>& value) {
    if (value)
        setenv(name.c_str(), value->c_str(), 1);
    else
        unsetenv(name.c_str());
}

std::optional<int> RunProgram(const std::vector<std::string>& words, const std::filesystem::path& output,
                              const std::filesystem::path& errors) {
    const auto quoted = [](const std::string& word) { return "'" + word + "' "; };
    const auto target = [&](const std::filesystem::path& file) {
        return quoted(file.empty() ? kNullDevice : file.string());
    };
    std::string command;
    for (const std::string& word : words)
        command += quoted(word);
    command += ">" + target(output) + "2>" + target(errors);
    const int status = std::system(command.c_str());
    EXPECT_TRUE(WIFEXITED(status)) << command;
    constexpr int kNotFound = 127; // by the shell
    return WEXITSTATUS(status) == kNotFound ? std::nullopt : std::optional(WEXITSTATUS(status));
}

bool MakePipe(const std::filesystem::path& file) {
    EXPECT_EQ(mkfifo(file.c_str(), 0600), 0) << file;
    return true;
}

bool MakeLink(const std::filesystem::path& target, const std::filesystem::path& link, bool toFolder) {
    if (toFolder)
        std::filesystem::create_directory_symlink(target, link);
    else
        std::filesystem::create_symlink(target, link);
    return true;
}

bool NamesHoldAnything() {
    return true;
}

bool TerminalsHaveNames() {
    return true;
}

bool NothingIsWriteProtected() {
    return geteuid() == 0;
}

} // namespace conferix
