// What tests of files need: a folder of their own and environment variables that are put back.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace conferix::testes {

/// An empty folder that is removed with all it holds.
class TPastaTemporaria {
  public:
    TPastaTemporaria() {
        std::string name = (std::filesystem::temp_directory_path() / "conferix-teste-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = std::filesystem::canonical(name);
    }
    TPastaTemporaria(const TPastaTemporaria&) = delete;
    TPastaTemporaria& operator=(const TPastaTemporaria&) = delete;
    ~TPastaTemporaria() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

    /// Names of all that is in the folder.
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

  private:
    std::filesystem::path path_;
};

/// Sets (or, without value, removes) an environment variable for the life of the object.
class TAmbiente {
  public:
    TAmbiente(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
        if (const char* present = std::getenv(name_.c_str())) {
            before_ = present;
        }
        Set(value);
    }
    TAmbiente(const TAmbiente&) = delete;
    TAmbiente& operator=(const TAmbiente&) = delete;
    ~TAmbiente() { Set(before_); }

  private:
    void Set(const std::optional<std::string>& value) {
        if (value) {
            setenv(name_.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name_.c_str());
        }
    }

    std::string name_;
    std::optional<std::string> before_;
};

inline void Gravar(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

inline std::string Ler(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace conferix::testes
