#pragma once

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>

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

} // namespace conferix
