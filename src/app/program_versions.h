#pragma once

#include "app/schema_folder.h"

#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// What files are judged by and how new it is, as label and text: schemas, terminology. What cannot be read
/// says so.
std::vector<std::pair<std::string, std::string>> ProgramVersions(const TSchemaFolder& schemas);

} // namespace conferix
