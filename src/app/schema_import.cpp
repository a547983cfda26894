#include "app/schema_import.h"

#include "app/schema_package.h"
#include "model/arquivo_tiss_factory.h"
#include "platform/platform.h"
#include "schema_model/built_in_folders.h"
#include "schema_model/schema_model.h"
#include "xml/schema/schema_set.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>

namespace conferix {

namespace {

void Sort(std::vector<TMainSchema>& schemas) {
    std::sort(schemas.begin(), schemas.end(), [](const TMainSchema& a, const TMainSchema& b) {
        return std::pair(a.Kind->Tipo, a.Versao) < std::pair(b.Kind->Tipo, b.Versao);
    });
}

/// The main schemas among file names.
std::vector<TMainSchema> MainSchemas(const std::vector<std::string>& fileNames) {
    std::vector<TMainSchema> schemas;
    for (const std::string& name : fileNames)
        if (auto parsed = ParseSchemaFileName(name))
            schemas.push_back(
                {parsed->Kind, std::move(parsed->Versao), name, TSchemaOrigin::Missing, false, {}});
    Sort(schemas);
    return schemas;
}

/// Compiles a main schema; null, and the reason kept, when that fails.
std::shared_ptr<const TSchemaSet> Compile(const std::filesystem::path& file, TMainSchema& schema) {
    try {
        return TSchemaSet::Load(file);
    } catch (const ESchemaInvalido& error) {
        schema.Failure = error.what();
        return nullptr;
    }
}

/// Names of the built-in main schemas that are put together from the neighbours of their versions.
std::set<std::string> ApproximateFiles() {
    std::set<std::string> names;
    std::error_code ignored;
    if (!std::filesystem::is_directory(SchemaModelFolder(), ignored))
        return names;
    for (const auto& model : LoadSchemaModels(SchemaModelFolder()))
        for (const std::string& versao : model->Versions())
            if (model->IsApproximate(versao))
                names.insert(model->FileName(versao));
    return names;
}

/// A folder that is removed with its content. It is locked while it lives, so that one that a killed import
/// left is known and removed by the next.
class TWorkFolder {
  public:
    explicit TWorkFolder(const std::filesystem::path& beside)
        : path_(beside / fmt::format("{}{:08x}", kStart, std::random_device{}())) {
        RemoveStale(beside);
        CreateFolder(path_);
        lock_ = std::make_unique<TFileLock>(path_ / kLock, true);
    }
    ~TWorkFolder() {
        lock_.reset();
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TWorkFolder(const TWorkFolder&) = delete;
    TWorkFolder& operator=(const TWorkFolder&) = delete;
    const std::filesystem::path& Path() const { return path_; }

  private:
    static constexpr std::string_view kStart = "importacao-";
    static constexpr std::string_view kLock = "trava";

    static void RemoveStale(const std::filesystem::path& folder) {
        std::error_code failure;
        std::error_code ignored;
        std::vector<std::filesystem::path> found;
        for (auto entry = std::filesystem::directory_iterator(folder, failure);
             !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
            if (PathText(entry->path().filename()).starts_with(kStart) &&
                std::filesystem::is_regular_file(entry->path() / kLock, ignored))
                found.push_back(entry->path());
        for (const std::filesystem::path& path : found)
            if (TFileLock(path / kLock, false).Held())
                std::filesystem::remove_all(path, ignored);
    }

    std::filesystem::path path_;
    std::unique_ptr<TFileLock> lock_;
};

/// A folder with schemas, and the main ones among them that are to be installed.
struct TImportSource {
    std::filesystem::path Folder;
    std::vector<TMainSchema> Schemas;
};

std::vector<TImportSource> FolderSources(const std::filesystem::path& folder) {
    std::error_code failure;
    std::filesystem::directory_iterator check(folder, failure);
    if (failure)
        throw EFileNotRead(folder, ReasonText(failure));
    return {{folder, MainSchemas(TSchemaFolder(folder).FileNames())}};
}

/// Unpacks each folder of a package by itself, since files of one name may differ between them; what a folder
/// lacks is taken from the others.
std::vector<TImportSource> PackageSources(const std::filesystem::path& file,
                                          const std::filesystem::path& work) {
    const std::map<std::string, TPackageFolder> package = ReadSchemaPackage(file);
    TPackageCompletion completion(package);
    std::vector<TImportSource> sources;
    for (const auto& [name, own] : package) {
        std::vector<std::string> names;
        for (const auto& [bare, content] : own)
            names.push_back(bare);
        if (MainSchemas(names).empty())
            continue;
        const std::filesystem::path folder = work / std::to_string(sources.size());
        CreateFolder(folder);
        for (const auto& [bare, content] : completion.Needed(own, file))
            WriteFileAtomically(folder / PathFromText(bare), *content);
        sources.push_back({folder, MainSchemas(names)});
    }
    return sources;
}

/// Copies what the sets that compile are made of; answers the names of the files.
std::set<std::string> Install(std::vector<TImportSource>& sources, const std::filesystem::path& target) {
    std::set<std::string> installed;
    for (TImportSource& source : sources) {
        std::set<std::string> files;
        for (TMainSchema& schema : source.Schemas)
            if (const auto compiled = Compile(source.Folder / PathFromText(schema.FileName), schema))
                files.insert(compiled->Files().begin(), compiled->Files().end());
        for (const std::string& file : files)
            WriteFileAtomically(target / PathFromText(file),
                                ReadWholeFile(source.Folder / PathFromText(file)));
        installed.insert(files.begin(), files.end());
    }
    return installed;
}

/// Removes an imported main schema and the files that no other imported one is made of.
void Uninstall(const TSchemaFolder& folder, TMainSchema& schema) {
    const std::filesystem::path main = folder.Folder() / PathFromText(schema.FileName);
    std::set<std::string> files{schema.FileName};
    if (const auto compiled = Compile(main, schema))
        files.insert(compiled->Files().begin(), compiled->Files().end());
    for (TMainSchema& other : MainSchemas(TSchemaFolder(folder.Folder()).FileNames())) {
        if (other.FileName == schema.FileName)
            continue;
        if (const auto compiled = Compile(folder.Folder() / PathFromText(other.FileName), other))
            for (const std::string& file : compiled->Files())
                files.erase(file);
    }
    for (const std::string& file : files) {
        std::error_code failure;
        std::filesystem::remove(folder.Folder() / PathFromText(file), failure);
        if (failure)
            throw EFileNotWritten(folder.Folder() / PathFromText(file), ReasonText(failure));
    }
}

} // namespace

/// Every version that the program supports, and whatever else is installed.
std::vector<TMainSchema> ListSchemas(const TSchemaFolder& folder) {
    std::vector<std::string> names = folder.FileNames();
    for (const TArquivoTissClass& version : TArquivoTissFactory::Classes())
        names.push_back(SchemaFileName(version.Tipo, version.Versao));
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    const std::set<std::string> approximate = ApproximateFiles();
    std::vector<TMainSchema> schemas = MainSchemas(names);
    for (TMainSchema& schema : schemas) {
        schema.Origin = folder.Origin(schema.FileName);
        schema.Approximate = schema.Origin == TSchemaOrigin::BuiltIn && approximate.contains(schema.FileName);
        if (schema.Origin != TSchemaOrigin::Missing)
            Compile(folder.Find(schema.FileName), schema);
    }
    return schemas;
}

std::vector<std::string> UnusableSchemas(const TSchemaFolder& folder) {
    std::vector<std::string> faults;
    for (TMainSchema& schema : MainSchemas(folder.FileNames())) {
        const std::filesystem::path file = folder.Locate(schema.FileName);
        if (file.parent_path() == folder.Folder() && Compile(file, schema) == nullptr)
            faults.push_back(std::move(schema.Failure));
    }
    return faults;
}

std::string TMainSchema::StateText() const {
    if (Origin == TSchemaOrigin::Missing)
        return "Não instalado";
    std::string state = Origin == TSchemaOrigin::Imported ? "Importado" : "Embutido";
    if (!Failure.empty())
        state += ", não pode ser usado: " + Failure;
    else if (Approximate)
        state += ", aproximado";
    return state;
}

bool TSchemaImport::Failed() const {
    return std::ranges::any_of(Schemas, [](const TMainSchema& schema) { return !schema.Failure.empty(); });
}

std::string TSchemaImport::Summary() const {
    std::map<std::string_view, std::string> served;
    std::string failures;
    for (const TMainSchema& schema : Schemas) {
        std::string& versions = served[schema.Kind->Title];
        if (schema.Failure.empty())
            versions += (versions.empty() ? "" : ", ") + schema.Versao;
        else
            failures += fmt::format("\n{}: {}", schema.FileName, schema.Failure);
    }
    std::string text = fmt::format("{} {}.", Files, Files == 1 ? "arquivo instalado" : "arquivos instalados");
    for (const auto& [kind, versions] : served)
        if (!versions.empty())
            text += fmt::format("\n{}: {}", kind, versions);
    return failures.empty() ? text : text + "\nNão podem ser usados:" + failures;
}

TSchemaImport ImportSchemas(const std::filesystem::path& source, const std::filesystem::path& target) {
    CreateFolder(target);
    std::error_code ignored;
    const TWorkFolder work(target);
    std::vector<TImportSource> sources = std::filesystem::is_regular_file(source, ignored)
                                             ? PackageSources(source, work.Path())
                                             : FolderSources(source);
    TSchemaImport result;
    result.Files = Install(sources, target).size();
    for (const TImportSource& from : sources) {
        for (TMainSchema schema : from.Schemas) {
            schema.Origin = schema.Failure.empty() ? TSchemaOrigin::Imported : TSchemaOrigin::Missing;
            // What was whole by itself must be so beside what else lies in the folder.
            if (schema.Failure.empty())
                Compile(target / PathFromText(schema.FileName), schema);
            result.Schemas.push_back(std::move(schema));
        }
    }
    Sort(result.Schemas);
    return result;
}

std::vector<TMainSchema> RemoveSchemas(const TSchemaFolder& folder, const std::string& versao) {
    std::vector<TMainSchema> removed;
    for (TMainSchema& schema : MainSchemas(folder.FileNames())) {
        if (schema.Versao != versao || folder.Origin(schema.FileName) != TSchemaOrigin::Imported)
            continue;
        Uninstall(folder, schema);
        removed.push_back(
            {schema.Kind, schema.Versao, schema.FileName, folder.Origin(schema.FileName), false, {}});
    }
    return removed;
}

} // namespace conferix
