// Errors of SQLite in the words of the user. For the sources of this folder.
#pragma once

#include <string>

namespace SQLite {
class Exception;
}

namespace conferix {

/// Portuguese text of an SQLite error, in lower case and without full stop; for errors that the
/// program does not know, SQLite's own text.
std::string SqliteReason(const SQLite::Exception& error);

} // namespace conferix
