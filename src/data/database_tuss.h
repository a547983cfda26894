// Where the terminology database is.
#pragma once

#include "data/tuss_connection.h"

#include <filesystem>
#include <memory>

namespace conferix {

/// The terminology database file in use.
class TDatabaseTuss {
  public:
    /// `file` where one is given; else the file that CONFERIX_TUSS names; else the imported one, if there
    /// is one; else the delivered one.
    explicit TDatabaseTuss(const std::filesystem::path& file = {});

    /// "tuss.db" beside the executable, or in the share folder of an installed program; never written to.
    static std::filesystem::path DeliveredFileName();
    /// "tuss.db" in the data folder, which imports write. Raises EDataFolderUnknown.
    static std::filesystem::path ImportedFileName();
    /// The file that an import writes: `file` where one is given, else the one that CONFERIX_TUSS names,
    /// else the imported one.
    static std::filesystem::path ImportTarget(const std::filesystem::path& file = {});

    const std::filesystem::path& DatabaseFileName() const { return fileName_; }

    /// Opens the file for reading. Raises ETerminologyNotOpened.
    std::shared_ptr<ITussConnection> CreateConnection() const;

  private:
    std::filesystem::path fileName_;
};

} // namespace conferix
