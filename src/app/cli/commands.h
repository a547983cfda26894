#pragma once

#include "app/cli/cli.h"
#include "app/config.h"
#include "app/input_files.h"
#include "app/schema_folder.h"
#include "app/tiss_file.h"
#include "app/updater.h"
#include "app/validador_controller.h"
#include "report/message_json.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// What the user asked for is not possible as asked; ends the run with status 2.
class EUsage : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What a run has told.
struct TTold {
    std::vector<std::string> Errors; ///< by TCliContext::Error, in that order
    bool Answered = false;           ///< elsewhere than on standard output, or nowhere as the user wished
};

/// Options common to all commands, and the streams.
struct TCliContext {
    TCliStreams Streams;
    std::string Formato = "texto";
    std::string Esquemas;     ///< folder; empty: the one in the data folder
    std::string Terminologia; ///< file; empty: the one delivered with the program
    std::string Config;       ///< file; empty: the one in the data folder
    std::shared_ptr<TTold> Told = std::make_shared<TTold>();

    bool Json() const { return Formato == "json"; }
    std::filesystem::path SchemaFolder() const;
    /// The schema folder; unless the user named one, backed by the schemas that come with the program.
    TSchemaFolder Schemas() const;
    TDBConnectionFactory TerminologyFactory() const;
    /// The same for many files in one thread: a connection is handed out again as long as the database file
    /// is the same.
    TDBConnectionFactory KeptTerminology() const;
    /// The configuration file: the one that the user named, else the one in the data folder. Raises
    /// EInvalidConfig for a named one that does not exist.
    std::filesystem::path ConfigFile() const;
    /// Its content; tells names in it that are no rule's.
    TConfig LoadConfig() const;
    std::unique_ptr<TValidadorController> NewController() const {
        return NewController(TerminologyFactory());
    }
    std::unique_ptr<TValidadorController> NewController(TDBConnectionFactory terminology) const;
    /// Writes "conferix: erro: ..." to standard error.
    void Error(const std::string& text) const;
    void Warning(const std::string& text) const;
};

/// The exit status that the result of a validation asks for.
int StatusOf(const TValidateArgs& result);

/// Reads a file for a command, "-" from standard input. Raises EFileNotRead, EXmlEncoding.
TTissFile ReadTissFile(const TCliContext& context, const std::string& fileName,
                       TXmlUndecodable undecodable = TXmlUndecodable::Refused);
/// What a command does with a file, answering its exit status.
using TFileAction = std::function<int(const TTissFile&)>;
/// Reads a file and does something with it. Of a file that cannot be read, written, understood or converted,
/// and of any other failure but EUsage, it tells the reason on standard error, with the name, and answers the
/// status that stands for that.
int RunOnFile(const TCliContext& context, const std::string& fileName, const TFileAction& action,
              TXmlUndecodable undecodable = TXmlUndecodable::Refused);
/// The same for a file of a list: in JSON, one that failed and left no report gets one with its error.
int RunOnListedFile(const TCliContext& context, const std::string& fileName, bool listed, TJson& reports,
                    const TFileAction& action, TXmlUndecodable undecodable = TXmlUndecodable::Refused);

/// Refuses a file of an option for a report that could not be written at the end (EFileNotWritten), or would
/// replace what it tells of (EUsage).
void CheckOutput(const std::string& saida, const std::vector<TInput>& inputs);

struct TValidarOptions {
    std::vector<std::string> Arquivos;
    std::string Lista;                  ///< file with further names; "-": the standard input
    std::vector<std::string> Desativar; ///< rules and groups of them, several between commas
    std::string Nivel;                  ///< erro, aviso or informacao; empty: not given
    std::string Agrupar;                ///< linha or regra; empty: not given
    std::string Saida;                  ///< file for the report; empty: the standard output
    bool Todas = false;
    bool Detalhar = false;     ///< every finding by itself
    bool Resumo = false;       ///< a line a file
    bool Silencioso = false;   ///< only the exit status
    bool Estatisticas = false; ///< counts by rule and by file
    bool Totais = false;       ///< a last line about all files
    bool SemSubpastas = false;
    std::optional<unsigned> Paralelo; ///< files at a time; nothing: as many as there are processors
};
int RunValidar(const TCliContext& context, const TValidarOptions& options);
struct TListarOptions {
    std::string Listagem; ///< one of ListingNames()
    std::vector<std::string> Arquivos;
    std::string Ordem; ///< guia, beneficiario, data or valor; empty: of the file
    std::string Saida; ///< file; empty: the standard output
    bool SemSubpastas = false;
};
int RunListar(const TCliContext& context, const TListarOptions& options);
int RunInformar(const TCliContext& context, const std::string& arquivo);
int RunHash(const TCliContext& context, const std::string& arquivo);

struct TRegrasOptions {
    std::vector<std::string> Ativar;    ///< names of rules; a group takes the rules below it along
    std::vector<std::string> Desativar; ///< the same
    bool Padrao = false;                ///< every rule on, before the other two
    std::string Explicar;               ///< name of a rule to be explained, or its end; empty: none
};
/// Lists the rules, explains one, or switches them and tells what changed. Raises EUsage for a name that is
/// no rule's.
int RunRegras(const TCliContext& context, const TRegrasOptions& options);
/// A rule that is to be on or off.
struct TRuleSwitch {
    std::string Nome;
    bool Ativa;
};
/// Switches rules, each with the optional ones below it; of two that meet, the one deeper in the tree holds.
/// Answers the names that are on. Raises EUsage for a required rule to be switched off, or a name that is no
/// rule's.
std::vector<std::string> SwitchRules(TConfig& config, std::vector<TRuleSwitch> switches);
/// The same for rules that all go one way.
std::vector<std::string> SwitchRules(TConfig& config, const std::vector<std::string>& names, bool on);

struct TProxyOptions {
    std::optional<std::string> Modo; ///< direto, sistema or manual
    std::optional<std::string> Servidor;
    std::optional<std::string> Porta;
};
/// Shows the proxy settings, or changes those that are given.
int RunProxy(const TCliContext& context, const TProxyOptions& options);

/// `documento`: "cpf", "cnpj" or "cns"; `valor` with or without punctuation.
int RunDocumento(const TCliContext& context, const std::string& documento, const std::string& valor);
int RunEsquemasListar(const TCliContext& context);
/// `origem`: a folder or a ZIP file as the regulator publishes it.
int RunEsquemasImportar(const TCliContext& context, const std::string& origem);
/// Goes back to the built-in schema of a version.
int RunEsquemasRemover(const TCliContext& context, const std::string& versao);
int RunTerminologiaEstado(const TCliContext& context);

struct TConsultarOptions {
    std::string Tabela;
    std::string Codigo;
    std::string Data;         ///< AAAA-MM-DD
    bool Consolidado = false; ///< asks domain table 64
};
int RunTerminologiaConsultar(const TCliContext& context, const TConsultarOptions& options);

struct TConverterOptions {
    std::vector<std::string> Arquivos;
    std::string Para;              ///< target version
    std::string RegimeAtendimento; ///< "01" to "05"; "nenhum" or empty: left open
    std::string Saida;             ///< file; of one input alone
    std::string PastaSaida;        ///< folder, for files of the inputs' names
    bool Detalhar = false;         ///< every note by itself
};
int RunConverter(const TCliContext& context, const TConverterOptions& options);
/// Lists the versions that a lot can be converted to.
int RunVersoes(const TCliContext& context, const std::string& arquivo);

struct TAvisosOptions {
    bool Todos = false;               ///< also those that were read
    std::vector<std::string> Lido;    ///< numbers of notices that are read now
    std::vector<std::string> Excluir; ///< and of those that go
};
/// Shows the notices of the program. Raises EUsage for what is no number.
int RunAvisos(const TCliContext& context, const TAvisosOptions& options);

/// Fetches packages of schemas and terminology; `verificar`: only tells which are offered.
int RunAtualizar(const TCliContext& context, bool verificar);
struct TImportarOptions {
    std::vector<std::string> Origens; ///< files and folders
    bool Substituir = false;          ///< forgets what the tables held
};
int RunTerminologiaImportar(const TCliContext& context, const TImportarOptions& options);
/// Goes back to the terminology that came with the program.
int RunTerminologiaRestaurar(const TCliContext& context);

struct TProcurarOptions {
    std::string Texto;
    std::string Tabela; ///< empty: all
    std::string Data;   ///< AAAA-MM-DD: only terms in force on that day; empty: all
};
int RunTerminologiaProcurar(const TCliContext& context, const TProcurarOptions& options);

struct TCorrigirOptions {
    std::vector<std::string> Arquivos;
    int Mensagem = 0; ///< 1-based, in the list that `validar` shows; 0: none chosen
    int Correcao = 0; ///< 1-based, of the message; 0: the first
    bool Todas = false;
    bool Estrutura = false;
    bool ComPerdas = false; ///< with the corrections of structure that lose something
    std::string Saida;
    bool NoLugar = false;
    bool Copia = false; ///< keeps what is replaced, as NAME.bak
    bool Simular = false;
    bool Renomear = false;   ///< with NoLugar, where the file's name carries its hash
    std::string Codificacao; ///< ISO-8859-1 or UTF-8; empty: as the file is
    bool Detalhar = false;   ///< lists every correction and every change of letters
};
int RunCorrigir(const TCliContext& context, const TCorrigirOptions& options);

struct TImprimirOptions {
    std::vector<std::string> Arquivos;
    std::vector<std::string> Guias; ///< numbers; empty: all
    std::string Formulario;         ///< empty: all that a guide has
    std::string EmBranco;           ///< form to be printed empty, in place of files
    std::string Versao;             ///< of the empty form; empty: the newest
    std::string Saida;              ///< file; empty: the standard output
    bool ComDescricao = false;
    bool SemAviso = false; ///< does not validate, and does not tell how many errors there are
};
/// Prints guides as PDF.
int RunImprimir(const TCliContext& context, const TImprimirOptions& options);

/// Sizes in MB (1,048,576 bytes), times in seconds.
struct TServirOptions {
    std::string Endereco = "127.0.0.1";
    int Porta = 8080; ///< 0: a free one
    int CorpoMaximo = 64;
    std::optional<unsigned> Memoria;   ///< of all bodies together; nothing: 256, or one body
    std::optional<unsigned> Execucoes; ///< at a time; nothing: as many as there are processors
    int Fila = 16;
    int Conexoes = 256;
    int PrazoEnvio = 120;
    int Prazo = 60;
    int PrazoParada = 25;
};
/// Serves until it is told to stop by SIGINT or SIGTERM.
int RunServir(const TCliContext& context, const TServirOptions& options);

} // namespace conferix
