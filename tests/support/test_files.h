// What tests of files need: a folder of their own, the examples, and environment variables that are put back.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <set>
#include <string>

namespace conferix {

/// Sets (or, without value, removes) an environment variable.
void SetVariable(const std::string& name, const std::optional<std::string>& value);

/// The path that a UTF-8 text names; a path made of a text alone takes it for one of the locale.
inline std::filesystem::path PathOf(const std::string& text) {
    return {std::u8string(text.begin(), text.end())};
}

/// An empty folder that is removed with all it holds.
class TTemporaryFolder {
  public:
    TTemporaryFolder() {
        std::random_device random;
        do {
            path_ = std::filesystem::temp_directory_path() / ("conferix-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(path_));
        path_ = std::filesystem::canonical(path_);
    }
    ~TTemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TTemporaryFolder(const TTemporaryFolder&) = delete;
    TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / PathOf(name); }
    /// Names of all that is in the folder.
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.insert(entry.path().filename().string());
        return names;
    }

  private:
    std::filesystem::path path_;
};

/// Sets (or, without value, removes) an environment variable for the life of the object.
class TEnvironment {
  public:
    TEnvironment(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
        if (const char* present = std::getenv(name_.c_str()))
            before_ = present;
        Set(value);
    }
    TEnvironment(const TEnvironment&) = delete;
    TEnvironment& operator=(const TEnvironment&) = delete;
    ~TEnvironment() { Set(before_); }

    void Set(const std::optional<std::string>& value) const { SetVariable(name_, value); }

  private:
    std::string name_;
    std::optional<std::string> before_;
};

/// An example file of the repository.
inline std::filesystem::path Example(const std::string& name) {
    return std::filesystem::path(CONFERIX_FONTE) / "exemplos" / name;
}

/// The text of the error that an action ends in.
template<class Error, class Action>
std::string TextOf(Action&& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing was raised";
}

inline std::string ReadTestFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream) << file;
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void WriteTestFile(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream stream(file, std::ios::binary);
    stream << bytes;
    ASSERT_TRUE(stream.flush()) << file;
}

} // namespace conferix
