#include "schema_model/built_in_folders.h"

#include "platform/platform.h"

namespace conferix {

namespace {

std::filesystem::path ShareFolder() {
    return ExecutablePath().parent_path().parent_path() / "share" / "conferix";
}

} // namespace

std::filesystem::path BuiltInSchemaFolder() {
    return ShareFolder() / "schemas" / "tiss";
}

std::filesystem::path SchemaModelFolder() {
    return ShareFolder() / "esquemas";
}

} // namespace conferix
