#include "data/database_tuss.h"

#include "sistema/sistema.h"

#include <string>

namespace conferix {

namespace fs = std::filesystem;

namespace {

fs::path DefaultFileName() {
    const std::string named = GetEnvironment("CONFERIX_TUSS");
    return named.empty() ? ExecutablePath().parent_path() / "tuss.db" : PathFromText(named);
}

} // namespace

TDatabaseTuss::TDatabaseTuss(const fs::path& file) : fileName_(file.empty() ? DefaultFileName() : file) {}

std::shared_ptr<ITussConnection> TDatabaseTuss::CreateConnection() const {
    return std::make_shared<TTussConnection>(fileName_);
}

} // namespace conferix
