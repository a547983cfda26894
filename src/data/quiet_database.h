#pragma once

#include "data/database.h"

#include <functional>
#include <string>

namespace conferix {

/// The application database for what the program can do without. One that is damaged, locked, read-only or of
/// a newer program stops nobody's work: the first failure is told, and nothing else happens. Waits at most a
/// tenth of a second for another program; for one thread.
class TQuietDatabase {
  public:
    /// `consequence`: sentences for the user about what a failure means. `onFailure`: told once, with the
    /// reason and these.
    TQuietDatabase(TDatabase database, std::string consequence,
                   std::function<void(const std::string&)> onFailure);

    /// Does something with the database, which is migrated first where that is needed. One that is missing is
    /// made with `create`, and left alone without.
    void Use(bool create, const std::function<void(SQLite::Database&)>& action);

  private:
    void Tell(const std::string& reason);

    TDatabase database_;
    std::string consequence_;
    std::function<void(const std::string&)> onFailure_;
    bool told_ = false;
};

} // namespace conferix
