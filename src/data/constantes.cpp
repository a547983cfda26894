#include "data/constantes.h"

#include "platform/platform.h"

namespace conferix {

std::filesystem::path TConstantes::ValidadorDirectory() {
    std::filesystem::path folder = DataFolder();
    CreateFolder(folder);
    return folder;
}

std::filesystem::path TConstantes::SchemaTissDirectory() {
    std::filesystem::path folder = ValidadorDirectory() / "schemas" / "tiss";
    CreateFolder(folder);
    return folder;
}

} // namespace conferix
