#include "app/cli/commands.h"
#include "app/schema_import.h"
#include "app/schema_package.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <ostream>

namespace conferix {

namespace {

std::string_view OriginText(TSchemaOrigin origin) {
    switch (origin) {
    case TSchemaOrigin::Missing:
        return "";
    case TSchemaOrigin::BuiltIn:
        return "embutido";
    case TSchemaOrigin::Imported:
        return "importado";
    }
    return "";
}

TJson SchemaJson(const TMainSchema& schema) {
    const bool installed = schema.Origin != TSchemaOrigin::Missing;
    return {{"versao", schema.Versao},
            {"tipo", schema.Kind->Label},
            {"arquivo", schema.FileName},
            {"origem", OriginText(schema.Origin)},
            {"aproximado", schema.Approximate},
            {"instalado", installed},
            {"compila", installed && schema.Failure.empty()},
            {"erro", schema.Failure}};
}

TJson SchemasJson(const std::vector<TMainSchema>& schemas) {
    TJson json = TJson::array();
    for (const TMainSchema& schema : schemas)
        json.push_back(SchemaJson(schema));
    return json;
}

/// Tells which versions are served, by kind.
void PrintServed(std::ostream& out, std::string_view title, const std::vector<TMainSchema>& schemas) {
    std::map<std::string_view, std::vector<std::string>> served;
    for (const TMainSchema& schema : schemas)
        if (schema.Failure.empty())
            served[schema.Kind->Label].push_back(schema.Versao);
    for (const auto& [kind, versions] : served)
        out << fmt::format("{} ({}): {}\n", title, kind, fmt::join(versions, ", "));
}

} // namespace

int RunEsquemasListar(const TCliContext& context) {
    const TSchemaFolder folder = context.Schemas();
    const std::vector<TMainSchema> schemas = ListSchemas(folder);
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        out << JsonText(SchemasJson(schemas)) << '\n';
        return kExitValid;
    }
    out << "Pasta dos schemas: " << Visible(PathText(folder.Folder())) << '\n';
    for (const TMainSchema& schema : schemas) {
        std::string state(OriginText(schema.Origin));
        if (schema.Origin == TSchemaOrigin::Missing)
            state = "não instalado";
        else if (!schema.Failure.empty())
            state += ", não pode ser usado: " + Visible(schema.Failure);
        else if (schema.Approximate)
            state += ", aproximado";
        out << fmt::format("  {:<13} {}  {:<38} {}\n", schema.Kind->Label, schema.Versao, schema.FileName,
                           state);
    }
    return kExitValid;
}

int RunEsquemasImportar(const TCliContext& context, const std::string& origem) {
    const std::filesystem::path target = context.SchemaFolder();
    TSchemaImport import;
    try {
        import = ImportSchemas(PathFromText(origem), target);
    } catch (const EInvalidPackage& error) {
        context.Error(error.what());
        return kExitUnreadable;
    }
    const std::vector<TMainSchema>& schemas = import.Schemas;
    if (schemas.empty()) {
        context.Error(fmt::format(
            "{}: não há schemas do padrão TISS (tissV*.xsd, tissMonitoramentoV*.xsd) aqui", origem));
        return kExitUnreadable;
    }
    const bool failed =
        std::ranges::any_of(schemas, [](const auto& schema) { return !schema.Failure.empty(); });
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        out << JsonText(SchemasJson(schemas)) << '\n';
    } else {
        for (const TMainSchema& schema : schemas)
            if (!schema.Failure.empty())
                context.Error(fmt::format("{}: {}", schema.FileName, schema.Failure));
        out << fmt::format("{} em {}\n", Counted(import.Files, "arquivo instalado", "arquivos instalados"),
                           Visible(PathText(target)));
        PrintServed(out, "Versões que usam o schema publicado", schemas);
    }
    return failed ? kExitInvalid : kExitValid;
}

int RunEsquemasRemover(const TCliContext& context, const std::string& versao) {
    const std::vector<TMainSchema> removed = RemoveSchemas(context.Schemas(), versao);
    if (removed.empty()) {
        context.Error(fmt::format("a versão {} não tem schema importado", versao));
        return kExitInvalid;
    }
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        out << JsonText(SchemasJson(removed)) << '\n';
        return kExitValid;
    }
    for (const TMainSchema& schema : removed)
        out << fmt::format("{} {}: {}\n", schema.Kind->Label, schema.Versao,
                           schema.Origin == TSchemaOrigin::BuiltIn ? "volta a usar o schema embutido"
                                                                   : "não tem mais schema instalado");
    return kExitValid;
}

} // namespace conferix
