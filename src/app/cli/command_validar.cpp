#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/message_json.h"
#include "app/cli/progress.h"
#include "model/tiss_kinds.h"
#include "platform/platform.h"
#include "validation/solver.h"
#include "validation/validation_message.h"
#include "xml/lower_case.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <optional>
#include <ostream>
#include <thread>
#include <unordered_set>

namespace conferix {

namespace {

/// What came of one file: the text to print and the exit status that it asks for.
struct TFileReport {
    std::string Text;
    int Status = kExitValid;
    std::string Error;                   ///< told on standard error
    std::filesystem::path MissingSchema; ///< the user is told how to install it
};

std::vector<std::string> EnabledRules(const TCliContext& context, const std::vector<std::string>& disabled) {
    TConfig config = context.LoadConfig();
    return disabled.empty() ? config.EnabledValidations() : SwitchRules(config, disabled, false);
}

bool HasTissExtension(const std::filesystem::path& file) {
    const std::string extension = LowerCase(file.extension().string());
    return extension == ".xml" || extension == ".xte";
}

/// The files to validate; a folder stands for its *.xml and *.xte files, in order of their names.
std::vector<std::string> ExpandFolders(const TCliContext& context, const std::vector<std::string>& names) {
    std::vector<std::string> files;
    for (const std::string& name : names) {
        std::error_code failure;
        if (name == "-" || !std::filesystem::is_directory(PathFromText(name), failure)) {
            files.push_back(name);
            continue;
        }
        std::vector<std::string> found;
        for (auto entry = std::filesystem::directory_iterator(PathFromText(name), failure);
             !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
            if (HasTissExtension(entry->path()) && entry->is_regular_file())
                found.push_back(PathText(entry->path()));
        if (failure)
            throw EFileNotRead(PathFromText(name), ReasonText(failure));
        if (found.empty())
            context.Warning(fmt::format("{}: a pasta não contém arquivos *.xml nem *.xte", name));
        std::sort(found.begin(), found.end());
        files.insert(files.end(), found.begin(), found.end());
    }
    return files;
}

/// Formats the results of files, one way for all of them.
class TReporter {
  public:
    TReporter(const TCliContext& context, const TValidarOptions& options)
        : formato_(context.Formato), todas_(options.Todas), palette_(context.Streams.OutIsTerminal) {}

    /// Whether what was found right is listed.
    bool ListsSuccesses() const { return todas_; }

    std::string Report(const TValidateArgs& result, const std::string& versao) const {
        std::unordered_set<const TXmlMessage*> shown;
        for (const auto& message : result.ValidationMessages)
            shown.insert(message.get());
        const TXmlMessages listed = todas_ ? Everything(result) : result.ValidationMessages;
        return formato_ == "texto" ? Text(result, versao, listed, shown)
                                   : Json(result, versao, listed, shown);
    }

    /// The result of a file that could not be opened, so that it is missing in no list.
    std::string ReportFailure(const std::string& fileName, std::shared_ptr<const TXmlMessage> failure) const {
        TValidateArgs result;
        result.FileName = fileName;
        result.AllMessages = {failure};
        result.ValidationMessages = {std::move(failure)};
        return Report(result, {});
    }

  private:
    /// What the run found, then what the controller added for the user.
    static TXmlMessages Everything(const TValidateArgs& result) {
        std::unordered_set<const TXmlMessage*> found;
        for (const auto& message : result.AllMessages)
            found.insert(message.get());
        TXmlMessages all = result.AllMessages;
        for (const auto& message : result.ValidationMessages)
            if (found.count(message.get()) == 0)
                all.push_back(message);
        return all;
    }

    std::string Json(const TValidateArgs& result, const std::string& versao, const TXmlMessages& listed,
                     const std::unordered_set<const TXmlMessage*>& shown) const {
        TJson messages = TJson::array();
        for (const auto& message : listed)
            messages.push_back(MessageJson(*message, shown.count(message.get()) != 0));
        const IArquivoTiss* file = result.ArquivoTiss.get();
        const TJson json = {
            {"arquivo", result.FileName},
            {"xmlValido", result.ValidXml},
            {"valido", result.FileStateFlags.Contains(TFileStateFlag::sfValido)},
            {"estado", result.FileStateFlags.Names()},
            {"tipoArquivo", file != nullptr ? NameOf(file->TipoArquivo()) : std::string_view{}},
            {"tipoTransacao", file != nullptr ? NameOf(file->TipoTransacao()) : std::string_view{}},
            {"versao", versao},
            {"ocultas", result.HiddenCount},
            {"mensagens", std::move(messages)}};
        return JsonText(json, formato_ == "ndjson" ? -1 : 2);
    }

    static std::string Kind(const TValidateArgs& result, const std::string& versao) {
        if (result.ArquivoTiss == nullptr)
            return {};
        return fmt::format("  {}, {}, versão {}\n", KindOf(result.ArquivoTiss->TipoArquivo()).Title,
                           result.ArquivoTiss->TextoTipoTransacao(), versao);
    }

    std::string Text(const TValidateArgs& result, const std::string& versao, const TXmlMessages& listed,
                     const std::unordered_set<const TXmlMessage*>& shown) const {
        std::string text = palette_.Bold(result.FileName) + '\n' + Kind(result, versao);
        std::size_t errors = 0;
        std::size_t warnings = 0;
        for (const auto& message : listed) {
            const TMessageType type = message->MsgType();
            if (shown.count(message.get()) != 0) {
                errors += type == TMessageType::mtError || type == TMessageType::mtFatal ? 1U : 0U;
                warnings += type == TMessageType::mtWarning ? 1U : 0U;
            }
            text += fmt::format("  {}: {}{}\n", palette_.Severity(type, SeverityLabel(type)),
                                IndentLines(message->Msg(), 4), palette_.Dim(Origin(*message)));
            const auto& solvers = message->Solvers();
            for (std::size_t i = 0; i < solvers.size(); ++i)
                text += palette_.Dim(fmt::format("    correção {}: {}", i + 1,
                                                 IndentLines(solvers[i]->Description(), 6))) +
                        '\n';
        }
        if (errors != 0) {
            text += palette_.Severity(TMessageType::mtError, fmt::format("  Arquivo inválido: {}",
                                                                         Counted(errors, "erro", "erros")));
            if (warnings != 0)
                text += fmt::format(", {}", Counted(warnings, "aviso", "avisos"));
            text += ".\n";
        }
        return text;
    }

    /// Column and rule of a message, which its text does not tell.
    static std::string Origin(const TXmlMessage& message) {
        std::string origin;
        if (message.LinePos() != 0)
            origin = fmt::format("coluna {}", message.LinePos());
        if (const std::string rule = RuleName(message); !rule.empty())
            origin += (origin.empty() ? "" : ", ") + rule;
        return origin.empty() ? origin : " (" + origin + ")";
    }

    std::string formato_;
    bool todas_;
    TPalette palette_;
};

TFileReport ValidateFile(const TCliContext& context, const TDBConnectionFactory& terminology,
                         const TReporter& reporter, const std::string& name,
                         const std::vector<std::string>& enabled) {
    TFileReport report;
    const auto controller = context.NewController(terminology);
    controller->SetKeepSuccesses(reporter.ListsSuccesses());
    std::shared_ptr<const std::string> text;
    controller->Events().OnFileOpen.Subscribe(
        [&](TFileOpenArgs& args) { text = std::move(args.SharedContent); });
    controller->Events().OnValidate.Subscribe([&](TValidateArgs& result) {
        report.Text = reporter.Report(result, controller->VersaoTiss());
        report.Status = result.FileStateFlags.Contains(TFileStateFlag::sfValido) ? kExitValid : kExitInvalid;
        report.MissingSchema = result.MissingSchema;
    });
    const auto unreadable = [&](const std::string& reason) {
        report.Error = fmt::format("{}: {}", name, reason);
        report.Status = kExitUnreadable;
        report.Text =
            reporter.ReportFailure(name, std::make_shared<TXmlMessage>(TMessageType::mtFatal, reason));
    };
    try {
        if (name == "-")
            controller->Load(name, ReadTissFile(context, name));
        else
            controller->LoadFromFile(name);
        controller->Validate(std::move(text), enabled);
    } catch (const EFileNotFound&) {
        unreadable("o arquivo não existe");
    } catch (const EFileNotRead& error) {
        unreadable(error.Reason());
    } catch (const EXmlEncoding& error) {
        report.Status = kExitInvalid;
        report.Text = reporter.ReportFailure(name, error.Message());
    }
    return report;
}

/// Prints reports: as they come, or in the order of the files.
class TOutput {
  public:
    TOutput(const TCliContext& context, std::size_t total)
        : context_(context), out_(context.Streams.Out),
          progress_(context.Streams.Err, context.Streams.ErrIsTerminal, total), waiting_(total) {
        if (context.Json())
            out_ << "[";
    }

    TProgressBar& Progress() { return progress_; }

    void Add(std::size_t index, TFileReport report) {
        const std::lock_guard lock(mutex_);
        progress_.End();
        ++byStatus_[static_cast<std::size_t>(report.Status)];
        if (context_.Formato == "ndjson") {
            Print(report);
            return;
        }
        waiting_[index] = std::move(report);
        for (; next_ < waiting_.size() && waiting_[next_].has_value(); ++next_) {
            Print(*waiting_[next_]);
            waiting_[next_].emplace(); // printed; its text is no longer needed
        }
    }

    int Finish() {
        if (context_.Json())
            out_ << (printed_ == 0 ? "]\n" : "\n]\n");
        else if (context_.Formato == "texto" && printed_ > 1)
            out_ << '\n'
                 << fmt::format("{}: {}, {}", Counted(printed_, "arquivo", "arquivos"),
                                Counted(byStatus_[kExitValid], "válido", "válidos"),
                                Counted(byStatus_[kExitInvalid], "inválido", "inválidos"))
                 << (byStatus_[kExitUnreadable] == 0
                         ? std::string()
                         : fmt::format(", {}", Counted(byStatus_[kExitUnreadable], "não lido", "não lidos")))
                 << ".\n";
        if (byStatus_[kExitUnreadable] != 0)
            return kExitUnreadable;
        return byStatus_[kExitInvalid] != 0 ? kExitInvalid : kExitValid;
    }

  private:
    void Print(const TFileReport& report) {
        progress_.Clear();
        if (context_.Json())
            out_ << (printed_ == 0 ? "\n" : ",\n") << report.Text;
        else if (context_.Formato == "ndjson")
            out_ << report.Text << '\n' << std::flush;
        else
            out_ << (printed_ == 0 ? "" : "\n") << report.Text << std::flush;
        ++printed_;
        if (!report.Error.empty())
            context_.Error(report.Error);
        if (!report.MissingSchema.empty() && !advised_) {
            advised_ = true;
            context_.Warning(fmt::format(
                "o schema \"{}\" foi procurado na pasta \"{}\". Para instalar os schemas publicados "
                "pela ANS: conferix esquemas importar PASTA",
                PathText(report.MissingSchema.filename()), PathText(report.MissingSchema.parent_path())));
        }
    }

    const TCliContext& context_;
    std::ostream& out_;
    std::mutex mutex_;
    TProgressBar progress_;
    std::vector<std::optional<TFileReport>> waiting_;
    std::size_t next_ = 0;
    std::size_t printed_ = 0;
    std::array<std::size_t, 4> byStatus_{};
    bool advised_ = false;
};

} // namespace

int RunValidar(const TCliContext& context, const TValidarOptions& options) {
    const std::vector<std::string> enabled = EnabledRules(context, options.Desativar);
    const std::vector<std::string> files = ExpandFolders(context, options.Arquivos);
    const TReporter reporter(context, options);
    TOutput output(context, files.size());
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        const TDBConnectionFactory terminology = context.KeptTerminology();
        for (std::size_t index = next++; index < files.size(); index = next++) {
            output.Progress().Begin(files[index]);
            output.Add(index, ValidateFile(context, terminology, reporter, files[index], enabled));
        }
    };
    std::vector<std::jthread> threads;
    const std::size_t workers = options.Paralelo.value_or(std::max(1U, std::thread::hardware_concurrency()));
    for (std::size_t i = 1; i < std::min(workers, files.size()); ++i)
        threads.emplace_back(work);
    work();
    threads.clear(); // waits for them
    return output.Finish();
}

} // namespace conferix
