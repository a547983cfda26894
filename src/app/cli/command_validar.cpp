#include "app/cli/commands.h"
#include "app/cli/progress.h"
#include "app/file_validation.h"
#include "app/input_files.h"
#include "app/repeated_guides.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/report_writer.h"
#include "xml/cut_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <optional>
#include <ostream>
#include <system_error>
#include <thread>
#include <utility>

namespace conferix {

namespace {

std::vector<std::string> EnabledRules(const TCliContext& context, const std::vector<std::string>& disabled) {
    TConfig config = context.LoadConfig();
    return disabled.empty() ? config.EnabledValidations() : SwitchRules(config, disabled, false);
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
    std::filesystem::path MissingSchema; ///< the user is told how to install it
    std::vector<TBilledGuide> Guides;    ///< kept where several files are validated
};

/// Tells what came of the files: as they end, or in their order.
class TReportOutput {
  public:
    TReportOutput(const TCliContext& context, IReportWriter& writer, const std::vector<TInput>& inputs)
        : context_(context), writer_(writer), inputs_(inputs),
          progress_(context.Streams.Err, context.Streams.ErrIsTerminal, inputs.size()),
          waiting_(inputs.size()) {
        writer_.Begin(context.Streams.Out);
    }

    TProgressBar& Progress() { return progress_; }

    /// Any thread may add what came of the file of that index.
    void Add(std::size_t index, const TFileResult& file) {
        TFileReport report{TFileSummary(file), writer_.FileText(file), file.Validation.MissingSchema,
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

    /// Ends the report and answers the exit status.
    int Finish() {
        progress_.Clear();
        writer_.End(context_.Streams.Out, totals_);
        TellRepeated();
        if (totals_.Of(TVerdict::NotVerified) != 0)
            return kExitUnreadable;
        return totals_.Of(TVerdict::Invalid) != 0 ? kExitInvalid : kExitValid;
    }

  private:
    /// Guides of one provider that are in two files; a second bill is refused.
    void TellRepeated() const {
        constexpr std::size_t kTold = 50;
        std::vector<TRepeatedGuide> repeated = repeated_.Found();
        std::erase_if(repeated, [&](const TRepeatedGuide& guide) { // one file under two names
            std::error_code failure;
            return std::filesystem::equivalent(PathFromText(inputs_[guide.First.File].Name),
                                               PathFromText(inputs_[guide.Again.File].Name), failure);
        });
        for (std::size_t i = 0; i < std::min(repeated.size(), kTold); ++i) {
            const TRepeatedGuide& guide = repeated[i];
            context_.Warning(fmt::format("{}: Guia {} está também em {}, linha {}",
                                         inputs_[guide.First.File].Name, CutText(guide.Number),
                                         inputs_[guide.Again.File].Name, guide.Again.Line));
        }
        if (repeated.size() > kTold)
            context_.Warning(
                fmt::format("e mais {} em dois arquivos", Counted(repeated.size() - kTold, "guia", "guias")));
    }

    void Print(TFileReport report) {
        progress_.Clear();
        totals_.Add(report.Summary);
        writer_.AddFile(context_.Streams.Out, report.Summary, std::move(report.Text));
        if (!report.Summary.Failure.empty())
            context_.Error(fmt::format("{}: {}", report.Summary.Arquivo, report.Summary.Failure));
        if (!report.MissingSchema.empty() && !advised_) {
            advised_ = true;
            context_.Warning(fmt::format(
                "o schema \"{}\" foi procurado na pasta \"{}\". Para instalar os schemas publicados "
                "pela ANS: conferix esquemas importar PASTA",
                PathText(report.MissingSchema.filename()), PathText(report.MissingSchema.parent_path())));
        }
    }

    const TCliContext& context_;
    IReportWriter& writer_;
    const std::vector<TInput>& inputs_;
    std::mutex mutex_;
    TProgressBar progress_;
    std::vector<std::optional<TFileReport>> waiting_;
    std::size_t next_ = 0;
    TReportTotals totals_;
    bool advised_ = false;
    TRepeatedGuides repeated_;
};

} // namespace

int RunValidar(const TCliContext& context, const TValidarOptions& options) {
    std::vector<TInput> inputs = ExpandFolders(options.Arquivos, !options.SemSubpastas);
    std::vector<std::string> enabled;
    try {
        enabled = EnabledRules(context, options.Desativar);
    } catch (const EInvalidConfig& error) { // told once; no file can be judged
        context.Error(error.what());
        for (TInput& input : inputs)
            input.Failure = "as regras ativas não puderam ser lidas";
    }
    const TReportOptions shown{
        .Todas = options.Todas, .Detalhar = options.Detalhar, .Colours = context.Streams.OutIsTerminal};
    const std::unique_ptr<IReportWriter> writer = NewReportWriter(context.Formato, shown);
    TReportOutput output(context, *writer, inputs);
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
    return output.Finish();
}

} // namespace conferix
