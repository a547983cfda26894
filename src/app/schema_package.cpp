#include "app/schema_package.h"

#include "data/import/zip_library.h"
#include "model/tiss_kinds.h"
#include "platform/platform.h"
#include "platform/portable_name.h"
#include "xml/schema/schema_files.h"

#include <unicode/ucnv.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace conferix {

namespace {

// Far above what the published packages hold (22 files, 0.6 MB).
constexpr std::uintmax_t kMaxPackageBytes = 100'000'000;
constexpr zip_int64_t kMaxEntries = 10'000;
constexpr std::size_t kMaxEntryBytes = 20'000'000;
constexpr std::size_t kMaxTotalBytes = 200'000'000;

constexpr std::size_t kMaxCopies = 10'000;

constexpr zip_uint32_t kUnixTypeMask = 0170000;
constexpr zip_uint32_t kUnixLink = 0120000;

struct TCloseArchive {
    void operator()(zip_t* archive) const { TZipLibrary::Get().Discard(archive); }
};
struct TCloseEntry {
    void operator()(zip_file_t* entry) const { TZipLibrary::Get().Fclose(entry); }
};

/// An entry's name for a message; names without the UTF-8 mark are in the old code page of Windows in Brazil.
std::string NameText(zip_t& archive, zip_uint64_t index, const std::string& raw) {
    if (const char* marked = TZipLibrary::Get().GetName(&archive, index, ZIP_FL_ENC_STRICT);
        marked != nullptr && raw == marked)
        return raw;
    std::vector<char> text(raw.size() * 3 + 1);
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_convert("UTF-8", "ibm-850", text.data(), static_cast<std::int32_t>(text.size()), raw.data(),
                     static_cast<std::int32_t>(raw.size()), &status);
    return U_SUCCESS(status) ? std::string(text.data(), static_cast<std::size_t>(length)) : "?";
}

class TPackageReader {
  public:
    explicit TPackageReader(const std::filesystem::path& file)
        : file_(file), bytes_(ReadWholeFile(file, kMaxPackageBytes)) {
        zip_error_t error;
        TZipLibrary::Get().ErrorInit(&error);
        zip_source_t* source = TZipLibrary::Get().SourceBufferCreate(bytes_.data(), bytes_.size(), 0, &error);
        if (source != nullptr) {
            archive_.reset(TZipLibrary::Get().OpenFromSource(source, ZIP_RDONLY, &error));
            if (archive_ == nullptr)
                TZipLibrary::Get().SourceFree(source);
        }
        TZipLibrary::Get().ErrorFini(&error);
        if (archive_ == nullptr)
            Fail("não é um arquivo ZIP válido; ele pode ter chegado incompleto, baixe-o de novo");
    }

    std::map<std::string, TPackageFolder> Read() {
        const zip_int64_t count = TZipLibrary::Get().GetNumEntries(archive_.get(), 0);
        if (count > kMaxEntries)
            Fail("o pacote contém arquivos demais");
        for (zip_int64_t i = 0; i < count; ++i)
            ReadEntry(static_cast<zip_uint64_t>(i));
        return std::move(folders_);
    }

  private:
    [[noreturn]] void Fail(const std::string& reason) const { throw EInvalidPackage(file_, reason); }

    void ReadEntry(zip_uint64_t index) {
        const char* raw = TZipLibrary::Get().GetName(archive_.get(), index, ZIP_FL_ENC_RAW);
        const std::string name = raw != nullptr ? raw : "";
        if (LeavesFolder(name))
            Fail("o pacote contém um caminho que sai da pasta: \"" + NameText(*archive_, index, name) + "\"");
        if (!IsPortablePath(name))
            Fail("o pacote contém um nome que não é o de um arquivo no Windows: \"" +
                 NameText(*archive_, index, name) + "\"");
        if (IsLink(index))
            Fail("o pacote contém um atalho: \"" + NameText(*archive_, index, name) + "\"");
        const std::size_t slash = name.find_last_of("/\\");
        const std::string bare = slash == std::string::npos ? name : name.substr(slash + 1);
        if (bare.ends_with(".xsd"))
            folders_[name.substr(0, name.size() - bare.size())][bare] = Content(index, name);
    }

    bool IsLink(zip_uint64_t index) const {
        zip_uint8_t system = 0;
        zip_uint32_t attributes = 0;
        return TZipLibrary::Get().FileGetExternalAttributes(archive_.get(), index, 0, &system, &attributes) ==
                   0 &&
               system == ZIP_OPSYS_UNIX && ((attributes >> 16U) & kUnixTypeMask) == kUnixLink;
    }

    /// What the entry really unpacks to; the size that it claims is not relied on.
    std::string Content(zip_uint64_t index, const std::string& name) {
        const std::unique_ptr<zip_file_t, TCloseEntry> entry(
            TZipLibrary::Get().FopenIndex(archive_.get(), index, 0));
        const auto failed = [&] {
            Fail("o arquivo \"" + NameText(*archive_, index, name) + "\" do pacote não pôde ser lido");
        };
        if (entry == nullptr)
            failed();
        std::string content;
        std::array<char, 65536> block{};
        while (true) {
            const zip_int64_t count = TZipLibrary::Get().Fread(entry.get(), block.data(), block.size());
            if (count < 0)
                failed();
            if (count == 0)
                break;
            content.append(block.data(), static_cast<std::size_t>(count));
            total_ += static_cast<std::size_t>(count);
            if (content.size() > kMaxEntryBytes || total_ > kMaxTotalBytes)
                Fail("o pacote é grande demais para conter schemas: \"" + NameText(*archive_, index, name) +
                     "\"");
        }
        return content;
    }

    std::filesystem::path file_;
    std::string bytes_;
    std::unique_ptr<zip_t, TCloseArchive> archive_;
    std::map<std::string, TPackageFolder> folders_;
    std::size_t total_ = 0;
};

} // namespace

EInvalidPackage::EInvalidPackage(const std::filesystem::path& file, const std::string& reason)
    : std::runtime_error(PathText(file) + ": " + reason) {}

std::map<std::string, TPackageFolder> ReadSchemaPackage(const std::filesystem::path& file) {
    return TPackageReader(file).Read();
}

TPackageCompletion::TPackageCompletion(const std::map<std::string, TPackageFolder>& package) {
    for (const auto& [folder, files] : package)
        for (const auto& [name, content] : files)
            contents_.try_emplace(name, &content);
}

const std::vector<std::string>& TPackageCompletion::ReferencesOf(const std::string& content) {
    const auto [entry, added] = references_.try_emplace(&content);
    if (added)
        entry->second = ReferencedSchemas(content);
    return entry->second;
}

std::map<std::string, const std::string*> TPackageCompletion::Needed(const TPackageFolder& own,
                                                                     const std::filesystem::path& file) {
    std::map<std::string, const std::string*> needed;
    std::vector<const std::string*> waiting;
    const auto take = [&](const std::string& name) {
        if (needed.count(name) != 0)
            return true;
        const auto inFolder = own.find(name);
        const auto anywhere = contents_.find(name);
        if (inFolder == own.end() && anywhere == contents_.end())
            return false;
        if (++copies_ > kMaxCopies)
            throw EInvalidPackage(file, "as pastas do pacote precisam de arquivos demais umas das outras");
        waiting.push_back(inFolder != own.end() ? &inFolder->second : anywhere->second);
        needed.emplace(name, waiting.back());
        return true;
    };
    std::vector<std::string> mains;
    for (const auto& [name, content] : own)
        if (ParseSchemaFileName(name)) {
            mains.push_back(name);
            take(name);
        }
    while (!waiting.empty()) {
        const std::string& content = *waiting.back();
        waiting.pop_back();
        for (const std::string& name : ReferencesOf(content))
            if (!take(name))
                for (const std::string& main : mains)
                    if (const std::string standIn = StandInForSchema(name, main); !standIn.empty())
                        take(standIn);
    }
    return needed;
}

} // namespace conferix
