// What the program works with where it is installed, unless the user names something else.
#pragma once

#include "app/schema_folder.h"
#include "data/db_connection_factory.h"

namespace conferix {

/// The schema folder of the user, backed by the schemas that come with the program; these alone where nothing
/// tells where the user's data are.
TSchemaFolder InstalledSchemas();

/// Connections to the terminology in use, which is looked for anew at each. For any thread.
TDBConnectionFactory InstalledTerminology();

} // namespace conferix
