// Writes the XSD files that are delivered with the program, one a version, from the model in
// resources/schema_model, and beside each the tables compiled of it. Files that would not change are left
// alone, so that a build does not touch them without need.
#include "platform/platform.h"
#include "schema_model/schema_model.h"
#include "schema_model/xsd_writer.h"
#include "xml/schema/schema_tables.h"

#include <exception>
#include <filesystem>
#include <iostream>
#include <set>

namespace {

using namespace conferix;

void Write(const std::filesystem::path& file, const std::string& text) {
    if (std::filesystem::exists(file) && ReadWholeFile(file) == text)
        return;
    WriteFileAtomically(file, text);
}

void WriteAll(const std::filesystem::path& modelFolder, const std::filesystem::path& target) {
    CreateFolder(target);
    std::set<std::string> written;
    const auto once = [&](const TSchemaModel& model, const std::string& version) {
        const std::string name = model.FileName(version);
        if (written.insert(name).second)
            Write(target / PathFromText(name), MakeXsd(model, version));
    };
    for (const auto& model : LoadSchemaModels(modelFolder)) {
        for (const std::string& version : model->Versions())
            once(*model, version);
        for (const auto& [prefix, imported] : model->Imports())
            once(*imported, {});
        for (const std::string& version : model->Versions()) {
            const std::filesystem::path schema = target / PathFromText(model->FileName(version));
            Write(TSchemaTables::FileOf(schema), TSchemaTables::Write(*TSchemaSet::Load(schema), target));
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "uso: conferix_generate_schemas PASTA-DO-MODELO PASTA\n";
        return 2;
    }
    try {
        WriteAll(argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::cerr << "conferix_generate_schemas: erro: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
