// libzip as a part of the program, where no system brings it along.
#include "data/import/zip_library.h"

namespace conferix {

const TZipLibrary& TZipLibrary::Get() {
    static const TZipLibrary library;
    return library;
}

TZipLibrary::TZipLibrary()
    : Open(&zip_open), OpenFromSource(&zip_open_from_source), Discard(&zip_discard), GetError(&zip_get_error),
      ErrorInit(&zip_error_init), ErrorFini(&zip_error_fini), SourceBufferCreate(&zip_source_buffer_create),
      SourceFree(&zip_source_free), GetNumEntries(&zip_get_num_entries), GetName(&zip_get_name),
      FileGetExternalAttributes(&zip_file_get_external_attributes), StatInit(&zip_stat_init),
      StatIndex(&zip_stat_index), FopenIndex(&zip_fopen_index), Fread(&zip_fread), Fclose(&zip_fclose) {}

} // namespace conferix
