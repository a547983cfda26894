#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// The configuration file cannot be read; the text names it.
class EConfigInvalida : public std::runtime_error {
  public:
    EConfigInvalida(const std::filesystem::path& file, const std::string& reason);
};

/// Which rules are switched on ("config.json").
class TConfig {
  public:
    /// Reads the file; where it does not exist, every rule is on. Raises EConfigInvalida; the file is never
    /// touched.
    static TConfig Load(const std::filesystem::path& file);

    /// "config.json" in the data folder, which is not created.
    static std::filesystem::path DefaultFile();

    /// Switches on every rule of every kind of file.
    void SetDefaultInitialConfig();

    /// Names of the rules that are on, sorted, each once.
    const std::vector<std::string>& EnabledValidations() const { return enabled_; }
    bool IsEnabled(const std::string& name) const;
    void Disable(const std::string& name);

  private:
    std::vector<std::string> enabled_;
};

} // namespace conferix
