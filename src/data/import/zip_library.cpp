#include "data/import/zip_library.h"

#include "platform/shared_library.h"

#include <fmt/format.h>

#include <stdexcept>

namespace conferix {

namespace {

template<class Function>
void Find(const TSharedLibrary& library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(library.Find(name));
    if (function == nullptr)
        throw std::runtime_error(fmt::format("a biblioteca {} não tem a função {}", CONFERIX_LIBZIP, name));
}

} // namespace

const TZipLibrary& TZipLibrary::Get() {
    static const TZipLibrary library;
    return library;
}

TZipLibrary::TZipLibrary() {
    static const TSharedLibrary library(CONFERIX_LIBZIP);
    if (!library.Loaded())
        throw std::runtime_error(
            fmt::format("a biblioteca {}, usada para ler pacotes ZIP, não está instalada ({})",
                        CONFERIX_LIBZIP, library.Reason()));
    Find(library, "zip_open", Open);
    Find(library, "zip_open_from_source", OpenFromSource);
    Find(library, "zip_discard", Discard);
    Find(library, "zip_get_error", GetError);
    Find(library, "zip_error_init", ErrorInit);
    Find(library, "zip_error_fini", ErrorFini);
    Find(library, "zip_source_buffer_create", SourceBufferCreate);
    Find(library, "zip_source_free", SourceFree);
    Find(library, "zip_get_num_entries", GetNumEntries);
    Find(library, "zip_get_name", GetName);
    Find(library, "zip_file_get_external_attributes", FileGetExternalAttributes);
    Find(library, "zip_stat_init", StatInit);
    Find(library, "zip_stat_index", StatIndex);
    Find(library, "zip_fopen_index", FopenIndex);
    Find(library, "zip_fread", Fread);
    Find(library, "zip_fclose", Fclose);
}

} // namespace conferix
