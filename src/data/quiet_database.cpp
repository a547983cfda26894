#include "data/quiet_database.h"

#include "data/sqlite_reason.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>

#include <utility>

namespace conferix {

namespace {

constexpr int kBusyTimeoutMs = 100; ///< the window waits for it

} // namespace

TQuietDatabase::TQuietDatabase(TDatabase database, std::string consequence,
                               std::function<void(const std::string&)> onFailure)
    : database_(std::move(database)), consequence_(std::move(consequence)), onFailure_(std::move(onFailure)) {
}

void TQuietDatabase::Use(bool create, const std::function<void(SQLite::Database&)>& action) {
    try {
        if (!database_.ExistsDatabase()) {
            if (!create)
                return;
            database_.Build();
        }
        auto connection = database_.CreateConnection();
        connection->setBusyTimeout(kBusyTimeoutMs);
        if (connection->execAndGet("PRAGMA user_version").getInt() != TDatabase::SchemaVersion())
            database_.Update();
        action(*connection);
    } catch (const SQLite::Exception& error) {
        Tell(EDatabaseNotOpened(database_.DatabaseFileName(), SqliteReason(error)).what());
    } catch (const std::exception& error) {
        Tell(error.what());
    }
}

void TQuietDatabase::Tell(const std::string& reason) {
    if (!std::exchange(told_, true) && onFailure_)
        onFailure_(reason + ". " + consequence_);
}

} // namespace conferix
