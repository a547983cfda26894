#include "app/cli/cli.h"

#include "app/cli/command_help.h"
#include "app/cli/command_line.h"
#include "app/cli/commands.h"
#include "app/installation.h"
#include "app/message_groups.h"
#include "app/missing_data.h"
#include "convert/conversion_run.h"
#include "data/database_tuss.h"
#include "data/tuss.h"
#include "model/tiss_exceptions.h"
#include "platform/file_memory.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"
#include "validation/schema_rule.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>
#include <ostream>
#include <streambuf>

namespace conferix {

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
        throw EInvalidConfig( // a mistyped name must not switch rules on
            file, "o arquivo não existe",
            fmt::format("Confira o nome de --config, ou crie o arquivo com todas as regras ativas: conferix "
                        "regras --padrao --config {}",
                        PathText(file)));
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
    Told->Errors.push_back(text);
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

void CheckOutput(const std::string& saida, const std::vector<TInput>& inputs) {
    const std::filesystem::path file = PathFromText(saida);
    std::error_code failure;
    if (const auto folder = file.parent_path();
        !folder.empty() && !std::filesystem::is_directory(folder, failure))
        throw EFileNotWritten(file, "a pasta não existe");
    for (const TInput& input : inputs)
        if (std::filesystem::equivalent(file, PathFromText(input.Name), failure))
            throw EUsage(fmt::format("o relatório substituiria um dos arquivos que são lidos: {}", saida));
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
    } catch (const EXmlEncoding& error) {
        for (const TMessageGroup& group : GroupMessages(error.Messages()))
            context.Error(fmt::format("{}: {}", fileName, GroupText(error.Messages(), group)));
        return kExitUnreadable;
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
    } catch (const ESchemaNotFound& error) {
        context.Error(fmt::format("{}: {}", fileName, MissingSchemaText(error.File())));
    } catch (const EFile& error) { // names its file, which may be another
        context.Error(error.what());
    } catch (const std::exception& error) {
        context.Error(fmt::format("{}: {}", fileName, error.what()));
    }
    return kExitUnreadable;
}

int RunOnListedFile(const TCliContext& context, const std::string& fileName, bool listed, TJson& reports,
                    const TFileAction& action, TXmlUndecodable undecodable) {
    const std::size_t told = context.Told->Errors.size();
    const std::size_t before = reports.size();
    const int status = RunOnFile(context, fileName, action, undecodable);
    if (listed && context.Json() && status != kExitValid && reports.size() == before)
        reports.push_back({{"arquivo", fileName},
                           {"erro", ErrorJson(status, std::span(context.Told->Errors).subspan(told))}});
    return status;
}

namespace {

/// Passes output on and notes whether there was any.
class TNotedOutput : public std::streambuf {
  public:
    explicit TNotedOutput(std::streambuf& to) : to_(to) {}
    bool Any() const { return any_; }

  protected:
    int_type overflow(int_type c) override {
        any_ = true;
        return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                               : to_.sputc(traits_type::to_char_type(c));
    }
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        any_ = any_ || size > 0;
        return to_.sputn(text, size);
    }
    int sync() override { return to_.pubsync(); }

  private:
    std::streambuf& to_;
    bool any_ = false;
};

/// The format that a command line asks for, also one that is wrong elsewhere; empty for none.
std::string AskedFormat(const std::vector<std::string>& words) {
    constexpr std::string_view kOption = "--formato";
    std::string format;
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i)
        if (words[i] == kOption && i + 1 < words.size())
            format = words[i + 1];
        else if (words[i].starts_with(std::string(kOption) + "="))
            format = words[i].substr(kOption.size() + 1);
    return format;
}

/// Runs what the words ask for.
int RunWords(const TCommand& root, const std::vector<std::string>& words, const TCliContext& context) {
    const TParsedLine line = ParseCommandLine(root, words);
    if (line.Version)
        context.Streams.Out << "conferix " CONFERIX_VERSAO "\n";
    else if (line.Help)
        context.Streams.Out << HelpText(root, *line.Command);
    else
        return line.Command->Run(context);
    return kExitValid;
}

} // namespace

int RunCli(const std::vector<std::string>& words, TCliStreams given) {
    TNotedOutput noted(*given.Out.rdbuf());
    std::ostream out(&noted);
    const TCliStreams streams{given.In, out, given.Err, given.OutIsTerminal, given.ErrIsTerminal};
    TCliContext context{streams, "texto", {}, {}, {}};
    TCommand root;
    int status = kExitUnreadable;
    try {
        AddCommands(root, context);
        status = RunWords(root, words, context);
    } catch (const ECommandLine& error) {
        context.Error(error.what());
        streams.Err << fmt::format("Use \"conferix ajuda{}\" para ver {}.\n",
                                   error.Command().empty() ? "" : ' ' + error.Command(),
                                   error.Command().empty() ? "os comandos" : "como se usa o comando");
        status = kExitUsage;
    } catch (const EUsage& error) {
        context.Error(error.what());
        status = kExitUsage;
    } catch (const std::bad_alloc&) {
        context.Error(kOutOfMemory);
    } catch (const std::exception& error) { // files, folders, configuration: the text says which and why
        context.Error(error.what());
    }
    const std::string format = AskedFormat(words);
    if (status != kExitValid && !noted.Any() && !context.Told->Answered &&
        (format == "json" || format == "ndjson"))
        out << JsonText({{"erro", ErrorJson(status, context.Told->Errors)}}, format == "json" ? 2 : -1)
            << '\n';
    out.flush();
    if (!out) {
        context.Error("a saída não pôde ser gravada");
        return kExitUnreadable;
    }
    return status;
}

} // namespace conferix
