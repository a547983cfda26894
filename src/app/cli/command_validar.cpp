#include "app/cli/commands.h"
#include "app/cli/progress.h"
#include "app/file_validation.h"
#include "app/input_files.h"
#include "app/notices.h"
#include "app/repeated_guides.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/report_writer.h"
#include "xml/xml_node.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <new>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <system_error>
#include <thread>
#include <utility>

namespace conferix {

namespace {

std::vector<std::string> EnabledRules(const TCliContext& context, const std::vector<std::string>& disabled) {
    TConfig config = context.LoadConfig();
    std::vector<std::string> names;
    names.reserve(disabled.size());
    for (const std::string& name : disabled)
        names.emplace_back(TrimXmlSpace(name));
    return names.empty() ? config.EnabledValidations() : SwitchRules(config, names, false);
}

/// Refuses options that say nothing beside others.
void CheckOptions(const TCliContext& context, const TValidarOptions& options) {
    const bool text = context.Formato == "texto";
    const bool json = context.Json() || context.Formato == "ndjson";
    const bool counts = text || json;
    const bool hidden = options.Silencioso && options.Saida.empty();
    const std::pair<bool, const char*> refusals[] = {
        {options.Arquivos.empty() && options.Lista.empty(),
         "falta o que validar: nomes de arquivos ou pastas, ou --lista ARQUIVO"},
        {options.Lista == "-" && std::ranges::count(options.Arquivos, "-") != 0,
         "a entrada padrão não pode ser ao mesmo tempo a lista e um dos arquivos"},
        {std::ranges::count(options.Arquivos, "-") > 1, "a entrada padrão só pode ser lida uma vez"},
        {hidden && !text, "--silencioso não mostra nada; com --formato, use --saida ARQUIVO"},
        {hidden && (options.Resumo || options.Estatisticas || options.Todas || options.Detalhar ||
                    !options.Agrupar.empty()),
         "--silencioso não mostra nada; não combina com --resumo, --estatisticas, --todas, --detalhar nem "
         "--agrupar"},
        {options.Resumo && !counts, "--resumo só existe em texto, json e ndjson"},
        {options.Resumo && (options.Todas || options.Detalhar || !options.Agrupar.empty()),
         "--resumo não mostra mensagens; não combina com --todas, --detalhar nem --agrupar"},
        {options.Estatisticas && !counts, "--estatisticas só existe em texto, json e ndjson"},
        {options.Totais && !json, "--totais só existe em json e ndjson"},
        {!options.Agrupar.empty() && !text, "--agrupar só existe em texto"},
        {options.Todas && !options.Nivel.empty(),
         "--todas mostra todas as mensagens e --nivel só algumas; use uma das duas"},
    };
    for (const auto& [refused, reason] : refusals)
        if (refused)
            throw EUsage(reason);
}

TReportOptions ReportOptions(const TCliContext& context, const TValidarOptions& options) {
    return {.Todas = options.Todas,
            .Nivel = ReportLevelOf(options.Nivel),
            .Detalhar = options.Detalhar,
            .AgruparPorRegra = options.Agrupar == "regra",
            .Resumo = options.Resumo,
            .Estatisticas = options.Estatisticas,
            .Totais = options.Totais,
            .Colours = context.Streams.OutIsTerminal && options.Saida.empty()};
}

std::vector<TInput> Inputs(const TCliContext& context, const TValidarOptions& options) {
    std::vector<std::string> names = options.Arquivos;
    if (!options.Lista.empty()) {
        const std::vector<std::string> listed =
            NamesInList(options.Lista == "-" ? ReadWholeStream(context.Streams.In, options.Lista)
                                             : ReadWholeFile(PathFromText(options.Lista)));
        names.insert(names.end(), listed.begin(), listed.end());
    }
    std::vector<TInput> inputs = ExpandFolders(names, !options.SemSubpastas);
    if (inputs.empty())
        inputs.push_back({options.Lista, "a lista não contém nomes de arquivos"});
    return inputs;
}

TFileResult Validate(const TCliContext& context, const TFileValidator& validator, const TInput& input) {
    if (!input.Failure.empty())
        return UnreadableFile(input.Name, input.Failure);
    if (input.Name == "-")
        return validator.ValidateBytes(input.Name,
                                       [&] { return ReadWholeStream(context.Streams.In, input.Name); });
    return validator.ValidateFile(input.Name);
}

/// What is told of a file once its result is gone.
struct TFileReport {
    TFileSummary Summary;
    std::string Text;
    std::vector<TBilledGuide> Guides; ///< kept where several files are validated
};

/// Tells what came of the files: as they end, or in their order.
class TReportOutput {
  public:
    TReportOutput(const TCliContext& context, std::ostream& out, IReportWriter& writer,
                  const std::vector<TInput>& inputs, const TValidarOptions& options)
        : context_(context), out_(out), writer_(writer), inputs_(inputs), options_(options),
          progress_(context.Streams.Err, context.Streams.ErrIsTerminal && !options.Silencioso, inputs.size()),
          waiting_(inputs.size()), totals_(options.Estatisticas) {
        writer_.Begin(out_);
    }

    const TReportTotals& Totals() const { return totals_; }
    TProgressBar& Progress() { return progress_; }

    /// Any thread may add what came of the file of that index.
    void Add(std::size_t index, const TFileResult& file) {
        TFileReport report{TFileSummary(file), writer_.FileText(file),
                           inputs_.size() > 1 ? BilledGuides(file.Validation) : std::vector<TBilledGuide>()};
        const std::lock_guard lock(mutex_);
        progress_.End();
        repeated_.Add(index, report.Guides);
        if (!writer_.KeepsOrder()) {
            Print(std::move(report));
            return;
        }
        waiting_[index] = std::move(report);
        for (; next_ < waiting_.size() && waiting_[next_].has_value(); ++next_) {
            Print(std::move(*waiting_[next_]));
            waiting_[next_].reset();
        }
    }

    /// Ends the report.
    void Finish() {
        progress_.Clear();
        totals_.SetRepeated(RepeatedGuides());
        writer_.End(out_, totals_);
        if (!options_.Silencioso)
            WarnOfRepeated();
    }

    int Status(TReportLevel failing) const {
        if (totals_.Of(TVerdict::NotVerified) != 0)
            return kExitUnreadable;
        bool failed = totals_.Of(TVerdict::Invalid) != 0;
        for (const TMessageType type : {TMessageType::mtWarning, TMessageType::mtInformation})
            failed = failed || (Reaches(type, failing) && totals_.Counts().Of(type) != 0);
        return failed ? kExitInvalid : kExitValid;
    }

  private:
    /// Tells of the guides in two files who does not see it in the report.
    void WarnOfRepeated() const {
        const bool text = context_.Formato == "texto";
        const bool told = text || options_.Totais || !(context_.Json() || context_.Formato == "ndjson");
        if (totals_.Repeated().empty() || (text && options_.Saida.empty()))
            return;
        if (!told) {
            for (const std::string& sentence : RepeatedGuideTexts(totals_.Repeated()))
                context_.Warning(sentence);
            return;
        }
        std::set<std::pair<std::string, std::int32_t>> guides;
        for (const TGuideInTwoFiles& guide : totals_.Repeated())
            guides.emplace(guide.File, guide.Line);
        context_.Warning(fmt::format("{} em mais de um arquivo; o relatório diz onde",
                                     Counted(guides.size(), "guia está", "guias estão")));
    }

    /// Guides of one provider that are in two files; a second bill is refused.
    std::vector<TGuideInTwoFiles> RepeatedGuides() const {
        std::vector<TRepeatedGuide> repeated = repeated_.Found();
        std::erase_if(repeated, [&](const TRepeatedGuide& guide) { // one file under two names
            std::error_code failure;
            return std::filesystem::equivalent(PathFromText(inputs_[guide.First.File].Name),
                                               PathFromText(inputs_[guide.Again.File].Name), failure);
        });
        std::vector<std::string> names;
        for (const TInput& input : inputs_)
            names.push_back(input.Name);
        return WithFileNames(repeated, names);
    }

    void Print(TFileReport report) {
        progress_.Clear();
        totals_.Add(report.Summary);
        writer_.AddFile(out_, report.Summary, std::move(report.Text));
        if (!report.Summary.Failure.empty())
            context_.Error(fmt::format("{}: {}", report.Summary.Arquivo, report.Summary.Failure));
        else if (!report.Summary.Obstacle.empty() && obstacles_.insert(report.Summary.Obstacle).second)
            context_.Error(report.Summary.Advice.empty() ? OneLine(report.Summary.Obstacle)
                                                         : report.Summary.Advice);
    }

    const TCliContext& context_;
    std::ostream& out_;
    IReportWriter& writer_;
    const std::vector<TInput>& inputs_;
    const TValidarOptions& options_;
    std::mutex mutex_;
    TProgressBar progress_;
    std::vector<std::optional<TFileReport>> waiting_;
    std::size_t next_ = 0;
    TReportTotals totals_;
    std::set<std::string> obstacles_; ///< told
    TRepeatedGuides repeated_;
};

/// Who waits so long for a batch does something else meanwhile.
constexpr std::chrono::seconds kLongBatch(10);

TBatchOutcome OutcomeOf(const TReportTotals& totals, const TValidarOptions& options) {
    const std::filesystem::path only =
        options.Arquivos.size() == 1 ? PathFromText(options.Arquivos.front()) : std::filesystem::path();
    return {PathText(only.has_filename() ? only.filename() : only.parent_path().filename()),
            totals.Of(TVerdict::Valid), totals.Of(TVerdict::Invalid), totals.Of(TVerdict::NotVerified)};
}

} // namespace

int RunValidar(const TCliContext& context, const TValidarOptions& options) {
    const auto start = std::chrono::steady_clock::now();
    CheckOptions(context, options);
    const TReportOptions shown = ReportOptions(context, options);
    std::vector<TInput> inputs = Inputs(context, options);
    if (!options.Saida.empty())
        CheckOutput(options.Saida, inputs);
    std::vector<std::string> enabled;
    try {
        enabled = EnabledRules(context, options.Desativar);
    } catch (const EInvalidConfig& error) { // told once; no file can be judged
        context.Error(error.what());
        for (TInput& input : inputs)
            input.Failure = "as regras ativas não puderam ser lidas";
    }
    std::ostringstream report;
    std::ostream nowhere(nullptr);
    std::ostream& out = !options.Saida.empty() ? report : options.Silencioso ? nowhere : context.Streams.Out;
    const std::unique_ptr<IReportWriter> writer = NewReportWriter(context.Formato, shown);
    TReportOutput output(context, out, *writer, inputs, options);
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        TFileValidator validator(context.Schemas(), context.KeptTerminology(), enabled);
        validator.SetKeepSuccesses(options.Todas);
        for (std::size_t index = next++; index < inputs.size(); index = next++) {
            output.Progress().Begin(inputs[index].Name);
            try {
                output.Add(index, Validate(context, validator, inputs[index]));
            } catch (const std::bad_alloc&) { // with what is kept of the other files
                output.Add(index, UnreadableFile(inputs[index].Name, kOutOfMemory));
            } catch (const std::exception& error) {
                output.Add(index, UnreadableFile(inputs[index].Name, error.what()));
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
    output.Finish();
    if (!options.Saida.empty())
        WriteFileAtomically(PathFromText(options.Saida), report.view());
    context.Told->Answered = true;
    if (inputs.size() > 1 && std::chrono::steady_clock::now() - start > kLongBatch)
        Notify([&](TNoticeBox& box) { NoteBatch(box, OutcomeOf(output.Totals(), options)); });
    return output.Status(shown.FailingLevel());
}

} // namespace conferix
