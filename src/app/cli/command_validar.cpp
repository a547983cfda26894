#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/message_json.h"
#include "app/cli/progress.h"
#include "app/message_groups.h"
#include "model/lote_guias.h"
#include "model/mensagem_tiss.h"
#include "model/tiss_kinds.h"
#include "model/tiss_utils.h"
#include "platform/platform.h"
#include "validation/solver.h"
#include "validation/validation_message.h"
#include "xml/cut_text.h"
#include "xml/lower_case.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>
#include <mutex>
#include <new>
#include <optional>
#include <ostream>
#include <set>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace conferix {

namespace {

/// A guide of a lot, to be found again in other files.
struct TBilledGuide {
    std::string Key; ///< provider and number
    std::string Number;
    std::int32_t Line;
};

std::vector<TBilledGuide> GuidesOf(const TValidateArgs& result) {
    std::vector<TBilledGuide> guides;
    const auto* mensagem = dynamic_cast<const IMensagemTiss*>(result.ArquivoTiss.get());
    if (mensagem == nullptr || mensagem->TipoTransacao() != TEnumTipoTransacaoTiss::tmEnvioLoteGuias)
        return guides;
    const TXmlDocument& document = *mensagem->Xml();
    const std::string provider = fmt::format("{}/{}/{}/", TTissUtils::IdentificacaoPrestadorCnpj(document),
                                             TTissUtils::IdentificacaoPrestadorCpf(document),
                                             TTissUtils::IdentificacaoPrestadorCodigoNaOperadora(document));
    for (const IGuiaTiss& guia : mensagem->LoteGuias().Guias())
        if (const std::string number(guia.NumeroGuia()); !number.empty())
            guides.push_back({provider + number, number, static_cast<std::int32_t>(guia.Node()->Line())});
    return guides;
}

/// What came of one file: the text to print and the exit status that it asks for.
struct TFileReport {
    std::string Text;
    int Status = kExitValid;
    std::string Error;                   ///< told on standard error
    std::string Obstacle;                ///< the same, once a run: what keeps files from being judged
    std::filesystem::path MissingSchema; ///< the user is told how to install it
    std::vector<TBilledGuide> Guides;    ///< kept where several files are validated
};

std::vector<std::string> EnabledRules(const TCliContext& context, const std::vector<std::string>& disabled) {
    TConfig config = context.LoadConfig();
    return disabled.empty() ? config.EnabledValidations() : SwitchRules(config, disabled, false);
}

bool HasTissExtension(const std::filesystem::path& file) {
    const std::string extension = LowerCase(file.extension().string());
    return extension == ".xml" || extension == ".xte";
}

/// A file to validate, or what stands for something that no file came of.
struct TInput {
    std::string Name;
    std::string Failure; ///< why it cannot be validated; empty for a file
};

/// The *.xml and *.xte files of a folder, in order of their names, and what could not be searched. Links are
/// followed, each folder is searched once.
std::vector<TInput> SearchFolder(const std::string& name, bool withSubfolders) {
    std::vector<TInput> found;
    std::set<std::filesystem::path> searched;
    std::vector<std::filesystem::path> pending = {PathFromText(name)};
    while (!pending.empty()) {
        const std::filesystem::path folder = std::move(pending.back());
        pending.pop_back();
        std::error_code failure;
        const std::filesystem::path place = std::filesystem::weakly_canonical(folder, failure);
        if (!searched.insert(failure ? folder : place).second)
            continue;
        for (auto entry = std::filesystem::directory_iterator(folder, failure);
             !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
            std::error_code unreachable; // told when the file is read
            if (entry->is_directory(unreachable)) {
                if (withSubfolders)
                    pending.push_back(entry->path());
            } else if (HasTissExtension(entry->path())) {
                found.push_back({PathText(entry->path()), {}});
            } else if (unreachable || (entry->is_symlink(unreachable) && !entry->exists(unreachable))) {
                // It may be a folder of files that nobody would miss.
                found.push_back({PathText(entry->path()),
                                 "a ligação leva a um lugar que não existe ou não pode ser lido"});
            }
        }
        if (failure)
            found.push_back({PathText(folder), ReasonText(failure)});
    }
    if (found.empty())
        found.push_back({name, "a pasta não contém arquivos *.xml nem *.xte"});
    std::ranges::sort(found, {}, &TInput::Name);
    return found;
}

/// What the names of the command line stand for.
std::vector<TInput> ExpandFolders(const TValidarOptions& options) {
    std::vector<TInput> inputs;
    for (const std::string& name : options.Arquivos) {
        std::error_code failure;
        if (name == "-" || !std::filesystem::is_directory(PathFromText(name), failure)) {
            inputs.push_back({name, {}});
            continue;
        }
        std::vector<TInput> found = SearchFolder(name, !options.SemSubpastas);
        std::ranges::move(found, std::back_inserter(inputs));
    }
    return inputs;
}

/// Formats the results of files, one way for all of them.
class TReporter {
  public:
    TReporter(const TCliContext& context, const TValidarOptions& options)
        : formato_(context.Formato), todas_(options.Todas), detalhar_(options.Detalhar),
          palette_(context.Streams.OutIsTerminal) {}

    /// Whether what was found right is listed.
    bool ListsSuccesses() const { return todas_; }

    std::string Report(const TValidateArgs& result, const std::string& versao) const {
        std::unordered_set<const TXmlMessage*> shown;
        for (const auto& message : result.ValidationMessages)
            shown.insert(message.get());
        const TXmlMessages listed = todas_ ? Everything(result) : result.ValidationMessages;
        return formato_ == "texto" ? Text(result, versao, listed) : Json(result, versao, listed, shown);
    }

    /// The result of a file that could not be opened, so that it is missing in no list. `verified`: the
    /// failure is the file's.
    std::string ReportFailure(const std::string& fileName, std::shared_ptr<const TXmlMessage> failure,
                              bool verified) const {
        TValidateArgs result;
        result.FileName = fileName;
        result.Verified = verified;
        result.AllMessages = {failure};
        result.Counts.Add(failure->MsgType());
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
        std::vector<std::size_t> groupOf(listed.size());
        const std::vector<TMessageGroup> groups = GroupMessages(listed, result.Unlisted);
        for (std::size_t number = 0; number < groups.size(); ++number)
            for (const std::size_t index : groups[number].Messages)
                groupOf[index] = number + 1;
        const IArquivoTiss* file = result.ArquivoTiss.get();
        std::size_t unlisted = 0;
        for (const TUnkeptFindings& of : result.Unlisted)
            unlisted += of.Counts.Findings();
        const TJson json = {
            {"arquivo", result.FileName},
            {"xmlValido", result.ValidXml},
            {"valido", VerdictJson(result)},
            {"estado", result.FileStateFlags.Names()},
            {"tipoArquivo", file != nullptr ? NameOf(file->TipoArquivo()) : std::string_view{}},
            {"tipoTransacao", file != nullptr ? NameOf(file->TipoTransacao()) : std::string_view{}},
            {"versao", versao},
            {"erros", result.Counts.Failures()},
            {"avisos", result.Counts.Warnings()},
            {"ocultas", result.HiddenCount},
            {"naoListadas", unlisted},
            {"mensagens", TJson::array()}};
        // The list goes in message by message: all of them as one value would take many times their text.
        TJsonList list(JsonText(json, formato_ == "ndjson" ? -1 : 2), formato_ == "ndjson" ? -1 : 2);
        for (std::size_t i = 0; i < listed.size(); ++i) {
            TJson message = MessageJson(*listed[i], shown.count(listed[i].get()) != 0);
            message["grupo"] = groupOf[i];
            list.Add(message);
        }
        return list.Take();
    }

    static std::string Kind(const TValidateArgs& result, const std::string& versao) {
        if (result.ArquivoTiss == nullptr)
            return {};
        const std::string transacao = Visible(result.ArquivoTiss->TextoTipoTransacao());
        return fmt::format("  {}, {}, {}\n", KindOf(result.ArquivoTiss->TipoArquivo()).Title,
                           transacao.empty() ? "transação não informada" : transacao,
                           versao.empty() ? "versão não informada" : "versão " + Visible(versao));
    }

    std::string Text(const TValidateArgs& result, const std::string& versao,
                     const TXmlMessages& listed) const {
        std::string text = palette_.Bold(Visible(result.FileName)) + '\n' + Kind(result, versao);
        const std::size_t errors = result.Counts.Failures();
        const std::size_t warnings = result.Counts.Warnings();
        const std::vector<TMessageGroup> groups =
            detalhar_ ? Ungrouped(listed.size()) : GroupMessages(listed, result.Unlisted);
        for (const TMessageGroup& group : groups) {
            const TXmlMessage& first = *listed[group.Messages.front()];
            text += fmt::format(
                "  {}: {}{}\n", palette_.Severity(first.MsgType(), SeverityLabel(first.MsgType())),
                IndentLines(GroupText(listed, group), 4), palette_.Dim(Origin(first, group.Count == 1)));
            text += Corrections(listed, group);
        }
        if (groups.size() < listed.size())
            text += palette_.Dim("  Mensagens de mesma causa estão agrupadas; --detalhar mostra cada uma.") +
                    '\n';
        if (!result.Verified) {
            text += palette_.Severity(TMessageType::mtError, "  Arquivo não verificado.") + '\n';
        } else if (errors != 0) {
            text += palette_.Severity(TMessageType::mtError, fmt::format("  Arquivo inválido: {}",
                                                                         Counted(errors, "erro", "erros")));
            if (warnings != 0)
                text += fmt::format(", {}", Counted(warnings, "aviso", "avisos"));
            text += ".\n";
        }
        return text;
    }

    static std::vector<TMessageGroup> Ungrouped(std::size_t count) {
        std::vector<TMessageGroup> groups(count);
        for (std::size_t i = 0; i < count; ++i) {
            groups[i].Messages = {i};
            groups[i].Count = 1;
        }
        return groups;
    }

    /// The corrections of a group: those of its first finding, of which the values may be its own.
    std::string Corrections(const TXmlMessages& listed, const TMessageGroup& group) const {
        std::string text;
        const TXmlMessage& first = *listed[group.Messages.front()];
        for (std::size_t i = 0; i < first.Solvers().size(); ++i) {
            const std::string description = first.Solvers()[i]->Description();
            const bool same = std::ranges::all_of(group.Messages, [&](std::size_t index) {
                const auto& solvers = listed[index]->Solvers();
                return i < solvers.size() && solvers[i]->Description() == description;
            });
            text += palette_.Dim(fmt::format("    correção {}: {}{}", i + 1, IndentLines(description, 6),
                                             same ? "" : " (na primeira; nas outras, o que couber)")) +
                    '\n';
        }
        return text;
    }

    /// Column and rule of a message, which its text does not tell.
    static std::string Origin(const TXmlMessage& message, bool alone) {
        std::string origin;
        if (alone && message.LinePos() != 0)
            origin = fmt::format("coluna {}", message.LinePos());
        if (const std::string rule = RuleName(message); !rule.empty())
            origin += (origin.empty() ? "" : ", ") + rule;
        return origin.empty() ? origin : " (" + origin + ")";
    }

    std::string formato_;
    bool todas_;
    bool detalhar_;
    TPalette palette_;
};

TFileReport UnreadableFile(const TReporter& reporter, const std::string& name, const std::string& reason) {
    TFileReport report;
    report.Error = fmt::format("{}: {}", name, reason);
    report.Status = kExitUnreadable;
    report.Text =
        reporter.ReportFailure(name, std::make_shared<TXmlMessage>(TMessageType::mtFatal, reason), false);
    return report;
}

/// Validates one file; whatever happens, a report comes of it.
TFileReport ValidateFile(const TCliContext& context, const TDBConnectionFactory& terminology,
                         const TReporter& reporter, const TInput& input,
                         const std::vector<std::string>& enabled, bool oneOfSeveral) {
    const std::string& name = input.Name;
    TFileReport report;
    const auto unreadable = [&](const std::string& reason) {
        report = UnreadableFile(reporter, name, reason);
    };
    try {
        if (!input.Failure.empty()) {
            unreadable(input.Failure);
            return report;
        }
        const auto controller = context.NewController(terminology);
        controller->SetKeepSuccesses(reporter.ListsSuccesses());
        std::shared_ptr<const std::string> text;
        controller->Events().OnFileOpen.Subscribe(
            [&](TFileOpenArgs& args) { text = std::move(args.SharedContent); });
        controller->Events().OnValidate.Subscribe([&](TValidateArgs& result) {
            report.Text = reporter.Report(result, controller->VersaoTiss());
            report.Status = StatusOf(result);
            report.MissingSchema = result.MissingSchema;
            if (!result.Verified && !result.AllMessages.empty())
                report.Obstacle = OneLine(result.AllMessages.back()->Msg());
            if (oneOfSeveral)
                report.Guides = GuidesOf(result);
        });
        if (name == "-")
            controller->Load(name, ReadTissFile(context, name, TXmlUndecodable::Guessed));
        else
            controller->LoadFromFile(name);
        controller->Validate(std::move(text), enabled);
    } catch (const EFileNotFound&) {
        unreadable("o arquivo não existe");
    } catch (const EFileNotRead& error) {
        unreadable(error.Reason());
    } catch (const std::bad_alloc&) {
        unreadable(kOutOfMemory);
    } catch (const EXmlEncoding& error) {
        report.Status = kExitInvalid;
        report.Text = reporter.ReportFailure(name, error.Message(), true);
    } catch (const std::exception& error) {
        unreadable(error.what());
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
        Note(index, report);
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

    int Finish(const std::vector<TInput>& inputs) {
        if (context_.Json())
            out_ << (printed_ == 0 ? "]\n" : "\n]\n");
        else if (context_.Formato == "texto" && printed_ > 1)
            out_ << '\n'
                 << fmt::format("{}: {}, {}", Counted(printed_, "arquivo", "arquivos"),
                                Counted(byStatus_[kExitValid], "válido", "válidos"),
                                Counted(byStatus_[kExitInvalid], "inválido", "inválidos"))
                 << (byStatus_[kExitUnreadable] == 0
                         ? std::string()
                         : fmt::format(", {}", Counted(byStatus_[kExitUnreadable], "não verificado",
                                                       "não verificados")))
                 << ".\n";
        TellRepeated(inputs);
        if (byStatus_[kExitUnreadable] != 0)
            return kExitUnreadable;
        return byStatus_[kExitInvalid] != 0 ? kExitInvalid : kExitValid;
    }

  private:
    /// Where a guide was billed first, and where again.
    struct TBilled {
        std::size_t File;
        std::int32_t Line;

        bool operator<(const TBilled& other) const {
            return std::pair(File, Line) < std::pair(other.File, other.Line);
        }
    };
    struct TRepeated {
        std::string Number;
        TBilled First;
        TBilled Again;
    };

    void Note(std::size_t file, const TFileReport& report) {
        for (const TBilledGuide& guide : report.Guides) {
            const TBilled here{file, guide.Line};
            const auto [known, added] = billed_.try_emplace(guide.Key, here);
            if (!added && known->second.File != file)
                repeated_.push_back(
                    {guide.Number, std::min(known->second, here), std::max(known->second, here)});
        }
    }

    /// Guides of one provider that are in two files; a second bill is refused.
    void TellRepeated(const std::vector<TInput>& inputs) {
        constexpr std::size_t kTold = 50;
        std::erase_if(repeated_, [&](const TRepeated& guide) { // one file under two names
            std::error_code failure;
            return std::filesystem::equivalent(PathFromText(inputs[guide.First.File].Name),
                                               PathFromText(inputs[guide.Again.File].Name), failure);
        });
        std::ranges::sort(repeated_, {},
                          [](const TRepeated& guide) { return std::pair(guide.First, guide.Again); });
        for (std::size_t i = 0; i < std::min(repeated_.size(), kTold); ++i) {
            const TRepeated& guide = repeated_[i];
            context_.Warning(fmt::format("{}: Guia {} está também em {}, linha {}",
                                         inputs[guide.First.File].Name, CutText(guide.Number),
                                         inputs[guide.Again.File].Name, guide.Again.Line));
        }
        if (repeated_.size() > kTold)
            context_.Warning(fmt::format("e mais {} em dois arquivos",
                                         Counted(repeated_.size() - kTold, "guia", "guias")));
    }

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
        if (!report.Obstacle.empty() && obstacles_.insert(report.Obstacle).second)
            context_.Error(report.Obstacle);
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
    std::set<std::string> obstacles_;                 ///< told
    std::unordered_map<std::string, TBilled> billed_; ///< by provider and number
    std::vector<TRepeated> repeated_;
};

} // namespace

int RunValidar(const TCliContext& context, const TValidarOptions& options) {
    std::vector<TInput> inputs = ExpandFolders(options);
    std::vector<std::string> enabled;
    try {
        enabled = EnabledRules(context, options.Desativar);
    } catch (const EInvalidConfig& error) { // told once; no file can be judged
        context.Error(error.what());
        for (TInput& input : inputs)
            input.Failure = "as regras ativas não puderam ser lidas";
    }
    const TReporter reporter(context, options);
    TOutput output(context, inputs.size());
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        const TDBConnectionFactory terminology = context.KeptTerminology();
        for (std::size_t index = next++; index < inputs.size(); index = next++) {
            output.Progress().Begin(inputs[index].Name);
            TFileReport report =
                ValidateFile(context, terminology, reporter, inputs[index], enabled, inputs.size() > 1);
            try {
                output.Add(index, std::move(report));
            } catch (const std::bad_alloc&) { // what is kept of the other files went beyond the memory
                output.Add(index, UnreadableFile(reporter, inputs[index].Name, kOutOfMemory));
            }
        }
    };
    std::vector<std::jthread> threads;
    const std::size_t workers = options.Paralelo.value_or(std::max(1U, std::thread::hardware_concurrency()));
    try {
        for (std::size_t i = 1; i < std::min(workers, inputs.size()); ++i)
            threads.emplace_back(work);
    } catch (const std::system_error&) {
        context.Warning(fmt::format("o sistema só permite {} ao mesmo tempo",
                                    Counted(threads.size() + 1, "arquivo", "arquivos")));
    }
    work();
    threads.clear(); // waits for them
    return output.Finish(inputs);
}

} // namespace conferix
