#include "data/import/publication_reader.h"

#include "data/import/cell_text.h"
#include "data/import/import_errors.h"
#include "data/import/row_reader.h"
#include "data/import/zip_archive.h"
#include "data/plain_text.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr int kMaxDepth = 3; // packages in packages
constexpr std::size_t kHeadBytes = 64;
constexpr std::uint64_t kRowsBeforeHeader = 200; // covers have some dozens

std::string Ending(const fs::path& file) {
    return PlainText(PathText(file.extension()));
}

EInvalidPublication DamagedArchive(const fs::path& file, std::string_view ending) {
    return {file, ending == "xlsx"
                      ? "não é uma planilha XLSX válida; ela pode ter chegado incompleta, baixe-a de novo"
                      : "não é um arquivo ZIP válido; ele pode ter chegado incompleto, baixe-o de novo"};
}

/// Removes an unpacked file.
class TUnpacked {
  public:
    explicit TUnpacked(fs::path file) : file_(std::move(file)) {}
    TUnpacked(const TUnpacked&) = delete;
    TUnpacked& operator=(const TUnpacked&) = delete;
    ~TUnpacked() {
        std::error_code ignored;
        fs::remove(file_, ignored);
    }
    const fs::path& File() const { return file_; }

  private:
    fs::path file_;
};

/// Counts what is read, and tells.
class TCountedSource : public IByteSource {
  public:
    TCountedSource(IByteSource& source, std::function<void(std::uint64_t)> onBytes)
        : source_(source), onBytes_(std::move(onBytes)) {}
    std::size_t Read(char* to, std::size_t count) override {
        const std::size_t got = source_.Read(to, count);
        total_ += got;
        onBytes_(total_);
        return got;
    }

  private:
    IByteSource& source_;
    std::function<void(std::uint64_t)> onBytes_;
    std::uint64_t total_ = 0;
};

double Share(std::uint64_t done, std::uint64_t total) {
    return total == 0 ? 1 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
}

} // namespace

bool MayHoldTerminology(const fs::path& file) {
    constexpr std::array<std::string_view, 5> kEndings = {"zip", "xlsx", "csv", "txt", "json"};
    const std::string name = PathText(file.filename());
    return !name.starts_with("~$") && !name.starts_with(".") &&
           std::find(kEndings.begin(), kEndings.end(), Ending(file)) != kEndings.end();
}

void TPublicationReader::Read(const fs::path& file) {
    ReadFile(file, {file, TableInTitle(PathText(file.filename())), 0, 1, 0});
}

void TPublicationReader::ReadFile(const fs::path& file, const TPart& part) {
    TFileSource source(file);
    TPeekSource head(source, 4);
    const std::string ending = Ending(part.ShownAs);
    if (head.Head() == "PK\x03\x04" || head.Head() == "PK\x05\x06") {
        ReadZip(file, part);
    } else if (ending == "xlsx" || ending == "zip") {
        throw DamagedArchive(part.ShownAs, ending);
    } else {
        std::error_code error;
        const std::uintmax_t bytes = fs::file_size(file, error);
        ReadStream(head, error ? 0 : bytes, part);
    }
}

void TPublicationReader::ReadZip(const fs::path& file, const TPart& part) {
    if (part.Depth > kMaxDepth) {
        throw EInvalidPublication(part.ShownAs, "há pacotes demais um dentro do outro");
    }
    TZipArchive archive(file, part.ShownAs);
    if (TWorkbook::IsWorkbook(archive)) {
        ReadWorkbook(archive, part);
    } else if (Ending(part.ShownAs) == "xlsx") {
        throw DamagedArchive(part.ShownAs, "xlsx");
    } else {
        ReadPackage(archive, part);
    }
}

void TPublicationReader::ReadPackage(TZipArchive& archive, const TPart& part) {
    std::vector<TZipEntry> entries;
    std::uint64_t total = 0;
    for (const TZipEntry& entry : archive.Entries()) {
        if (MayHoldTerminology(PathFromText(entry.Name))) {
            entries.push_back(entry);
            total += entry.Packed;
        }
    }
    std::uint64_t done = 0;
    for (const TZipEntry& entry : entries) {
        const fs::path name = PathFromText(entry.Name);
        const std::string table = TableInTitle(PathText(name.filename()));
        const double size = part.To - part.From;
        const TPart inner{part.ShownAs / name, table.empty() ? part.Table : table,
                          part.From + size * Share(done, total),
                          part.From + size * Share(done + entry.Packed, total), part.Depth + 1};
        const std::string ending = Ending(name);
        sink_.OnProgress(PathText(name.filename()), inner.From);
        if (ending == "zip" || ending == "xlsx") {
            const TUnpacked unpacked(workFolder_ / ("pacote-" + std::to_string(inner.Depth)));
            archive.Extract(entry, unpacked.File());
            ReadFile(unpacked.File(), inner);
        } else {
            const auto source = archive.Open(entry);
            ReadStream(*source, entry.Bytes, inner);
        }
        done += entry.Packed;
    }
}

TRowHandler TPublicationReader::Handler(TRecognizer& recognizer, std::string where, bool isJson) {
    return [this, &recognizer, isJson, where = std::move(where), row = TPublishedRow(),
            reason = std::string(), rows = std::uint64_t(0)](const TRow& cells) mutable {
        switch (recognizer.Take(cells, row, reason)) {
        case TRecognizer::TKind::Understood:
            sink_.OnRow(row, recognizer.IsHistory());
            break;
        case TRecognizer::TKind::NotUnderstood:
            sink_.OnRejected({where, cells.Number, reason, isJson});
            break;
        case TRecognizer::TKind::Skipped:
            break;
        }
        return recognizer.HeaderFound() || ++rows < kRowsBeforeHeader;
    };
}

void TPublicationReader::ReadWorkbook(TZipArchive& archive, const TPart& part) {
    const TWorkbook workbook(archive);
    std::uint64_t total = 0;
    for (const TSheet& sheet : workbook.Sheets()) {
        total += sheet.Bytes;
    }
    std::uint64_t done = 0;
    bool found = false;
    for (const TSheet& sheet : workbook.Sheets()) {
        const std::string where = PathText(part.ShownAs / PathFromText(sheet.Name));
        std::string table = TableInTitle(sheet.Name);
        if (table.empty()) {
            table = part.Table.empty() ? TableInSheetName(sheet.Name) : part.Table;
        }
        TRecognizer recognizer(std::move(table));
        workbook.ReadRows(sheet, Handler(recognizer, where, false), [&](std::uint64_t bytes) {
            sink_.OnProgress(PathText(part.ShownAs.filename()),
                             part.From + (part.To - part.From) * Share(done + bytes, total));
        });
        done += sheet.Bytes;
        if (recognizer.MissesDates()) {
            sink_.OnMissingDates(where);
        }
        found = found || recognizer.HeaderFound();
    }
    if (!found) {
        sink_.OnPassedOver(PathText(part.ShownAs));
    }
}

void TPublicationReader::ReadStream(IByteSource& source, std::uint64_t bytes, const TPart& part) {
    TCountedSource counted(source, [&](std::uint64_t done) {
        sink_.OnProgress(PathText(part.ShownAs.filename()),
                         part.From + (part.To - part.From) * Share(done, bytes));
    });
    TPeekSource head(counted, kHeadBytes);
    std::string_view start = head.Head();
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    start.remove_prefix(start.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0);
    start = TrimBlanks(start);
    TRecognizer recognizer(part.Table);
    const bool isJson = start.starts_with('[') || start.starts_with('{');
    const TRowHandler onRow = Handler(recognizer, PathText(part.ShownAs), isJson);
    if (isJson) {
        ReadJsonRows(head, part.ShownAs, onRow);
    } else {
        ReadTextRows(head, part.ShownAs, &TRecognizer::IsHeader, onRow);
    }
    if (recognizer.MissesDates()) {
        sink_.OnMissingDates(PathText(part.ShownAs));
    }
    if (!recognizer.HeaderFound()) {
        sink_.OnPassedOver(PathText(part.ShownAs));
    }
}

} // namespace conferix
