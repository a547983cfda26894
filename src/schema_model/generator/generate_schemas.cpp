// Writes the XSD files that are delivered with the program, one a version, from the model in
// resources/schema_model. Files that would not change are left alone, so that a build does not touch them
// without need.
#include "platform/platform.h"
#include "schema_model/esquema_modelo.h"
#include "schema_model/esquema_xsd.h"

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
    const auto once = [&](const TEsquemaModelo& model, const std::string& versao) {
        const std::string name = model.NomeArquivo(versao);
        if (written.insert(name).second)
            Write(target / PathFromText(name), EsquemaXsd(model, versao));
    };
    for (const auto& model : LoadModelos(modelFolder)) {
        for (const std::string& versao : model->Versoes())
            once(*model, versao);
        for (const auto& [prefix, imported] : model->Importados())
            once(*imported, {});
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
