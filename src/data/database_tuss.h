// Where the terminology database is.
#pragma once

#include "data/tuss_connection.h"

#include <filesystem>
#include <memory>

namespace conferix {

/// The terminology database file delivered with the program.
class TDatabaseTuss {
  public:
    /// `file` where one is given; else the file that CONFERIX_TUSS names; else "tuss.db" beside the
    /// executable.
    explicit TDatabaseTuss(const std::filesystem::path& file = {});

    const std::filesystem::path& DatabaseFileName() const { return fileName_; }

    /// Opens the file for reading. Raises ETerminologiaNaoAberta.
    std::shared_ptr<ITussConnection> CreateConnection() const;

  private:
    std::filesystem::path fileName_;
};

} // namespace conferix
