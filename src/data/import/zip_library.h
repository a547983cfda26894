#pragma once

#include <zip.h>

namespace conferix {

/// The functions of libzip that the program calls. It brings a library of cryptography along, whose loading
/// takes longer than validating a small file: it is loaded when a package is opened.
struct TZipLibrary {
    /// Loads the library at the first call. Raises std::runtime_error where it is not installed.
    static const TZipLibrary& Get();

    decltype(&zip_open) Open;
    decltype(&zip_open_from_source) OpenFromSource;
    decltype(&zip_discard) Discard;
    decltype(&zip_get_error) GetError;
    decltype(&zip_error_init) ErrorInit;
    decltype(&zip_error_fini) ErrorFini;
    decltype(&zip_source_buffer_create) SourceBufferCreate;
    decltype(&zip_source_free) SourceFree;
    decltype(&zip_get_num_entries) GetNumEntries;
    decltype(&zip_get_name) GetName;
    decltype(&zip_file_get_external_attributes) FileGetExternalAttributes;
    decltype(&zip_stat_init) StatInit;
    decltype(&zip_stat_index) StatIndex;
    decltype(&zip_fopen_index) FopenIndex;
    decltype(&zip_fread) Fread;
    decltype(&zip_fclose) Fclose;

  private:
    TZipLibrary();
};

} // namespace conferix
