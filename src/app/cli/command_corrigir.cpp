#include "app/cli/commands.h"
#include "app/cli/correction_list.h"
#include "app/correction_policy.h"
#include "app/execute_solver.h"
#include "app/file_correction.h"
#include "app/message_groups.h"
#include "app/missing_data.h"
#include "app/recoding.h"
#include "app/unified_diff.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"
#include "validation/signature.h"
#include "validation/structure_solver.h"
#include "xml/cut_text.h"
#include "xml/lower_case.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <sstream>
#include <utility>

namespace conferix {

namespace {

void CheckOptions(const TCliContext& context, const TCorrigirOptions& options) {
    const bool corrects =
        options.Todas || options.Estrutura || options.Mensagem != 0 || !options.Codificacao.empty();
    const bool writes = !options.Saida.empty() || options.NoLugar || options.Simular;
    if (!corrects && (writes || options.Correcao != 0))
        throw EUsage("escolha o que corrigir, com --mensagem N, --estrutura, --todas ou --codificacao");
    if (options.Copia && options.Saida.empty() && !options.NoLugar)
        throw EUsage("--copia guarda o arquivo que é substituído; use com --no-lugar ou --saida ARQUIVO");
    const auto inputs = std::ranges::count(options.Arquivos, "-");
    if (inputs > 1)
        throw EUsage("a entrada padrão só pode ser lida uma vez");
    if (options.NoLugar && inputs != 0)
        throw EUsage("a entrada padrão não pode ser corrigida no lugar; use --saida ARQUIVO");
    if (options.Arquivos.size() > 1) {
        if (options.Mensagem != 0)
            throw EUsage(
                "--mensagem escolhe uma mensagem de um arquivo; com vários, use --todas ou --estrutura");
        if (corrects && !options.NoLugar && !options.Simular)
            throw EUsage("para corrigir vários arquivos, use --no-lugar ou --simular");
    }
    if (corrects && !writes && context.Json())
        throw EUsage(
            "em JSON sai o que foi corrigido, não o arquivo; use --simular, ou --no-lugar ou --saida "
            "ARQUIVO para gravar");
    if (corrects && !writes && context.Streams.OutIsTerminal)
        throw EUsage("o arquivo corrigido não é mostrado no terminal; use --simular para ver as diferenças, "
                     "--no-lugar "
                     "ou --saida ARQUIVO para gravar, ou redirecione a saída (> ARQUIVO)");
}

/// The chosen correction where a message has it, else the first.
TSolverChoice ChoiceOf(const TCorrigirOptions& options) {
    const std::size_t wanted = options.Correcao == 0 ? 0 : static_cast<std::size_t>(options.Correcao) - 1;
    return [wanted](const auto& solvers) -> std::optional<std::size_t> {
        return wanted < solvers.size() ? wanted : 0;
    };
}

/// The name of a file whose name carries number and hash of its lot (20 digits, "_", 32 hexadecimal digits)
/// with another hash; empty where it does not, or the hash is the same.
std::filesystem::path NameWithHash(const std::filesystem::path& name, const std::string& hash) {
    constexpr std::size_t kNumber = 20;
    constexpr std::size_t kHash = 32;
    std::string stem = PathText(name.stem());
    const bool fits = stem.size() == kNumber + 1 + kHash && stem[kNumber] == '_' && hash.size() == kHash &&
                      stem.find_first_not_of("0123456789") == kNumber &&
                      stem.find_first_not_of("0123456789abcdefABCDEF", kNumber + 1) == std::string::npos;
    if (!fits || LowerCase(stem.substr(kNumber + 1)) == LowerCase(hash))
        return {};
    const bool upper = stem.find_first_of("abcdef", kNumber + 1) == std::string::npos &&
                       stem.find_first_of("ABCDEF", kNumber + 1) != std::string::npos;
    std::string written = LowerCase(hash);
    if (upper)
        std::ranges::transform(written, written.begin(), [](char c) {
            return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
        });
    stem.replace(kNumber + 1, kHash, written);
    return PathFromText(stem + PathText(name.extension()));
}

/// Corrects one file.
class TCorrection {
  public:
    /// The report of JSON is added to `reports`.
    TCorrection(const TCliContext& context, const TCorrigirOptions& options, std::string file, TJson& reports)
        : context_(context), options_(options), file_(std::move(file)), reports_(reports),
          controller_(context.NewController()) {}

    int Run(const TTissFile& before) {
        controller_->Load(file_, before);
        const std::shared_ptr<const std::string> text = Recode(before);
        const std::vector<std::string> enabled = context_.LoadConfig().EnabledValidations();

        TCorrectionResult result = CorrectFile(
            *controller_, text, enabled,
            {.Estrutura = options_.Estrutura, .ComPerdas = options_.ComPerdas, .Todas = options_.Todas},
            ChoiceOf(options_));
        if (!options_.Todas && !options_.Estrutura)
            controller_->Validate(text, enabled);
        if (Result().ArquivoTiss == nullptr && !OffersSingleCorrections())
            return Refuse();
        if (!options_.Todas && !options_.Estrutura) {
            if (options_.Mensagem != 0)
                result = CorrectMessage(text, enabled);
            else if (options_.Codificacao.empty())
                return List();
        }
        const TTissFile after = before.WithText(result.Xml, controller_->Encoding());
        if ((options_.Todas || options_.Estrutura) && !options_.Simular)
            LogCorrections(file_, result.Applied);
        RequireFreeName();
        Write(before, after);
        const std::string renamed = Rename(after);
        if (context_.Json())
            reports_.push_back(Report(before, after, result, renamed));
        Summarize(result);
        return Status();
    }

  private:
    const TValidateArgs& Result() const { return controller_->Events().OnValidate.Current(); }

    int Status() const { return StatusOf(Result()); }

    /// The text as it is to be written in the encoding that the user asked for, which the controller then
    /// holds it in; tells the characters that it lacks.
    std::shared_ptr<const std::string> Recode(const TTissFile& before) const {
        if (options_.Codificacao.empty())
            return before.Text();
        TXmlRecoding recoding = HoldInEncoding(*controller_, before, options_.Codificacao);
        constexpr std::size_t kShown = 20;
        const TRecodingList list = ListRecoding(recoding.Replaced, options_.Detalhar ? 0 : kShown);
        for (const std::string& line : list.Lines)
            context_.Streams.Err << fmt::format("  {}\n", Visible(line));
        if (list.Further != 0)
            context_.Streams.Err << fmt::format(
                "  e mais {}; --detalhar mostra todas.\n",
                Counted(list.Further, "mudança como essas", "mudanças como essas"));
        return std::make_shared<const std::string>(std::move(recoding.Text));
    }

    /// True where a single correction, or the list of them, is asked for and the file offers some.
    bool OffersSingleCorrections() const {
        return !options_.Todas && !options_.Estrutura && options_.Codificacao.empty() &&
               std::ranges::any_of(Result().ValidationMessages,
                                   [](const auto& message) { return !message->Solvers().empty(); });
    }

    /// Without a file that was understood there is nothing to correct and nothing to write.
    int Refuse() const {
        if (!Result().MissingSchema.empty())
            context_.Error(fmt::format("{}: {}", file_, MissingSchemaText(Result().MissingSchema)));
        else
            for (const auto& message : Result().ValidationMessages)
                context_.Error(fmt::format("{}: {}", file_, OneLine(message->Msg())));
        const auto offered = static_cast<std::size_t>(std::ranges::count_if(
            Result().ValidationMessages, [](const auto& message) { return !message->Solvers().empty(); }));
        if (options_.Todas && !options_.Estrutura && offered != 0)
            context_.Streams.Err << fmt::format("  não feitas: {} {}.\n",
                                                Counted(offered, "correção", "correções"), kOfStructure);
        return Status();
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
                entry.update(MessageJson(message, i + 1, true));
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
        const bool many = options_.Arquivos.size() > 1;
        if (context_.Json())
            reports_.push_back(many ? TJson({{"arquivo", file_}, {"mensagens", std::move(list)}})
                                    : std::move(list));
        else
            out << (many ? Visible(file_) + '\n' : "")
                << (text.empty() ? "Nenhuma mensagem oferece correção.\n" : text);
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
        const std::size_t correction =
            options_.Correcao == 0 ? 1 : static_cast<std::size_t>(options_.Correcao);
        if (correction > message.Solvers().size())
            throw EUsage(fmt::format("a correção {} não existe; a mensagem {} oferece {}", options_.Correcao,
                                     number, Counted(message.Solvers().size(), "correção", "correções")));
        const auto& solver = message.Solvers()[correction - 1];
        if (const std::string refusal = MisreadRefusal(*solver, messages); !refusal.empty())
            context_.Warning(fmt::format("{}: {} (--codificacao).", file_, refusal));
        TCorrectionResult result{text, {}, {}};
        const TXmlEncoding encoding = controller_->Encoding();
        ExecuteSolver(*controller_, messages, message.Id(), enabled,
                      {ChoiceOf(options_), [&](const TCorrectionRecord& record, const auto& xml) {
                           result.Xml = xml;
                           if (*xml != *text || controller_->Encoding().Name != encoding.Name ||
                               encoding.Fault != nullptr)
                               result.Applied.push_back(record);
                       }});
        return result;
    }

    std::string Difference(const std::string& before, const std::string& after) const {
        return UnifiedDiff(before, after, Visible(file_), Visible(file_) + " (corrigido)");
    }
    /// The difference of the texts, the corrected one as it will be read.
    std::string TextDifference(const TTissFile& before, const TTissFile& after) const {
        return Difference(*before.Text(), *TTissFile(after.Bytes(), TXmlUndecodable::Guessed).Text());
    }
    /// The same for a terminal, which the text must not steer.
    std::string VisibleDifference(const TTissFile& before, const TTissFile& after) const {
        std::istringstream lines(TextDifference(before, after));
        std::string visible;
        for (std::string line; std::getline(lines, line);)
            visible += Visible(line) + '\n';
        return visible;
    }

    void Write(const TTissFile& before, const TTissFile& after) const {
        if (options_.Simular) {
            // For a terminal as text, else in the bytes of the files, so that the difference can be applied.
            if (!context_.Json())
                context_.Streams.Out << (context_.Streams.OutIsTerminal
                                             ? VisibleDifference(before, after)
                                             : Difference(before.Bytes(), after.Bytes()));
        } else if (!options_.Saida.empty()) {
            Replace(after, PathFromText(options_.Saida));
        } else if (!options_.NoLugar) {
            if (!context_.Json())
                context_.Streams.Out << after.Bytes();
        } else if (after.Bytes() != before.Bytes()) {
            const std::filesystem::path file = PathFromText(file_);
            try {
                Replace(after, file);
            } catch (const EFileChanged& error) {
                throw EFileNotWritten(file, error.Reason() + Rescue(after, file));
            }
        }
    }

    /// Keeps what could not be written, and answers where, as the end of a sentence.
    static std::string Rescue(const TTissFile& after, const std::filesystem::path& file) {
        try {
            return fmt::format(". O conteúdo corrigido ficou em \"{}\"", PathText(after.WriteBeside(file)));
        } catch (const EFile& error) {
            return fmt::format(". O conteúdo corrigido também não pôde ser guardado: {}", error.what());
        }
    }

    void Replace(const TTissFile& after, const std::filesystem::path& file) const {
        after.Write(file, options_.Copia ? FreeName(file, ".bak") : std::filesystem::path());
    }

    /// The name that the corrected file would have, where its name carries its hash; empty for none.
    std::filesystem::path NewName() const {
        const auto& file = Result().ArquivoTiss;
        return file == nullptr ? std::filesystem::path()
                               : NameWithHash(PathFromText(file_).filename(), std::string(file->Hash()));
    }

    /// Before anything is written: the name that the file is to get must be free.
    void RequireFreeName() const {
        const std::filesystem::path name = NewName();
        const std::filesystem::path target = PathFromText(file_).parent_path() / name;
        std::error_code failure;
        if (options_.Renomear && !name.empty() &&
            std::filesystem::exists(std::filesystem::symlink_status(target, failure)))
            throw EFileNotWritten(target, "já existe um arquivo com esse nome");
    }

    /// The name that a file with lot number and hash in its name gets by a correction, which is told, or
    /// given to it on request; empty for none.
    std::string Rename(const TTissFile& after) const {
        const std::filesystem::path name = NewName();
        if (name.empty())
            return {};
        const std::filesystem::path file = PathFromText(file_);
        const std::filesystem::path target = file.parent_path() / name;
        if (!options_.Renomear || after.Bytes() != ReadWholeFile(file)) {
            context_.Warning(
                fmt::format("{}: o nome do arquivo leva o hash; com o hash corrigido, o nome é {}", file_,
                            PathText(name)));
            return PathText(name);
        }
        std::error_code failure;
        std::filesystem::rename(file, target, failure);
        if (failure)
            throw EFileNotWritten(target, ReasonText(failure));
        context_.Streams.Err << fmt::format("{}: o arquivo agora se chama {}\n", file_, PathText(name));
        return PathText(name);
    }

    TJson Report(const TTissFile& before, const TTissFile& after, const TCorrectionResult& result,
                 const std::string& renamed) const {
        TJson report = CorrectionReportJson(file_, result, Result());
        if (!renamed.empty())
            report["nome"] = renamed;
        if (!options_.Codificacao.empty())
            report["codificacao"] = options_.Codificacao;
        if (options_.Simular)
            report["diferenca"] = TextDifference(before, after);
        return report;
    }

    /// Errors of the schema for which there is no correction, so that nobody waits for it.
    void TellWithoutCorrection() const {
        const auto& messages = Result().ValidationMessages;
        const auto count = static_cast<std::size_t>(
            std::ranges::count_if(messages, [](const std::shared_ptr<const TXmlMessage>& message) {
                return message->IsFailure() && RuleName(*message).ends_with(".schema") &&
                       message->Solvers().empty();
            }));
        if (count != 0)
            context_.Streams.Err << fmt::format("  sem correção: {}, em que falta um dado, há mais de uma "
                                                "leitura possível ou um valor de uma "
                                                "só palavra é longo demais.\n",
                                                Counted(count, "erro do schema", "erros do schema"));
    }

    void Summarize(const TCorrectionResult& result) const {
        ListCorrections(context_.Streams.Err, result, options_.Detalhar);
        if (options_.Estrutura)
            TellWithoutCorrection();
        const std::size_t corrections = result.Applied.size();
        const std::size_t failures = Result().Counts.Failures();
        if (!options_.Codificacao.empty())
            context_.Streams.Err << fmt::format("  codificação: {}\n", options_.Codificacao);
        context_.Streams.Err << fmt::format(
            "{}: {}; {}.\n", Visible(file_),
            corrections == 0
                ? (options_.Codificacao.empty() ? "nada foi corrigido" : "nada mais foi corrigido")
                : Counted(corrections, "correção aplicada", "correções aplicadas"),
            !Result().Verified ? "o arquivo não foi verificado"
            : failures == 0    ? "o arquivo está válido"
                               : Counted(failures, "erro permanece", "erros permanecem"));
        if (controller_->Encoding().Fault != nullptr && corrections != 0)
            context_.Warning(
                fmt::format("{}: o texto corrigido fica na codificação que o arquivo declara.", file_));
        const auto& file = Result().ArquivoTiss;
        if (corrections != 0 && file != nullptr && IsSigned(*file->Xml()))
            context_.Warning(fmt::format("{}: {}", file_, kSignatureNote));
    }

    const TCliContext& context_;
    const TCorrigirOptions& options_;
    std::string file_;
    TJson& reports_;
    std::unique_ptr<TValidadorController> controller_;
};

} // namespace

int RunCorrigir(const TCliContext& context, const TCorrigirOptions& options) {
    CheckOptions(context, options);
    TJson reports = TJson::array();
    int status = kExitValid;
    for (const std::string& file : options.Arquivos)
        status = std::max(status, RunOnListedFile(
                                      context, file, options.Arquivos.size() > 1, reports,
                                      [&](const TTissFile& read) {
                                          return TCorrection(context, options, file, reports).Run(read);
                                      },
                                      TXmlUndecodable::Guessed));
    if (context.Json() && options.Arquivos.size() > 1)
        context.Streams.Out << JsonText(reports) << '\n';
    else if (context.Json() && !reports.empty())
        context.Streams.Out << JsonText(reports.front()) << '\n';
    return status;
}

} // namespace conferix
