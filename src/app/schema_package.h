#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A package that is no ZIP file, or one that is not to be unpacked; the text names it and says why.
class EInvalidPackage : public std::runtime_error {
  public:
    EInvalidPackage(const std::filesystem::path& file, const std::string& reason);
};

/// The *.xsd files of one folder of a package: content by bare name.
using TPackageFolder = std::map<std::string, std::string>;

/// Reads the *.xsd files of a ZIP file, by the folder in which they lie in it; other files are passed over.
/// Refuses packages with entries that are links or would leave the folder, and those that unpack to more than
/// schemas ever take. Raises EInvalidPackage, EFileNotRead.
std::map<std::string, TPackageFolder> ReadSchemaPackage(const std::filesystem::path& file);

/// The folders of a package, each with what its schemas need of the others.
class TPackageCompletion {
  public:
    explicit TPackageCompletion(const std::map<std::string, TPackageFolder>& package);

    /// The main schemas of a folder and the files that they need, directly or through one another, by name:
    /// the folder's own, else the first of that name. Raises EInvalidPackage where `file`, the package, asks
    /// for too much.
    std::map<std::string, const std::string*> Needed(const TPackageFolder& own,
                                                     const std::filesystem::path& file);

  private:
    const std::vector<std::string>& ReferencesOf(const std::string& content);

    std::map<std::string_view, const std::string*> contents_; ///< by name
    std::map<const std::string*, std::vector<std::string>> references_;
    std::size_t copies_ = 0;
};

} // namespace conferix
