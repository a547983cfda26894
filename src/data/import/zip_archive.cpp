#include "data/import/zip_archive.h"

#include "data/import/import_errors.h"
#include "data/import/zip_library.h"
#include "platform/portable_name.h"

#include <unicode/ucnv.h>

#include <array>
#include <cerrno>
#include <fstream>

namespace conferix {

namespace fs = std::filesystem;

namespace {

// The published packages hold some dozens of files, the largest sheet 2 GB unpacked at a ratio of 30.
constexpr zip_int64_t kMaxEntries = 10'000;
constexpr std::uint64_t kMaxEntryBytes = 8'000'000'000;
constexpr std::uint64_t kMaxRatio = 200;
constexpr std::uint64_t kRatioFrom = 100'000'000; // a small entry may well be one value repeated

constexpr zip_uint32_t kUnixTypeMask = 0170000;
constexpr zip_uint32_t kUnixLink = 0120000;

std::string FromCodePage850(const std::string& raw) {
    std::string text(raw.size() * 3 + 1, '\0');
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_convert("UTF-8", "ibm-850", text.data(), static_cast<std::int32_t>(text.size()), raw.data(),
                     static_cast<std::int32_t>(raw.size()), &status);
    text.resize(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
    return text;
}

struct TCloseEntry {
    void operator()(zip_file_t* entry) const { TZipLibrary::Get().Fclose(entry); }
};

class TEntrySource : public IByteSource {
  public:
    TEntrySource(zip_t* archive, const TZipEntry& entry, const fs::path& archiveName)
        : stream_(TZipLibrary::Get().FopenIndex(archive, entry.Index, 0)), packed_(entry.Packed),
          name_(archiveName / PathFromText(entry.Name)) {
        if (stream_ == nullptr) {
            throw EInvalidPublication(name_, TZipLibrary::Get().GetError(archive)->zip_err == ZIP_ER_NOPASSWD
                                                 ? "está protegido por senha"
                                                 : "está danificado");
        }
    }

    std::size_t Read(char* to, std::size_t count) override {
        std::size_t filled = 0;
        while (filled < count) {
            const zip_int64_t got = TZipLibrary::Get().Fread(stream_.get(), to + filled, count - filled);
            if (got < 0) {
                throw EInvalidPublication(name_, "está danificado");
            }
            if (got == 0) {
                break;
            }
            filled += static_cast<std::size_t>(got);
        }
        total_ += filled;
        // What it really unpacks to; the size that the archive claims is not relied on.
        if (total_ > kMaxEntryBytes || (total_ > kRatioFrom && total_ / kMaxRatio > packed_)) {
            throw EInvalidPublication(name_, "descompactado, é grande demais para uma publicação da ANS");
        }
        return filled;
    }

  private:
    std::unique_ptr<zip_file_t, TCloseEntry> stream_;
    std::uint64_t packed_;
    std::uint64_t total_ = 0;
    fs::path name_;
};

} // namespace

TZipArchive::TZipArchive(const fs::path& file, const fs::path& shownAs) : name_(shownAs) {
    int error = 0;
    archive_ = TZipLibrary::Get().Open(PathText(file).c_str(), ZIP_RDONLY, &error);
    if (archive_ == nullptr) {
        Fail("não é um arquivo ZIP válido; ele pode ter chegado incompleto, baixe-o de novo");
    }
    try {
        const zip_int64_t count = TZipLibrary::Get().GetNumEntries(archive_, 0);
        if (count > kMaxEntries) {
            Fail("o pacote contém arquivos demais");
        }
        for (zip_int64_t i = 0; i < count; ++i) {
            AddEntry(static_cast<std::uint64_t>(i));
        }
    } catch (...) {
        TZipLibrary::Get().Discard(archive_);
        throw;
    }
}

TZipArchive::~TZipArchive() {
    TZipLibrary::Get().Discard(archive_);
}

void TZipArchive::Fail(const std::string& reason) const {
    throw EInvalidPublication(name_, reason);
}

void TZipArchive::AddEntry(std::uint64_t index) {
    const char* raw = TZipLibrary::Get().GetName(archive_, index, ZIP_FL_ENC_RAW);
    std::string name = raw != nullptr ? raw : "";
    const char* marked = TZipLibrary::Get().GetName(archive_, index, ZIP_FL_ENC_STRICT);
    if (marked == nullptr || name != marked) {
        name = FromCodePage850(name);
    }
    if (LeavesFolder(name)) {
        Fail("o pacote contém um caminho que sai da pasta: \"" + name + "\"");
    }
    if (!IsPortablePath(name)) {
        Fail("o pacote contém um nome que não é o de um arquivo no Windows: \"" + name + "\"");
    }
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (TZipLibrary::Get().FileGetExternalAttributes(archive_, index, 0, &system, &attributes) == 0 &&
        system == ZIP_OPSYS_UNIX && ((attributes >> 16U) & kUnixTypeMask) == kUnixLink) {
        Fail("o pacote contém um atalho: \"" + name + "\"");
    }
    zip_stat_t info;
    TZipLibrary::Get().StatInit(&info);
    if (TZipLibrary::Get().StatIndex(archive_, index, 0, &info) != 0) {
        Fail("o conteúdo do pacote está danificado");
    }
    if (name.back() != '/') {
        entries_.push_back({index, std::move(name), info.size, info.comp_size});
    }
}

const TZipEntry* TZipArchive::Find(std::string_view name) const {
    for (const TZipEntry& entry : entries_) {
        if (entry.Name == name) {
            return &entry;
        }
    }
    return nullptr;
}

std::unique_ptr<IByteSource> TZipArchive::Open(const TZipEntry& entry) const {
    return std::make_unique<TEntrySource>(archive_, entry, name_);
}

void TZipArchive::Extract(const TZipEntry& entry, const fs::path& file) const {
    const std::unique_ptr<IByteSource> source = Open(entry);
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    std::vector<char> block(1 << 18);
    while (const std::size_t got = out ? source->Read(block.data(), block.size()) : 0) {
        out.write(block.data(), static_cast<std::streamsize>(got));
    }
    out.close();
    if (!out) {
        throw EFileNotWritten(file, ReasonText(std::error_code(errno, std::generic_category())));
    }
}

} // namespace conferix
