#include "app/schema_folder.h"

#include "platform/file_memory.h"
#include "platform/platform.h"
#include "schema_model/seal.h"

#include <algorithm>
#include <mutex>
#include <set>

namespace conferix {

namespace {

bool IsFile(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

/// The files that a schema made by the program imports.
std::vector<std::string> ImportedFiles(std::string_view schema) {
    constexpr std::string_view kLocation = " schemaLocation=\"";
    std::vector<std::string> names;
    for (std::size_t at = schema.find(kLocation); at != std::string_view::npos;
         at = schema.find(kLocation, at)) {
        at += kLocation.size();
        names.emplace_back(schema.substr(at, schema.find('"', at) - at));
    }
    return names;
}

} // namespace

bool TSchemaFolder::IsImported(const std::string& fileName) const {
    const std::filesystem::path file = folder_ / PathFromText(fileName);
    if (folder_.empty() || !IsFile(file))
        return false;
    try {
        return !HasIntactSeal(ReadWholeFile(file));
    } catch (const EFileNotRead&) {
        return true; // whoever reads it next says why it cannot be read
    }
}

/// Whether a built-in file imports, itself or by others, a file of the user. Adds the names of all to
/// `names`.
bool TSchemaFolder::UsesImported(const std::string& fileName, std::vector<std::string>& names) const {
    bool uses = false;
    names.push_back(fileName);
    for (const std::string& other : ImportedFiles(ReadWholeFile(builtIn_ / PathFromText(fileName))))
        if (std::ranges::find(names, other) == names.end())
            uses = IsImported(other) || UsesImported(other, names) || uses;
    return uses;
}

void TSchemaFolder::Refresh(const std::string& fileName) const {
    const std::filesystem::path name = PathFromText(fileName);
    const std::string supplied = ReadWholeFile(builtIn_ / name);
    for (const std::string& other : ImportedFiles(supplied))
        if (other != fileName && !IsImported(other))
            Refresh(other);
    if (!IsFile(folder_ / name) || ReadWholeFile(folder_ / name) != supplied) {
        CreateFolder(folder_);
        WriteFileAtomically(folder_ / name, supplied);
    }
}

std::filesystem::path TSchemaFolder::Locate(const std::string& fileName) const {
    std::filesystem::path file = folder_ / PathFromText(fileName);
    if (builtIn_.empty())
        return file;
    std::filesystem::path supplied = builtIn_ / PathFromText(fileName);
    if (folder_.empty())
        return supplied;
    // What was found right once is not read again as long as nobody touches it.
    static TFileMemory<std::filesystem::path> located;
    const std::string name = PathText(file) + '\n' + PathText(supplied);
    if (auto known = located.Find(name))
        return *std::move(known);
    // Files that are validated at the same time may need the same copy.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    if (auto known = located.Find(name))
        return *std::move(known);
    std::vector<std::string> names;
    std::filesystem::path used = file;
    try {
        if (!IsFile(supplied) || IsImported(fileName))
            names.push_back(fileName);
        else if (UsesImported(fileName, names))
            Refresh(fileName);
        else
            used = supplied;
    } catch (const EFile&) {
        return supplied;
    }
    std::vector<TSeenFile> seen;
    for (const std::string& each : names)
        for (const std::filesystem::path& folder : {folder_, builtIn_})
            seen.push_back(SeeFile(folder / PathFromText(each)));
    located.Keep(name, std::move(seen), used);
    return used;
}

std::filesystem::path TSchemaFolder::Find(const std::string& fileName) const {
    if (!builtIn_.empty() && IsFile(builtIn_ / PathFromText(fileName)) && !IsImported(fileName))
        return builtIn_ / PathFromText(fileName);
    return folder_ / PathFromText(fileName);
}

TSchemaOrigin TSchemaFolder::Origin(const std::string& fileName) const {
    if (IsImported(fileName))
        return TSchemaOrigin::Imported;
    const std::filesystem::path name = PathFromText(fileName);
    return IsFile(folder_ / name) || (!builtIn_.empty() && IsFile(builtIn_ / name)) ? TSchemaOrigin::BuiltIn
                                                                                    : TSchemaOrigin::Missing;
}

std::vector<std::string> TSchemaFolder::FileNames() const {
    std::set<std::string> names;
    for (const std::filesystem::path& folder : {folder_, builtIn_}) {
        std::error_code failure;
        if (folder.empty() || !std::filesystem::is_directory(folder, failure))
            continue;
        for (auto entry = std::filesystem::directory_iterator(folder, failure);
             !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
            if (entry->path().extension() == ".xsd")
                names.insert(PathText(entry->path().filename()));
        if (failure)
            throw EFileNotRead(folder, ReasonText(failure));
    }
    return {names.begin(), names.end()};
}

} // namespace conferix
