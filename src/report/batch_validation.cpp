#include "report/batch_validation.h"

#include "app/config.h"
#include "app/installation.h"
#include "model/tiss_kinds.h"
#include "platform/platform.h"
#include "platform/spool_file.h"

#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <sstream>

namespace conferix {

namespace {

constexpr std::array<std::string_view, 2> kFormats = {"json", "csv"};

std::string KindOf(const TValidateArgs& validation) {
    if (validation.ArquivoTiss == nullptr)
        return {};
    const std::string transacao(validation.ArquivoTiss->TextoTipoTransacao());
    const std::string_view title = KindOf(validation.ArquivoTiss->TipoArquivo()).Title;
    return transacao.empty() ? std::string(title) : fmt::format("{}, {}", title, transacao);
}

} // namespace

/// The texts of one format, in a file that is gone with the program.
class TBatchValidation::TSpool {
  public:
    explicit TSpool(std::string_view formato)
        : Formato(formato), writer_(NewReportWriter(formato, {})), file_(OpenSpoolFile()) {
        if (file_ == nullptr)
            Fail();
    }
    TSpool(const TSpool&) = delete;
    TSpool& operator=(const TSpool&) = delete;
    ~TSpool() { std::fclose(file_); }

    void Add(const TFileResult& result) {
        const std::string text = writer_->FileText(result);
        std::fseek(file_, 0, SEEK_END);
        if (std::fwrite(text.data(), 1, text.size(), file_) != text.size())
            Fail();
        sizes_.push_back(text.size());
    }

    std::string Report(const std::vector<TFileSummary>& files, const TReportTotals& totals) const {
        std::ostringstream out;
        const std::unique_ptr<IReportWriter> writer = NewReportWriter(Formato, {});
        writer->Begin(out);
        std::rewind(file_);
        for (std::size_t i = 0; i < files.size(); ++i) {
            std::string text(sizes_[i], '\0');
            if (std::fread(text.data(), 1, text.size(), file_) != text.size())
                Fail();
            writer->AddFile(out, files[i], std::move(text));
        }
        writer->End(out, totals);
        return out.str();
    }

    const std::string Formato;

  private:
    [[noreturn]] static void Fail() {
        throw EFileNotWritten(std::filesystem::temp_directory_path(),
                              "o relatório não cabe na pasta de arquivos temporários");
    }

    std::unique_ptr<IReportWriter> writer_;
    std::FILE* file_;
    std::vector<std::size_t> sizes_;
};

std::string_view TBatchRow::VerdictText() const {
    if (!Verdict)
        return "Na fila";
    switch (*Verdict) {
    case TVerdict::Valid:
        return "Válido";
    case TVerdict::Invalid:
        return "Inválido";
    case TVerdict::NotVerified:
        return "Não verificado";
    }
    return "";
}

TValidationRecord TBatchRow::Record() const {
    TValidationRecord record{File,
                             {},
                             Versao,
                             std::nullopt,
                             static_cast<std::int64_t>(Errors),
                             static_cast<std::int64_t>(Warnings)};
    if (Verdict && *Verdict != TVerdict::NotVerified)
        record.Valid = *Verdict == TVerdict::Valid;
    return record;
}

std::unique_ptr<TBatchValidation> TBatchValidation::OfInstalled(const std::vector<std::string>& names) {
    return std::make_unique<TBatchValidation>(
        TFileValidator(InstalledSchemas(), InstalledTerminology(),
                       TConfig::GetEnabledValidations(TConfig::DefaultFile())),
        ExpandFolders(names, true));
}

TBatchValidation::TBatchValidation(TFileValidator validator, std::vector<TInput> inputs)
    : validator_(std::move(validator)), inputs_(std::move(inputs)), rows_(inputs_.size()) {
    for (std::size_t i = 0; i < inputs_.size(); ++i)
        rows_[i].File = inputs_[i].Name;
    for (const std::string_view formato : kFormats)
        if (NewReportWriter(formato, {}) != nullptr)
            spools_.push_back(std::make_unique<TSpool>(formato));
}

TBatchValidation::~TBatchValidation() = default;

void TBatchValidation::ValidateNext() {
    const std::size_t index = done_++;
    const TInput& input = inputs_[index];
    const TFileResult result = input.Failure.empty() ? validator_.ValidateFile(input.Name)
                                                     : UnreadableFile(input.Name, input.Failure);
    const TValidateArgs& validation = result.Validation;
    TBatchRow& row = rows_[index];
    row.Verdict = result.Verdict();
    row.Tipo = KindOf(validation);
    row.Versao = result.Versao;
    row.Errors = validation.Counts.Failures();
    row.Warnings = validation.Counts.Warnings();
    row.Note = result.Failure;
    if (row.Note.empty() && *row.Verdict == TVerdict::NotVerified && !validation.ValidationMessages.empty())
        row.Note = validation.ValidationMessages.front()->Reason();
    totals_.Add(TFileSummary(result));
    summaries_.emplace_back(result);
    for (const auto& spool : spools_)
        spool->Add(result);
    NoteRepeated(index, validation);
}

void TBatchValidation::NoteRepeated(std::size_t row, const TValidateArgs& validation) {
    const std::vector<TBilledGuide> guides = BilledGuides(validation);
    if (guides.empty())
        return;
    repeated_.Add(row, guides);
    std::size_t count = 0;
    std::string first;
    for (const TRepeatedGuide& guide : repeated_.Found()) {
        if (guide.Again.File != row || ++count > 1)
            continue;
        const std::filesystem::path other = PathFromText(rows_[guide.First.File].File).filename();
        first = fmt::format("Guia {} está também em {}, linha {}", guide.Number, PathText(other),
                            guide.First.Line);
    }
    if (count == 0)
        return;
    std::string& note = rows_[row].Note;
    note += (note.empty() ? "" : "; ") + first;
    if (count > 1)
        note += fmt::format(", e mais {}", count - 1);
}

std::string TBatchValidation::Report(std::string_view formato) const {
    std::vector<std::string> names;
    for (const TBatchRow& row : rows_)
        names.push_back(row.File);
    TReportTotals totals = totals_;
    totals.SetRepeated(WithFileNames(repeated_.Found(), names));
    for (const auto& spool : spools_)
        if (spool->Formato == formato)
            return spool->Report(summaries_, totals);
    return {};
}

void TBatchValidation::SaveReport(const std::filesystem::path& file) const {
    WriteFileAtomically(file, Report(file.extension() == ".csv" ? "csv" : "json"));
}

} // namespace conferix
