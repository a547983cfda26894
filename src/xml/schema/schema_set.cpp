#include "xml/schema/schema_set.h"

#include "xml/schema/schema_files.h"
#include "xml/schema/schema_reader.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>

namespace conferix {

namespace {

/// What tells that a file was not changed since it was read.
struct TStamp {
    std::filesystem::path Path;
    std::filesystem::file_time_type Time;
    std::uintmax_t Size = 0;
    bool operator==(const TStamp&) const = default;
};

std::optional<TStamp> StampOf(const std::filesystem::path& path) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path, error);
    if (error)
        return std::nullopt;
    const auto size = std::filesystem::file_size(path, error);
    if (error)
        return std::nullopt;
    return TStamp{path, time, size};
}

struct TCached {
    std::vector<TStamp> Stamps;
    std::shared_ptr<const TSchemaSet> Set;
};

/// Sets by the canonical path of their main file, shared by all threads.
class TSchemaCache {
  public:
    std::shared_ptr<const TSchemaSet> Find(const std::filesystem::path& path) {
        const std::lock_guard lock(mutex_);
        const auto found = sets_.find(path);
        if (found == sets_.end())
            return nullptr;
        const auto& stamps = found->second.Stamps;
        const bool current = std::all_of(stamps.begin(), stamps.end(),
                                         [](const TStamp& stamp) { return StampOf(stamp.Path) == stamp; });
        return current ? found->second.Set : nullptr;
    }

    void Keep(const std::filesystem::path& path, std::vector<TStamp> stamps,
              std::shared_ptr<const TSchemaSet> set) {
        const std::lock_guard lock(mutex_);
        sets_[path] = {std::move(stamps), std::move(set)};
    }

  private:
    std::mutex mutex_;
    std::map<std::filesystem::path, TCached> sets_;
};

TSchemaCache& Cache() {
    static TSchemaCache cache;
    return cache;
}

} // namespace

std::shared_ptr<const TSchemaSet> TSchemaSet::Load(const std::filesystem::path& mainFile) {
    std::error_code error;
    std::filesystem::path path = std::filesystem::weakly_canonical(mainFile, error);
    if (error)
        path = mainFile;
    if (auto known = Cache().Find(path))
        return known;
    const TSchemaFiles files(path);
    std::vector<TStamp> stamps;
    for (const auto& file : files.All())
        if (const auto stamp = StampOf(file->Path()))
            stamps.push_back(*stamp);
    auto set = TSchemaReader::Read(files, mainFile);
    if (stamps.size() == files.All().size())
        Cache().Keep(path, std::move(stamps), set);
    return set;
}

std::uint32_t TSchemaSet::NamespaceId(std::string_view uri) const {
    const auto found = std::find(namespaces_.begin(), namespaces_.end(), uri);
    return found != namespaces_.end() ? static_cast<std::uint32_t>(found - namespaces_.begin())
                                      : kSchemaForeignNamespace;
}

std::uint32_t TSchemaSet::SymbolOf(std::uint32_t namespaceId, std::string_view localName) const {
    const auto found = symbols_.find({namespaceId, localName});
    return found != symbols_.end() ? found->second : kSchemaNoSymbol;
}

const TSchemaElement* TSchemaSet::GlobalElement(std::uint32_t symbol) const {
    return symbol < globalBySymbol_.size() ? globalBySymbol_[symbol] : nullptr;
}

const TSchemaSimpleType* TSchemaSet::FindSimpleType(std::uint32_t namespaceId, std::string_view name) const {
    const auto found = namedSimple_.find({namespaceId, name});
    return found != namedSimple_.end() ? found->second : nullptr;
}

const TSchemaComplexType* TSchemaSet::FindComplexType(std::uint32_t namespaceId,
                                                      std::string_view name) const {
    const auto found = namedComplex_.find({namespaceId, name});
    return found != namedComplex_.end() ? found->second : nullptr;
}

} // namespace conferix
