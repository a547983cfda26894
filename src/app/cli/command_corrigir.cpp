#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/message_json.h"
#include "app/execute_solver.h"
#include "app/unified_diff.h"
#include "platform/platform.h"
#include "validation/signature.h"
#include "xml/cut_text.h"

#include <fmt/format.h>

#include <ostream>

namespace conferix {

namespace {

void CheckOptions(const TCorrigirOptions& options) {
    const bool corrects = options.Todas || options.Mensagem != 0;
    const bool writes = !options.Saida.empty() || options.NoLugar || options.Simular;
    if (!corrects && (writes || options.Correcao != 0))
        throw EUsage("escolha o que corrigir, com --mensagem N ou --todas");
    if (options.NoLugar && options.Arquivo == "-")
        throw EUsage("a entrada padrão não pode ser corrigida no lugar; use --saida ARQUIVO");
}

/// The chosen correction where a message has it, else the first.
TSolverChoice ChoiceOf(const TCorrigirOptions& options) {
    const std::size_t wanted = options.Correcao == 0 ? 0 : static_cast<std::size_t>(options.Correcao) - 1;
    return [wanted](const auto& solvers) -> std::optional<std::size_t> {
        return wanted < solvers.size() ? wanted : 0;
    };
}

/// Corrects one file.
class TCorrection {
  public:
    TCorrection(const TCliContext& context, const TCorrigirOptions& options)
        : context_(context), options_(options), controller_(context.NewController()) {}

    int Run(const TTissFile& before) {
        const std::shared_ptr<const std::string>& text = before.Text();
        controller_->Load(options_.Arquivo, before);
        const std::vector<std::string> enabled = context_.LoadConfig().EnabledValidations();

        TCorrectionResult result{text, {}, {}};
        if (options_.Todas)
            result = CorrectAll(*controller_, text, enabled, ChoiceOf(options_));
        else
            controller_->Validate(text, enabled);
        if (Result().ArquivoTiss == nullptr)
            return Refuse();
        if (!options_.Todas) {
            if (options_.Mensagem == 0)
                return List();
            result = CorrectMessage(text, enabled);
        }
        const TTissFile after = before.WithText(result.Xml);
        Write(before, after);
        if (context_.Json())
            context_.Streams.Out << JsonText(Report(before, after, result)) << '\n';
        Summarize(result);
        return Status();
    }

  private:
    const TValidateArgs& Result() const { return controller_->Events().OnValidate.Current(); }

    int Status() const {
        return Result().FileStateFlags.Contains(TFileStateFlag::sfValido) ? kExitValid : kExitInvalid;
    }

    /// Without a file that was understood there is nothing to correct and nothing to write.
    int Refuse() const {
        for (const auto& message : Result().ValidationMessages)
            context_.Error(fmt::format("{}: {}", options_.Arquivo, message->Msg()));
        return Result().OutOfMemory ? kExitUnreadable : kExitInvalid;
    }

    /// Shows the messages that offer corrections, with the numbers by which they are chosen.
    int List() const {
        const TXmlMessages& messages = Result().ValidationMessages;
        std::ostream& out = context_.Streams.Out;
        const TPalette palette(context_.Streams.OutIsTerminal);
        TJson list = TJson::array();
        std::string text;
        for (std::size_t i = 0; i < messages.size(); ++i) {
            const TXmlMessage& message = *messages[i];
            if (message.Solvers().empty())
                continue;
            if (context_.Json()) {
                TJson entry = {{"numero", i + 1}};
                entry.update(MessageJson(message, true));
                list.push_back(std::move(entry));
                continue;
            }
            text += fmt::format("mensagem {}: {}: {}\n", i + 1,
                                palette.Severity(message.MsgType(), SeverityLabel(message.MsgType())),
                                IndentLines(message.Msg(), 2));
            for (std::size_t k = 0; k < message.Solvers().size(); ++k)
                text += fmt::format("  correção {}: {}\n", k + 1,
                                    IndentLines(message.Solvers()[k]->Description(), 4));
        }
        if (context_.Json())
            out << JsonText(list) << '\n';
        else
            out << (text.empty() ? "Nenhuma mensagem oferece correção.\n" : text);
        return Status();
    }

    TCorrectionResult CorrectMessage(const std::shared_ptr<const std::string>& text,
                                     const std::vector<std::string>& enabled) {
        const TXmlMessages messages = Result().ValidationMessages;
        const auto number = static_cast<std::size_t>(options_.Mensagem);
        if (number > messages.size())
            throw EUsage(fmt::format("a mensagem {} não existe; o arquivo tem {}", number,
                                     Counted(messages.size(), "mensagem", "mensagens")));
        const TXmlMessage& message = *messages[number - 1];
        if (message.Solvers().empty())
            throw EUsage(fmt::format("a mensagem {} não oferece correção", number));
        if (static_cast<std::size_t>(options_.Correcao) > message.Solvers().size())
            throw EUsage(fmt::format("a correção {} não existe; a mensagem {} oferece {}", options_.Correcao,
                                     number, Counted(message.Solvers().size(), "correção", "correções")));
        TCorrectionResult result{text, {}, {}};
        ExecuteSolver(*controller_, messages, message.Id(), enabled,
                      {ChoiceOf(options_), [&](const TCorrectionRecord& record, const auto& xml) {
                           result.Xml = xml;
                           if (*xml != *text)
                               result.Applied.push_back(record);
                       }});
        return result;
    }

    std::string Difference(const std::string& before, const std::string& after) const {
        return UnifiedDiff(before, after, options_.Arquivo, options_.Arquivo + " (corrigido)");
    }
    /// The difference of the texts, the corrected one as it will be read.
    std::string TextDifference(const TTissFile& before, const TTissFile& after) const {
        return Difference(*before.Text(), *TTissFile(after.Bytes()).Text());
    }

    void Write(const TTissFile& before, const TTissFile& after) const {
        if (options_.Simular) {
            // For a terminal as text, else in the bytes of the files, so that the difference can be applied.
            if (!context_.Json())
                context_.Streams.Out << (context_.Streams.OutIsTerminal
                                             ? TextDifference(before, after)
                                             : Difference(before.Bytes(), after.Bytes()));
        } else if (!options_.Saida.empty()) {
            after.Write(PathFromText(options_.Saida));
        } else if (!options_.NoLugar) {
            if (!context_.Json())
                context_.Streams.Out << after.Bytes();
        } else if (*after.Text() != *before.Text()) {
            after.Write(PathFromText(options_.Arquivo));
        }
    }

    TJson Report(const TTissFile& before, const TTissFile& after, const TCorrectionResult& result) const {
        TJson report = {{"arquivo", options_.Arquivo},
                        {"correcoes", TJson::array()},
                        {"naoCorrigidas", TJson::array()},
                        {"valido", Status() == kExitValid}};
        for (const TCorrectionRecord& record : result.Applied)
            report["correcoes"].push_back(CorrectionJson(record));
        for (const TCorrectionRecord& record : result.LeftOut)
            report["naoCorrigidas"].push_back(CorrectionJson(record));
        if (options_.Simular)
            report["diferenca"] = TextDifference(before, after);
        return report;
    }

    /// Each change with its place, its old and new value, then what was left as it is and why.
    void ListChanges(const TCorrectionResult& result) const {
        std::ostream& out = context_.Streams.Err;
        for (const TCorrectionRecord& record : result.Applied)
            out << fmt::format("  {}{}\n", PlaceOf(record),
                               record.Element.empty()
                                   ? IndentLines(record.Description, 2)
                                   : fmt::format("<{}>: {} -> {}", record.Element, CutText(record.Before),
                                                 CutText(record.After)));
        for (const TCorrectionRecord& record : result.LeftOut)
            out << fmt::format("  não corrigido: {}<{}> continua {}: {}.\n", PlaceOf(record), record.Element,
                               CutText(record.Before), record.Reason);
    }

    static std::string PlaceOf(const TCorrectionRecord& record) {
        const std::string place = record.Message->Place();
        return place.empty() ? place : place + " ";
    }

    void Summarize(const TCorrectionResult& result) const {
        ListChanges(result);
        const std::size_t corrections = result.Applied.size();
        const std::size_t failures = Result().Counts.Failures();
        context_.Streams.Err << fmt::format(
            "{}: {}; {}.\n", options_.Arquivo,
            corrections == 0 ? "nada foi corrigido"
                             : Counted(corrections, "correção aplicada", "correções aplicadas"),
            failures == 0 ? "o arquivo está válido"
                          : Counted(failures, "erro permanece", "erros permanecem"));
        const auto& file = Result().ArquivoTiss;
        if (corrections != 0 && file != nullptr && IsSigned(*file->Xml()))
            context_.Warning(fmt::format("{}: {}", options_.Arquivo, kSignatureNote));
    }

    const TCliContext& context_;
    const TCorrigirOptions& options_;
    std::unique_ptr<TValidadorController> controller_;
};

} // namespace

int RunCorrigir(const TCliContext& context, const TCorrigirOptions& options) {
    CheckOptions(options);
    return RunOnFile(context, options.Arquivo,
                     [&](const TTissFile& file) { return TCorrection(context, options).Run(file); });
}

} // namespace conferix
