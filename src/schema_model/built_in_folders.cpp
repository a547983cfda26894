#include "schema_model/built_in_folders.h"

#include "platform/share_folder.h"

namespace conferix {

std::filesystem::path BuiltInSchemaFolder() {
    return ShareFolder() / "schemas" / "tiss";
}

std::filesystem::path SchemaModelFolder() {
    return ShareFolder() / "esquemas";
}

} // namespace conferix
