#include "app/cli/cli.h"

#include "app/cli/commands.h"
#include "app/installation.h"
#include "convert/conversion_run.h"
#include "data/database_tuss.h"
#include "data/tuss.h"
#include "model/tiss_exceptions.h"
#include "platform/file_memory.h"
#include "platform/platform.h"
#include "report/console.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <functional>
#include <optional>
#include <ostream>

namespace conferix {

namespace {

/// The user's words for what CLI11 finds wrong.
std::string UsageText(const CLI::ParseError& error, const std::vector<std::string>& words) {
    const std::string name = error.get_name();
    if (name == "RequiredError") {
        const std::string what = error.what(); // "--tabela is required"
        return words.empty()
                   ? "falta o comando"
                   : fmt::format("falta um argumento obrigatório ({})", what.substr(0, what.find(" is ")));
    }
    if (name == "ValidationError" || name == "ConversionError")
        return fmt::format("valor inválido para uma opção ({})", error.what());
    if (name == "ArgumentMismatch")
        return fmt::format("número errado de argumentos ({})", error.what());
    if (name == "ExcludesError" || name == "RequiresError")
        return fmt::format("opções que não combinam ({})", error.what());
    return fmt::format("linha de comando inválida ({})", error.what());
}

/// Refuses the name that an unset variable of a script leaves empty.
const CLI::Validator& NotEmpty() {
    static const CLI::Validator validator(
        [](const std::string& name) { return name.empty() ? "o nome está vazio" : ""; }, "");
    return validator;
}

std::string TrimmedName(const std::string& name) {
    return std::string(TrimXmlSpace(name));
}

void Translate(CLI::App& app) {
    auto formatter = std::make_shared<CLI::Formatter>();
    formatter->label("Usage", "Uso");
    formatter->label("OPTIONS", "OPÇÕES");
    formatter->label("SUBCOMMAND", "COMANDO");
    formatter->label("SUBCOMMANDS", "COMANDO");
    formatter->label("Options", "Opções");
    formatter->label("Positionals", "Argumentos");
    formatter->label("Subcommands", "Comandos");
    formatter->label("REQUIRED", "(obrigatório)");
    formatter->label("TEXT", "TEXTO");
    formatter->label("INT", "N");
    formatter->column_width(34);
    app.formatter(formatter);
}

/// One command line: its options, and what to run once they are read.
class TCommandLine {
  public:
    explicit TCommandLine(TCliStreams streams)
        : context_{streams, {}, {}, {}, {}}, app_("Confere arquivos do padrão TISS.", "conferix") {
        context_.Formato = "texto";
        app_.option_defaults()->group("Opções");
        app_.set_help_flag("--ajuda,-h,--help", "Mostra esta ajuda e termina");
        app_.set_version_flag("--versao", "conferix " CONFERIX_VERSAO, "Mostra a versão e termina");
        Translate(app_);
        app_.require_subcommand(1);
        app_.fallthrough();
        app_.add_option("--formato", context_.Formato,
                        "texto ou json; de validar também ndjson, sarif, junit, csv ou html; de regras, markdown")
            ->option_text("FORMATO");
        app_.add_option("--esquemas", context_.Esquemas, "Pasta dos schemas XSD")
            ->option_text("PASTA")
            ->check(NotEmpty());
        app_.add_option("--terminologia", context_.Terminologia, "Base de terminologia (tuss.db)")
            ->option_text("ARQUIVO")
            ->check(NotEmpty());
        app_.add_option("--config", context_.Config, "Arquivo de configuração (config.json)")
            ->option_text("ARQUIVO")
            ->check(NotEmpty());
        AddValidar();
        AddSingleFile("informar", "Mostra o que o arquivo é e contém", &RunInformar);
        AddSingleFile("hash", "Mostra o hash informado e os calculados", &RunHash);
        AddCorrigir();
        AddRegras();
        AddProxy();
        AddAtualizar();
        AddConverter();
        AddSingleFile("versoes", "Mostra para quais versões um lote pode ser convertido", &RunVersoes);
        AddEsquemas();
        AddTerminologia();
        AddDocumento();
    }

    int Run(const std::vector<std::string>& words) {
        try {
            app_.parse(std::vector<std::string>(words.rbegin(), words.rend()));
        } catch (const CLI::CallForHelp&) {
            const CLI::App* asked = &app_;
            while (!asked->get_subcommands().empty())
                asked = asked->get_subcommands().front();
            context_.Streams.Out << asked->help();
            return kExitValid;
        } catch (const CLI::CallForVersion& version) {
            context_.Streams.Out << version.what() << '\n';
            return kExitValid;
        } catch (const CLI::ParseError& error) {
            context_.Error(UsageText(error, words));
            context_.Streams.Err << "Use \"conferix --ajuda\" para ver os comandos e as opções.\n";
            return kExitUsage;
        }
        return run_();
    }

    const TCliContext& Context() const { return context_; }

  private:
    void RequireFormat(const std::vector<std::string_view>& allowed) const {
        for (const std::string_view format : allowed)
            if (context_.Formato == format)
                return;
        throw EUsage(fmt::format("o formato \"{}\" não existe neste comando; use {}", context_.Formato,
                                 fmt::join(allowed, " ou ")));
    }

    /// Sets what a command runs; all take text and JSON, some further formats.
    void OnParsed(CLI::App* command, const std::vector<std::string_view>& furtherFormats,
                  std::function<int()> run) {
        std::vector<std::string_view> formats = {"texto", "json"};
        formats.insert(formats.end(), furtherFormats.begin(), furtherFormats.end());
        command->parse_complete_callback([this, formats = std::move(formats), run = std::move(run)] {
            run_ = [this, formats, run] {
                RequireFormat(formats);
                return run();
            };
        });
    }

    CLI::App* AddCommand(CLI::App& parent, const std::string& name, const std::string& description) {
        CLI::App* command = parent.add_subcommand(name, description);
        command->fallthrough();
        command->group("Comandos");
        command->footer("Opções comuns: --formato, --esquemas, --terminologia, --config (conferix --ajuda).");
        Translate(*command);
        return command;
    }

    void AddValidar() {
        CLI::App* command =
            AddCommand(app_, "validar",
                       "Valida arquivos; uma pasta vale por seus *.xml e *.xte e os das suas subpastas");
        command->add_option("arquivos", validar_.Arquivos, "Arquivos ou pastas; - é a entrada padrão")
            ->option_text("ARQUIVO...")
            ->check(NotEmpty());
        command->add_flag("--todas", validar_.Todas, "Mostra também as mensagens de sucesso e as ocultas");
        command->add_flag("--sem-subpastas", validar_.SemSubpastas,
                          "De uma pasta, só os arquivos que estão diretamente nela");
        command->add_flag("--detalhar", validar_.Detalhar,
                          "Mostra cada mensagem, sem agrupar as de mesma causa");
        command
            ->add_option("--lista", validar_.Lista,
                         "Valida também os arquivos que este arquivo lista, um por linha ou separados por "
                         "NUL; - é a entrada padrão")
            ->option_text("ARQUIVO")
            ->check(NotEmpty());
        command->add_option("--saida", validar_.Saida, "Grava o relatório neste arquivo, de uma vez")
            ->option_text("ARQUIVO")
            ->check(NotEmpty());
        command->add_flag("--resumo", validar_.Resumo, "Mostra só uma linha por arquivo");
        command->add_flag("--silencioso", validar_.Silencioso, "Não mostra nada; vale o código de saída");
        command->add_flag("--estatisticas", validar_.Estatisticas,
                          "Mostra também quanto foi encontrado, por regra e por arquivo");
        command->add_flag("--totais", validar_.Totais, "Com ndjson, termina com uma linha de totais");
        command
            ->add_option("--nivel", validar_.Nivel,
                         "erro, aviso ou informacao: o que é mostrado e leva ao código de saída 1; se "
                         "omitido, mostra tudo, e só erros levam a ele")
            ->option_text("NIVEL");
        command->add_option("--agrupar", validar_.Agrupar, "linha ou regra: como o texto é agrupado")
            ->option_text("COMO");
        command
            ->add_option("--desativar", validar_.Desativar,
                         "Desativa regras nesta execução; um grupo leva as que estão abaixo dele")
            ->option_text("NOME,...")
            ->expected(1)
            ->delimiter(',')
            ->take_all()
            ->transform(&TrimmedName);
        command
            ->add_option("--paralelo", validar_.Paralelo,
                         "Arquivos validados ao mesmo tempo; se omitido, um por processador")
            ->option_text("N")
            ->check(CLI::Range(1, 256));
        OnParsed(command, {"ndjson", "sarif", "junit", "csv", "html"},
                 [this] { return RunValidar(context_, validar_); });
    }

    void AddSingleFile(const std::string& name, const std::string& description,
                       int (*run)(const TCliContext&, const std::string&)) {
        CLI::App* command = AddCommand(app_, name, description);
        command->add_option("arquivo", arquivo_, "Arquivo; - é a entrada padrão")
            ->required()
            ->option_text("ARQUIVO")
            ->check(NotEmpty());
        OnParsed(command, {}, [this, run] { return run(context_, arquivo_); });
    }

    void AddCorrigir() {
        CLI::App* command =
            AddCommand(app_, "corrigir", "Aplica correções; sem dizer quais, mostra as que existem");
        command->add_option("arquivo", corrigir_.Arquivo, "Arquivo; - é a entrada padrão")
            ->required()
            ->option_text("ARQUIVO")
            ->check(NotEmpty());
        CLI::Option* mensagem =
            command->add_option("--mensagem", corrigir_.Mensagem, "Número da mensagem a corrigir")
                ->option_text("N")
                ->check(CLI::PositiveNumber);
        command->add_option("--correcao", corrigir_.Correcao, "Qual das correções da mensagem")
            ->option_text("K")
            ->check(CLI::PositiveNumber);
        command->add_flag("--todas", corrigir_.Todas, "Corrige todos os erros que oferecem correção")
            ->excludes(mensagem);
        CLI::Option* estrutura =
            command
                ->add_flag(
                    "--estrutura", corrigir_.Estrutura,
                    "Conserta a estrutura (nomes, ordem, níveis, formato dos valores) sem perder nada; "
                    "com --todas, antes das outras correções")
                ->excludes(mensagem);
        command
            ->add_flag("--com-perdas", corrigir_.ComPerdas,
                       "Conserta a estrutura também onde algo se perde (elemento removido, texto cortado)")
            ->needs(estrutura);
        CLI::Option* saida = command->add_option("--saida", corrigir_.Saida, "Grava neste arquivo")
                                 ->option_text("ARQUIVO")
                                 ->check(NotEmpty());
        CLI::Option* noLugar =
            command->add_flag("--no-lugar", corrigir_.NoLugar, "Grava sobre o arquivo")->excludes(saida);
        command->add_flag("--copia", corrigir_.Copia, "Guarda o arquivo substituído como ARQUIVO.bak");
        command
            ->add_flag("--renomear", corrigir_.Renomear,
                       "Com --no-lugar, dá o nome novo ao arquivo cujo nome leva o hash")
            ->needs(noLugar);
        command
            ->add_option("--codificacao", corrigir_.Codificacao,
                         "Grava em ISO-8859-1 ou UTF-8, e declara essa codificação")
            ->option_text("NOME")
            ->transform(CLI::IsMember({"ISO-8859-1", "UTF-8"}, CLI::ignore_case));
        command->add_flag("--simular", corrigir_.Simular, "Mostra as diferenças e não grava nada")
            ->excludes(saida)
            ->excludes(noLugar);
        OnParsed(command, {}, [this] { return RunCorrigir(context_, corrigir_); });
    }

    void AddRegras() {
        CLI::App* command =
            AddCommand(app_, "regras", "Lista as regras na ordem em que são aplicadas; ativa e desativa");
        CLI::Option* explicar =
            command
                ->add_option("--explicar", regras_.Explicar,
                             "Explica uma regra: o que confere, um exemplo que falha, como corrigir")
                ->option_text("NOME")
                ->check(NotEmpty());
        AddNames(*command, "--ativar", regras_.Ativar,
                 "Ativa regras; um grupo leva as que estão abaixo dele");
        AddNames(*command, "--desativar", regras_.Desativar, "Desativa regras, do mesmo modo");
        command->add_flag("--padrao", regras_.Padrao, "Volta a todas as regras ativas");
        for (const char* change : {"--ativar", "--desativar", "--padrao"})
            explicar->excludes(command->get_option(change));
        OnParsed(command, {"markdown"}, [this] { return RunRegras(context_, regras_); });
    }

    /// An option that takes several names, one after the other or with commas.
    static void AddNames(CLI::App& command, const std::string& option, std::vector<std::string>& names,
                         const std::string& description) {
        command.add_option(option, names, description)
            ->option_text("NOME...")
            ->delimiter(',')
            ->take_all()
            ->transform(&TrimmedName);
    }

    void AddProxy() {
        CLI::App* command = AddCommand(app_, "proxy", "Mostra ou muda as configurações de proxy");
        command->add_option("--modo", proxy_.Modo, "direto, sistema ou manual")->option_text("MODO");
        command->add_option("--servidor", proxy_.Servidor, "Endereço do servidor")->option_text("S");
        command->add_option("--porta", proxy_.Porta, "Porta do servidor, de 1 a 65535")->option_text("P");
        OnParsed(command, {}, [this] { return RunProxy(context_, proxy_); });
    }

    void AddAtualizar() {
        CLI::App* command =
            AddCommand(app_, "atualizar", "Busca schemas e terminologia no endereço configurado");
        command->add_flag("--verificar", verificar_, "Mostra o que há, sem instalar");
        OnParsed(command, {}, [this] { return RunAtualizar(context_, verificar_); });
    }

    void AddConverter() {
        CLI::App* command = AddCommand(app_, "converter", "Converte um lote de guias para outra versão");
        command->add_option("arquivos", converter_.Arquivos, "Arquivos; - é a entrada padrão")
            ->required()
            ->option_text("ARQUIVO...")
            ->check(NotEmpty());
        command->add_option("--para", converter_.Para, "Versão de destino, como 4.01.00")
            ->required()
            ->option_text("VERSAO");
        command
            ->add_option("--regime-atendimento", converter_.RegimeAtendimento,
                         "01 a 05: regime das guias de consulta e SP/SADT ao passar para 4.00.00; nenhum: "
                         "será informado depois")
            ->option_text("CODIGO");
        CLI::Option* saida = command->add_option("--saida", converter_.Saida, "Grava neste arquivo")
                                 ->option_text("ARQUIVO")
                                 ->check(NotEmpty());
        command->add_option("--pasta-saida", converter_.PastaSaida, "Grava nesta pasta, com o mesmo nome")
            ->option_text("PASTA")
            ->check(NotEmpty())
            ->excludes(saida);
        command->add_flag("--detalhar", converter_.Detalhar, "Mostra cada nota, sem agrupar");
        OnParsed(command, {}, [this] { return RunConverter(context_, converter_); });
    }

    void AddEsquemas() {
        CLI::App* group = AddCommand(app_, "esquemas", "Schemas XSD instalados");
        group->require_subcommand(1);
        OnParsed(AddCommand(*group, "listar", "Mostra o schema de cada versão"), {},
                 [this] { return RunEsquemasListar(context_); });
        CLI::App* import =
            AddCommand(*group, "importar", "Instala os schemas publicados pela ANS (pasta ou pacote ZIP)");
        import->add_option("origem", arquivo_, "Pasta com os arquivos XSD, ou arquivo ZIP")
            ->required()
            ->option_text("ORIGEM")
            ->check(NotEmpty());
        OnParsed(import, {}, [this] { return RunEsquemasImportar(context_, arquivo_); });
        CLI::App* remove = AddCommand(*group, "remover", "Volta ao schema embutido de uma versão");
        remove->add_option("versao", arquivo_, "Versão, como 4.01.00")->required()->option_text("VERSAO");
        OnParsed(remove, {}, [this] { return RunEsquemasRemover(context_, arquivo_); });
    }

    void AddTerminologia() {
        CLI::App* group = AddCommand(app_, "terminologia", "Base de terminologia TUSS");
        group->require_subcommand(1);
        OnParsed(AddCommand(*group, "estado", "Mostra as tabelas da base"), {},
                 [this] { return RunTerminologiaEstado(context_); });
        CLI::App* query = AddCommand(*group, "consultar", "Diz se um código vale em uma data");
        query->add_option("--tabela", consultar_.Tabela, "Número da tabela da TUSS")
            ->required()
            ->option_text("T");
        query->add_option("--codigo", consultar_.Codigo, "Código do termo")->required()->option_text("C");
        query->add_option("--data", consultar_.Data, "Data da execução")
            ->required()
            ->option_text("AAAA-MM-DD");
        query->add_flag("--consolidado", consultar_.Consolidado,
                        "Consulta a forma de envio na tabela de domínio 64");
        OnParsed(query, {}, [this] { return RunTerminologiaConsultar(context_, consultar_); });
        CLI::App* import = AddCommand(*group, "importar", "Importa as publicações da ANS para a base");
        import
            ->add_option("origens", importar_.Origens,
                         "Arquivos ZIP, XLSX, CSV, TXT ou JSON como foram baixados, ou pastas com eles")
            ->required()
            ->option_text("ORIGEM...")
            ->check(NotEmpty());
        import->add_flag("--substituir", importar_.Substituir,
                         "Esquece o que as tabelas importadas tinham e os arquivos não trazem");
        OnParsed(import, {}, [this] { return RunTerminologiaImportar(context_, importar_); });
        CLI::App* search = AddCommand(*group, "procurar", "Procura termos por palavras da descrição");
        search->add_option("texto", procurar_.Texto, "Palavras, ou o começo delas")
            ->required()
            ->option_text("TEXTO");
        search->add_option("--tabela", procurar_.Tabela, "Só nesta tabela da TUSS")->option_text("T");
        search->add_option("--data", procurar_.Data, "Só termos válidos nesta data")
            ->option_text("AAAA-MM-DD");
        OnParsed(search, {}, [this] { return RunTerminologiaProcurar(context_, procurar_); });
        OnParsed(
            AddCommand(*group, "restaurar", "Desfaz as importações: volta à base que veio com o programa"),
            {}, [this] { return RunTerminologiaRestaurar(context_); });
    }

    void AddDocumento() {
        CLI::App* command = AddCommand(app_, "documento", "Confere os dígitos de um CPF, CNPJ ou CNS");
        command->add_option("documento", documento_, "cpf, cnpj ou cns")
            ->required()
            ->option_text("DOCUMENTO");
        command->add_option("valor", valor_, "Número, sem pontuação")->required()->option_text("VALOR");
        OnParsed(command, {}, [this] { return RunDocumento(context_, documento_, valor_); });
    }

    TCliContext context_;
    CLI::App app_;
    TValidarOptions validar_;
    TCorrigirOptions corrigir_;
    TRegrasOptions regras_;
    TProxyOptions proxy_;
    TConverterOptions converter_;
    bool verificar_ = false;
    TConsultarOptions consultar_;
    TImportarOptions importar_;
    TProcurarOptions procurar_;
    std::string arquivo_;
    std::string documento_;
    std::string valor_;
    std::function<int()> run_;
};

} // namespace

std::filesystem::path TCliContext::SchemaFolder() const {
    return Esquemas.empty() ? DataFolder() / "schemas" / "tiss" : PathFromText(Esquemas);
}

TSchemaFolder TCliContext::Schemas() const {
    return Esquemas.empty() ? InstalledSchemas() : TSchemaFolder(SchemaFolder());
}

TDBConnectionFactory TCliContext::TerminologyFactory() const {
    return TDBConnectionFactory(
        [file = PathFromText(Terminologia)] { return TDatabaseTuss(file).CreateConnection(); });
}

TDBConnectionFactory TCliContext::KeptTerminology() const {
    struct TKept {
        TSeenFile File;
        std::shared_ptr<ITussConnection> Connection;
    };
    return TDBConnectionFactory([file = PathFromText(Terminologia), kept = std::make_shared<TKept>()] {
        const TDatabaseTuss database(file);
        TSeenFile stamp = SeeFile(database.DatabaseFileName());
        if (kept->Connection == nullptr || kept->File != stamp)
            *kept = {std::move(stamp), database.CreateConnection()};
        return kept->Connection;
    });
}

std::filesystem::path TCliContext::ConfigFile() const {
    if (Config.empty())
        return TConfig::DefaultFile();
    std::filesystem::path file = PathFromText(Config);
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored))
        throw EInvalidConfig(file, "o arquivo não existe"); // a mistyped name must not switch rules on
    return file;
}

TConfig TCliContext::LoadConfig() const {
    std::filesystem::path file;
    try {
        file = ConfigFile();
    } catch (const EDataFolderUnknown&) {
        TConfig config; // who has no data folder has configured nothing
        config.SetDefaultInitialConfig();
        return config;
    }
    TConfig config = TConfig::Load(file);
    if (const std::vector<std::string> unknown = config.UnknownValidations(); !unknown.empty())
        Warning(
            fmt::format("{}: nomes que não são de regras desta versão: {} (mantidos no arquivo; \"conferix "
                        "regras --padrao\" volta ao padrão)",
                        PathText(file), fmt::join(unknown, ", ")));
    return config;
}

std::unique_ptr<TValidadorController> TCliContext::NewController(TDBConnectionFactory terminology) const {
    auto controller = std::make_unique<TValidadorController>(std::move(terminology));
    controller->SetSchemaFolder(Schemas());
    return controller;
}

void TCliContext::Error(const std::string& text) const {
    Streams.Err << "conferix: erro: " << Visible(text) << std::endl;
}

void TCliContext::Warning(const std::string& text) const {
    Streams.Err << "conferix: aviso: " << Visible(text) << std::endl;
}

TTissFile ReadTissFile(const TCliContext& context, const std::string& fileName, TXmlUndecodable undecodable) {
    if (fileName != "-")
        return TTissFile::Read(PathFromText(fileName), undecodable);
    return TTissFile(ReadWholeStream(context.Streams.In, fileName), undecodable);
}

int StatusOf(const TValidateArgs& result) {
    if (!result.Verified)
        return kExitUnreadable;
    return result.FileStateFlags.Contains(TFileStateFlag::sfValido) ? kExitValid : kExitInvalid;
}

int RunOnFile(const TCliContext& context, const std::string& fileName, const TFileAction& action,
              TXmlUndecodable undecodable) {
    const auto fail = [&](int status, std::string_view reason) {
        context.Error(fmt::format("{}: {}", fileName, reason));
        return status;
    };
    std::optional<TTissFile> file;
    try {
        file = ReadTissFile(context, fileName, undecodable);
    } catch (const EFileNotRead& error) {
        return fail(kExitUnreadable, error.Reason());
    } catch (const EXmlEncoding& error) {
        return fail(kExitInvalid, error.what());
    }
    try {
        return action(*file);
    } catch (const EXmlNotParsed& error) {
        return fail(kExitInvalid, error.what());
    } catch (const ETissException& error) {
        return fail(kExitInvalid, error.what());
    } catch (const ELoteGuiasNotFound& error) {
        return fail(kExitInvalid, error.what());
    } catch (const EConversionNotSupported& error) {
        return fail(kExitInvalid, error.what());
    } catch (const EUsage&) {
        throw;
    } catch (const EFile& error) { // names its file, which may be another
        context.Error(error.what());
    } catch (const std::exception& error) {
        context.Error(fmt::format("{}: {}", fileName, error.what()));
    }
    return kExitUnreadable;
}

int RunCli(const std::vector<std::string>& words, TCliStreams streams) {
    TCommandLine line(streams);
    const TCliContext& context = line.Context();
    int status = kExitUnreadable;
    try {
        status = line.Run(words);
    } catch (const EUsage& error) {
        context.Error(error.what());
        status = kExitUsage;
    } catch (const std::bad_alloc&) {
        context.Error(kOutOfMemory);
    } catch (const std::exception& error) { // files, folders, configuration: the text says which and why
        context.Error(error.what());
    }
    streams.Out.flush();
    if (!streams.Out) {
        context.Error("a saída não pôde ser gravada");
        return kExitUnreadable;
    }
    return status;
}

} // namespace conferix
