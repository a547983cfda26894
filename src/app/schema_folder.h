#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// Where the schema file of a version comes from.
enum class TSchemaOrigin { Missing, BuiltIn, Imported };

/// The user's schema files, backed by those that come with the program. A file that the user brought along or
/// changed goes first. One that comes with the program is read where it came with the program; only where it
/// imports a file of the user, it is copied beside that, and copied anew when a later program has another.
class TSchemaFolder {
  public:
    TSchemaFolder() = default;
    /// `builtIn`: folder of the program's own schemas; empty for a folder that stands for itself.
    explicit TSchemaFolder(std::filesystem::path folder, std::filesystem::path builtIn = {})
        : folder_(std::move(folder)), builtIn_(std::move(builtIn)) {}

    const std::filesystem::path& Folder() const { return folder_; }

    /// The file to be read for a main schema; where there is none at all, its place in the folder.
    std::filesystem::path Locate(const std::string& fileName) const;
    /// The same without copying anything.
    std::filesystem::path Find(const std::string& fileName) const;
    TSchemaOrigin Origin(const std::string& fileName) const;
    /// Names of all *.xsd files in reach, sorted. Raises EFileNotRead.
    std::vector<std::string> FileNames() const;

  private:
    bool IsImported(const std::string& fileName) const;
    bool UsesImported(const std::string& fileName, std::vector<std::string>& names) const;
    void Refresh(const std::string& fileName) const;

    std::filesystem::path folder_;
    std::filesystem::path builtIn_;
};

} // namespace conferix
