#include "app/installation.h"

#include "data/database_tuss.h"
#include "platform/platform.h"
#include "schema_model/built_in_folders.h"

namespace conferix {

TSchemaFolder InstalledSchemas() {
    try {
        return TSchemaFolder(DataFolder() / "schemas" / "tiss", BuiltInSchemaFolder());
    } catch (const EDataFolderUnknown&) {
        return TSchemaFolder({}, BuiltInSchemaFolder()); // who has no data folder has imported nothing
    }
}

TDBConnectionFactory InstalledTerminology() {
    return TDBConnectionFactory([] { return TDatabaseTuss().CreateConnection(); });
}

} // namespace conferix
