#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/message_json.h"
#include "model/arquivo_tiss_factory.h"
#include "sistema/sistema.h"
#include "xml/schema/schema_set.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <set>

namespace conferix {

namespace {

constexpr std::string_view kExtension = ".xsd";

struct TSchemaKind {
    TEnumTipoArquivoTiss Tipo;
    std::string_view Prefix; ///< of the main file's name, up to the version
    std::string_view Label;
};
// The longer prefix first, since one begins like the other.
constexpr std::array<TSchemaKind, 3> kKinds = {
    {{TEnumTipoArquivoTiss::taMonitoramentoQualidade, "tissMonitoramentoQualidadeV", "qualidade"},
     {TEnumTipoArquivoTiss::taMonitoramento, "tissMonitoramentoV", "monitoramento"},
     {TEnumTipoArquivoTiss::taMensagemTISS, "tissV", "mensagem"}}};

/// The main schema of one version.
struct TMainSchema {
    const TSchemaKind* Kind = nullptr;
    std::string Versao;
    std::string FileName;
    bool Installed = false;
    std::string Failure; ///< why it does not compile; empty when it does
};

/// Reads kind and version from a main schema's file name ("tissV3_05_00.xsd").
std::optional<TMainSchema> ParseName(const std::string& fileName) {
    for (const TSchemaKind& kind : kKinds) {
        if (!fileName.starts_with(kind.Prefix) || !fileName.ends_with(kExtension))
            continue;
        std::string versao =
            fileName.substr(kind.Prefix.size(), fileName.size() - kind.Prefix.size() - kExtension.size());
        std::replace(versao.begin(), versao.end(), '_', '.');
        const bool form =
            versao.size() == 7 && versao[1] == '.' && versao[4] == '.' &&
            std::count_if(versao.begin(), versao.end(), [](char c) { return c >= '0' && c <= '9'; }) == 5;
        if (form)
            return TMainSchema{&kind, versao, fileName, false, {}};
    }
    return std::nullopt;
}

std::vector<TMainSchema> FindMainSchemas(const std::filesystem::path& folder) {
    std::vector<TMainSchema> found;
    std::error_code failure;
    for (auto entry = std::filesystem::directory_iterator(folder, failure);
         !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
        if (auto schema = ParseName(PathText(entry->path().filename())))
            found.push_back(std::move(*schema));
    if (failure)
        throw EArquivoNaoLido(folder, ReasonText(failure));
    std::sort(found.begin(), found.end(), [](const TMainSchema& a, const TMainSchema& b) {
        return std::pair(a.Kind->Tipo, a.Versao) < std::pair(b.Kind->Tipo, b.Versao);
    });
    return found;
}

/// Compiles a main schema; null, and the reason kept, when that fails.
std::shared_ptr<const TSchemaSet> Compile(const std::filesystem::path& folder, TMainSchema& schema) {
    try {
        return TSchemaSet::Load(folder / PathFromText(schema.FileName));
    } catch (const ESchemaInvalido& error) {
        schema.Failure = error.what();
        return nullptr;
    }
}

/// Every version that the program supports, and whatever else is installed.
std::vector<TMainSchema> ListSchemas(const std::filesystem::path& folder) {
    std::error_code ignored;
    std::vector<TMainSchema> schemas;
    if (std::filesystem::is_directory(folder, ignored))
        schemas = FindMainSchemas(folder);
    std::set<std::string> known;
    for (TMainSchema& schema : schemas) {
        schema.Installed = true;
        Compile(folder, schema);
        known.insert(schema.FileName);
    }
    for (const TArquivoTissClass& version : TArquivoTissFactory::Classes()) {
        const bool monitoring = version.GetVersao().starts_with("1.");
        const std::string fileName = TValidadorController::SchemaFileName(
            monitoring ? TEnumTipoArquivoTiss::taMonitoramento : TEnumTipoArquivoTiss::taMensagemTISS,
            version.GetVersao());
        if (known.count(fileName) == 0)
            schemas.push_back(*ParseName(fileName));
    }
    std::sort(schemas.begin(), schemas.end(), [](const TMainSchema& a, const TMainSchema& b) {
        return std::pair(a.Kind->Tipo, a.Versao) < std::pair(b.Kind->Tipo, b.Versao);
    });
    return schemas;
}

TJson SchemaJson(const TMainSchema& schema) {
    return {{"versao", schema.Versao},
            {"tipo", schema.Kind->Label},
            {"arquivo", schema.FileName},
            {"instalado", schema.Installed},
            {"compila", schema.Installed && schema.Failure.empty()},
            {"erro", schema.Failure}};
}

TJson SchemasJson(const std::vector<TMainSchema>& schemas) {
    TJson json = TJson::array();
    for (const TMainSchema& schema : schemas)
        json.push_back(SchemaJson(schema));
    return json;
}

} // namespace

int RunEsquemasListar(const TCliContext& context) {
    const std::filesystem::path folder = context.SchemaFolder();
    const std::vector<TMainSchema> schemas = ListSchemas(folder);
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        out << JsonText(SchemasJson(schemas)) << '\n';
        return kExitValid;
    }
    out << "Pasta dos schemas: " << PathText(folder) << '\n';
    for (const TMainSchema& schema : schemas) {
        const std::string state = !schema.Installed        ? "não instalado"
                                  : schema.Failure.empty() ? "instalado"
                                                           : "não pode ser usado: " + schema.Failure;
        out << fmt::format("  {:<13} {}  {:<38} {}\n", schema.Kind->Label, schema.Versao, schema.FileName,
                           state);
    }
    return kExitValid;
}

int RunEsquemasImportar(const TCliContext& context, const std::string& pasta) {
    const std::filesystem::path source = PathFromText(pasta);
    const std::filesystem::path target = context.SchemaFolder();
    std::vector<TMainSchema> schemas = FindMainSchemas(source);
    if (schemas.empty()) {
        context.Error(fmt::format(
            "{}: a pasta não contém schemas do padrão TISS (tissV*.xsd, tissMonitoramentoV*.xsd)", pasta));
        return kExitInvalid;
    }
    // A file serves several versions; those of sets that do not compile stay where they are.
    std::set<std::string> files;
    bool failed = false;
    for (TMainSchema& schema : schemas) {
        if (const auto compiled = Compile(source, schema))
            files.insert(compiled->Files().begin(), compiled->Files().end());
        else
            failed = true;
    }
    CreateFolder(target);
    for (const std::string& file : files)
        WriteFileAtomically(target / PathFromText(file), ReadWholeFile(source / PathFromText(file)));
    for (TMainSchema& schema : schemas)
        schema.Installed = schema.Failure.empty();

    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        out << JsonText(SchemasJson(schemas)) << '\n';
    } else {
        std::map<std::string_view, std::vector<std::string>> served;
        for (const TMainSchema& schema : schemas) {
            if (schema.Failure.empty())
                served[schema.Kind->Label].push_back(schema.Versao);
            else
                context.Error(fmt::format("{}: {}", schema.FileName, schema.Failure));
        }
        out << fmt::format("{} instalados em {}\n", Counted(files.size(), "arquivo", "arquivos"),
                           PathText(target));
        for (const auto& [kind, versions] : served)
            out << fmt::format("Versões atendidas ({}): {}\n", kind, fmt::join(versions, ", "));
    }
    return failed ? kExitInvalid : kExitValid;
}

} // namespace conferix
