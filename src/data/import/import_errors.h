// What can go wrong with the files of an import.
#pragma once

#include "platform/platform.h"

#include <stdexcept>

namespace conferix {

/// A file of an import is damaged, is no terminology, or is not to be unpacked. The database is as it was.
class EInvalidPublication : public EFile {
  public:
    EInvalidPublication(const std::filesystem::path& file, const std::string& reason)
        : EFile("Não foi possível importar", file, reason) {}
};

/// The user stopped the import. The database is as it was.
class EImportInterrupted : public std::runtime_error {
  public:
    EImportInterrupted()
        : std::runtime_error("A importação foi interrompida. A base de terminologia está como antes dela.") {}
};

} // namespace conferix
