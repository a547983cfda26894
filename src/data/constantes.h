// The program's folders.
#pragma once

#include <filesystem>

namespace conferix {

/// Folders of the program's data; each is created when it is missing (raises EFolderNotCreated,
/// EDataFolderUnknown).
class TConstantes {
  public:
    /// The data folder: configuration, application database, log.
    static std::filesystem::path ValidadorDirectory();
    /// The folder of the XML schemas: "schemas/tiss" in the data folder.
    static std::filesystem::path SchemaTissDirectory();
};

} // namespace conferix
