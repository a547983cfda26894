#pragma once

#include "platform/platform.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// The configuration file cannot be read; the text names it.
class EInvalidConfig : public std::runtime_error {
  public:
    EInvalidConfig(const std::filesystem::path& file, const std::string& reason,
                   const std::string& advice = "Corrija ou remova o arquivo.");
};

/// Which rules are switched on ("config.json").
class TConfig {
  public:
    /// Reads the file; where it does not exist, every rule is on. Raises EInvalidConfig; the file is never
    /// touched.
    static TConfig Load(const std::filesystem::path& file);
    /// What the file says now, read afresh. Raises EInvalidConfig.
    static std::vector<std::string> GetEnabledValidations(const std::filesystem::path& file);

    /// "config.json" in the data folder, which is not created.
    static std::filesystem::path DefaultFile();

    /// Keeps others from changing a configuration file as long as the answer lives: held from reading to
    /// writing, so that of two at once neither loses what the other changed. Raises EFolderNotCreated,
    /// EFileNotWritten.
    static std::unique_ptr<TFileLock> Lock(const std::filesystem::path& file);

    /// Writes the file in one step; its folder is made when it is missing. What the program does not know of
    /// the file that was read stays as it was. Raises EFileNotWritten, EFolderNotCreated.
    void Save(const std::filesystem::path& file) const;

    /// Switches on every rule of every kind of file, and forgets names that are no rule's.
    void SetDefaultInitialConfig();

    /// Names of the rules that are on, sorted, each once; names that are no rule's are kept among them.
    const std::vector<std::string>& EnabledValidations() const { return enabled_; }
    /// Those of the names that are no rule's: of another version of the program, or misspelt.
    std::vector<std::string> UnknownValidations() const;
    bool IsEnabled(const std::string& name) const;
    void Enable(const std::string& name);
    void Disable(const std::string& name);

  private:
    std::vector<std::string> enabled_;
    std::string source_ = "{}"; ///< text of the file that was read
};

} // namespace conferix
