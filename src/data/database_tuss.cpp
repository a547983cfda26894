#include "data/database_tuss.h"

#include "platform/platform.h"
#include "platform/share_folder.h"

#include <string>

namespace conferix {

namespace fs = std::filesystem;

namespace {

fs::path NamedByEnvironment() {
    return PathFromText(GetEnvironment("CONFERIX_TUSS"));
}

fs::path DefaultFileName() {
    fs::path named = NamedByEnvironment();
    if (!named.empty()) {
        return named;
    }
    std::error_code ignored;
    try {
        fs::path imported = TDatabaseTuss::ImportedFileName();
        if (fs::exists(imported, ignored)) {
            return imported;
        }
    } catch (const EDataFolderUnknown&) {
        // Who has no data folder has imported nothing.
    }
    return TDatabaseTuss::DeliveredFileName();
}

} // namespace

TDatabaseTuss::TDatabaseTuss(const fs::path& file) : fileName_(file.empty() ? DefaultFileName() : file) {}

fs::path TDatabaseTuss::DeliveredFileName() {
    std::error_code ignored;
    fs::path beside = ExecutablePath().parent_path() / "tuss.db";
    fs::path shared = ShareFolder() / "tuss.db";
    return !fs::exists(beside, ignored) && fs::exists(shared, ignored) ? shared : beside;
}

fs::path TDatabaseTuss::ImportedFileName() {
    return DataFolder() / "tuss.db";
}

fs::path TDatabaseTuss::ImportTarget(const fs::path& file) {
    const fs::path named = file.empty() ? NamedByEnvironment() : file;
    return named.empty() ? ImportedFileName() : named;
}

std::shared_ptr<ITussConnection> TDatabaseTuss::CreateConnection() const {
    return std::make_shared<TTussConnection>(fileName_);
}

} // namespace conferix
