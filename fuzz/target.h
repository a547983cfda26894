// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// Ends the run with the sentence where a law does not hold; the fuzzer then keeps the input.
inline void Demand(bool holds, const char* law) {
    if (holds)
        return;
    std::fprintf(stderr, "law broken: %s\n", law);
    std::abort();
}

/// A folder of this process; the folder for temporary files (TMPDIR) had better be in memory.
inline const std::filesystem::path& WorkFolder() {
    static const struct TFolder {
        TFolder() : Path((std::filesystem::temp_directory_path() / "conferix-fuzz-XXXXXX").string()) {
            Demand(mkdtemp(Path.data()) != nullptr, "the folder for temporary files can be written");
        }
        ~TFolder() {
            std::error_code ignored;
            std::filesystem::remove_all(Path, ignored);
        }
        std::string Path;
    } folder;
    static const std::filesystem::path path = folder.Path;
    return path;
}

/// Writes the bytes to a file of the work folder; answers its path.
inline std::filesystem::path WriteWorkFile(const char* name, std::string_view bytes) {
    std::filesystem::path file = WorkFolder() / name;
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file;
}

/// An input that stands for several texts: they are divided by form feeds, which no XML holds.
inline std::vector<std::string> Parts(std::string_view input) {
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t end = input.find('\f');
        parts.emplace_back(input.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        input.remove_prefix(end + 1);
    }
}

inline std::string_view BytesOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace conferix
