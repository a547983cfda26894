#pragma once

#include "app/cli/cli.h"
#include "app/config.h"
#include "app/validador_controller.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// What the user asked for is not possible as asked; ends the run with status 2.
class EUsage : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Options common to all commands, and the streams.
struct TCliContext {
    TCliStreams Streams;
    std::string Formato = "texto";
    std::string Esquemas;     ///< folder; empty: the one in the data folder
    std::string Terminologia; ///< file; empty: the one delivered with the program
    std::string Config;       ///< file; empty: the one in the data folder

    bool Json() const { return Formato == "json"; }
    std::filesystem::path SchemaFolder() const;
    TDBConnectionFactory TerminologyFactory() const;
    TConfig LoadConfig() const;
    std::unique_ptr<TValidadorController> NewController() const;
    /// Writes "conferix: erro: ..." to standard error.
    void Error(const std::string& text) const;
    void Warning(const std::string& text) const;
};

/// A file opened by a command that works on one: its text, or the status to end with after an error was told.
struct TOpenedFile {
    std::shared_ptr<const IArquivoTiss> Arquivo;
    int Status = kExitValid;
};
/// Reads, parses and identifies a file ("-" is standard input); tells every failure on standard error.
TOpenedFile OpenTissFile(const TCliContext& context, const std::string& fileName);

/// Reads a file for a command, "-" from standard input. Raises EArquivoNaoLido.
std::string ReadInput(const TCliContext& context, const std::string& fileName);

struct TValidarOptions {
    std::vector<std::string> Arquivos;
    std::vector<std::string> Desativar;
    bool Todas = false;
    int Paralelo = 1;
};
int RunValidar(const TCliContext& context, const TValidarOptions& options);
int RunInformar(const TCliContext& context, const std::string& arquivo);
int RunHash(const TCliContext& context, const std::string& arquivo);
int RunRegras(const TCliContext& context);
int RunEsquemasListar(const TCliContext& context);
int RunEsquemasImportar(const TCliContext& context, const std::string& pasta);
int RunTerminologiaEstado(const TCliContext& context);

} // namespace conferix
