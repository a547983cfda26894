// ZIP files from outside, read without trust.
#pragma once

#include "data/import/byte_source.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct zip;

namespace conferix {

/// An entry of an archive.
struct TZipEntry {
    std::uint64_t Index = 0;
    std::string Name;        ///< UTF-8; without that mark in the archive it was in code page 850
    std::uint64_t Bytes = 0; ///< unpacked, as the archive claims
    std::uint64_t Packed = 0;
};

/// An open ZIP file. Refuses archives with too many entries, links, or names that leave the folder, and
/// entries that unpack to more than a publication ever does. Members raise EInvalidPublication.
class TZipArchive {
  public:
    /// `shownAs`: the name in error texts, where the file is a temporary one.
    TZipArchive(const std::filesystem::path& file, const std::filesystem::path& shownAs);
    TZipArchive(const TZipArchive&) = delete;
    TZipArchive& operator=(const TZipArchive&) = delete;
    ~TZipArchive();

    const std::filesystem::path& Name() const { return name_; }
    /// The files, in the order of the archive.
    const std::vector<TZipEntry>& Entries() const { return entries_; }
    const TZipEntry* Find(std::string_view name) const;
    std::unique_ptr<IByteSource> Open(const TZipEntry& entry) const;
    /// Unpacks an entry to a file, which is written anew. Raises also EFileNotWritten.
    void Extract(const TZipEntry& entry, const std::filesystem::path& file) const;

  private:
    [[noreturn]] void Fail(const std::string& reason) const;
    void AddEntry(std::uint64_t index);

    std::filesystem::path name_;
    zip* archive_ = nullptr;
    std::vector<TZipEntry> entries_;
};

} // namespace conferix
