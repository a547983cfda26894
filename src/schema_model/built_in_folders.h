#pragma once

#include <filesystem>

namespace conferix {

/// Folder of the schemas that come with the program, beside its other shared files.
std::filesystem::path BuiltInSchemaFolder();
/// Folder of the model that they are made from.
std::filesystem::path SchemaModelFolder();

} // namespace conferix
