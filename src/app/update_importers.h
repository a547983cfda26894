#pragma once

#include "app/updater.h"

#include <filesystem>

namespace conferix {

/// Who takes packages of schemas, into `schemas`, and of terminology, into the database `terminology`. A
/// package of schemas is tried in a folder of its own before anything is installed; EUpdate says what is
/// wrong with it.
TPackageImporters UpdateImporters(const std::filesystem::path& schemas,
                                  const std::filesystem::path& terminology);

} // namespace conferix
