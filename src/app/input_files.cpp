#include "app/input_files.h"

#include "platform/platform.h"
#include "platform/whole_path.h"
#include "xml/lower_case.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

namespace conferix {

namespace {

bool HasTissExtension(const std::filesystem::path& file) {
    const std::string extension = LowerCase(file.extension().string());
    return extension == ".xml" || extension == ".xte";
}

/// The files of a folder, and what could not be searched. Links are followed, each folder is searched once.
std::vector<TInput> SearchFolder(const std::string& name, bool withSubfolders) {
    std::vector<TInput> found;
    std::set<std::filesystem::path> searched;
    std::vector<std::filesystem::path> pending = {PathFromText(name)};
    while (!pending.empty()) {
        const std::filesystem::path folder = std::move(pending.back());
        pending.pop_back();
        if (!searched.insert(CanonicalPath(folder)).second)
            continue;
        std::error_code failure;
        for (auto entry = std::filesystem::directory_iterator(folder, failure);
             !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
            std::error_code unreachable; // told when the file is read
            if (entry->is_directory(unreachable)) {
                if (withSubfolders)
                    pending.push_back(entry->path());
            } else if (HasTissExtension(entry->path())) {
                found.push_back({PathText(entry->path()), {}});
            } else if (unreachable || (entry->is_symlink(unreachable) && !entry->exists(unreachable))) {
                // It may be a folder of files that nobody would miss.
                found.push_back({PathText(entry->path()),
                                 "a ligação leva a um lugar que não existe ou não pode ser lido"});
            }
        }
        if (failure)
            found.push_back({PathText(folder), ReasonText(failure)});
    }
    if (found.empty())
        found.push_back({name, "a pasta não contém arquivos *.xml nem *.xte"});
    std::ranges::sort(found, {}, &TInput::Name);
    return found;
}

} // namespace

std::vector<std::string> NamesInList(std::string_view list) {
    if (list.starts_with("\xEF\xBB\xBF"))
        list.remove_prefix(3);
    const bool lines = list.find('\0') == std::string_view::npos;
    std::vector<std::string> names;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(lines ? '\n' : '\0'), list.size());
        std::string_view name = list.substr(0, end);
        list.remove_prefix(std::min(end + 1, list.size()));
        if (lines && name.ends_with('\r'))
            name.remove_suffix(1);
        if (lines ? name.find_first_not_of(" \t") != std::string_view::npos : !name.empty())
            names.push_back(name == "-" ? "./-" : std::string(name));
    }
    return names;
}

std::vector<TInput> ExpandFolders(const std::vector<std::string>& names, bool withSubfolders) {
    std::vector<TInput> inputs;
    for (const std::string& name : names) {
        std::error_code failure;
        if (name == "-" || !std::filesystem::is_directory(PathFromText(name), failure)) {
            inputs.push_back({name, {}});
            continue;
        }
        std::vector<TInput> found = SearchFolder(name, withSubfolders);
        std::ranges::move(found, std::back_inserter(inputs));
    }
    std::set<std::filesystem::path> seen;
    std::erase_if(inputs, [&](const TInput& input) {
        return !seen.insert(PathFromText(input.Name).lexically_normal()).second;
    });
    return inputs;
}

} // namespace conferix
