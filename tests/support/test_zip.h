#pragma once

#include <gtest/gtest.h>
#include <zip.h>

#include <filesystem>
#include <string>
#include <vector>

namespace conferix {

struct TTestEntry {
    std::string Name;
    std::string Content;
    bool IsLink = false;
};

/// Writes a ZIP file; names go in byte by byte.
inline void WriteZip(const std::filesystem::path& file, const std::vector<TTestEntry>& entries) {
    zip_t* archive = zip_open(file.string().c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    ASSERT_NE(archive, nullptr);
    for (const TTestEntry& entry : entries) {
        zip_source_t* source = zip_source_buffer(archive, entry.Content.data(), entry.Content.size(), 0);
        const zip_int64_t index = zip_file_add(archive, entry.Name.c_str(), source, ZIP_FL_ENC_CP437);
        ASSERT_GE(index, 0);
        if (entry.IsLink)
            zip_file_set_external_attributes(archive, static_cast<zip_uint64_t>(index), 0, ZIP_OPSYS_UNIX,
                                             0120777U << 16U);
    }
    ASSERT_EQ(zip_close(archive), 0);
}

} // namespace conferix
