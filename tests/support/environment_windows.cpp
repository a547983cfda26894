#include "support/system.h"

#include "platform/platform.h"
#include "support/test_files.h"

#include <windows.h>

namespace conferix {

const char* const kNullDevice = "NUL";

void SetVariable(const std::string& name, const std::optional<std::string>& value) {
    // An empty value removes the variable.
    EXPECT_EQ(_wputenv_s(PathFromText(name).c_str(), PathFromText(value.value_or("")).c_str()), 0);
}

std::optional<int> RunProgram(const std::vector<std::string>& words, const std::filesystem::path& output,
                              const std::filesystem::path& errors) {
    const auto quoted = [](const std::filesystem::path& word) { return L"\"" + word.native() + L"\" "; };
    const auto target = [&](const std::filesystem::path& file) {
        return quoted(file.empty() ? std::filesystem::path(kNullDevice) : file);
    };
    std::filesystem::path program = words.front();
    program.make_preferred();
    std::wstring command = quoted(program);
    for (auto word = words.begin() + 1; word != words.end(); ++word)
        command += quoted(*word);
    // The shell takes one pair of quotes off the whole.
    command = L"\"" + command + L">" + target(output) + L"2>" + target(errors) + L"\"";
    if (SearchPathW(nullptr, program.c_str(), L".exe", 0, nullptr, nullptr) == 0)
        return std::nullopt;
    return _wsystem(command.c_str());
}

bool MakePipe(const std::filesystem::path& /*file*/) {
    return false;
}

bool MakeLink(const std::filesystem::path& /*target*/, const std::filesystem::path& /*link*/,
              bool /*toFolder*/) {
    return false;
}

bool NamesHoldAnything() {
    return false;
}

bool TerminalsHaveNames() {
    return false;
}

// A read-only file is so for everybody.
bool NothingIsWriteProtected() {
    return false;
}

} // namespace conferix
