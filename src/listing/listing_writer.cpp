#include "listing/listing_writer.h"

#include "platform/format_settings.h"
#include "platform/iso_date.h"
#include "report/console.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace conferix {

namespace {

constexpr int kMaxDecimals = 4;        ///< of amounts and quantities
constexpr long double kUnits = 10'000; ///< of the last of them

/// Appends the number with as many decimals as it has, at least `least`.
void AppendDecimal(std::string& to, double value, int least) {
    constexpr int kBase = 10;
    constexpr int kGroup = 3;
    constexpr double kMost = 1e14; // of which the last decimals are not known
    if (std::fabs(value) >= kMost) {
        to += TFormatSettings::OfLocale({}).Decimal(value, least);
        return;
    }
    auto rest = static_cast<std::uint64_t>(std::llround(std::fabs(static_cast<long double>(value)) * kUnits));
    const bool negative = value < 0 && rest != 0;
    int decimals = kMaxDecimals;
    for (; decimals > least && rest % kBase == 0; --decimals)
        rest /= kBase;
    constexpr std::size_t kLongest = 32;
    std::array<char, kLongest> text; // filled from its end
    char* at = text.end();
    for (int digit = -decimals; digit <= 0 || rest != 0; ++digit) {
        if (digit == 0 && decimals > 0)
            *--at = ',';
        else if (digit > 0 && digit % kGroup == 0)
            *--at = '.';
        *--at = static_cast<char>('0' + rest % kBase);
        rest /= kBase;
    }
    if (negative)
        *--at = '-';
    to.append(at, text.end());
}

} // namespace

std::vector<std::string> ListingFormats() {
    return {"texto", "csv", "json", "html", "pdf"};
}

void AppendCellText(std::string& to, const TListingCell& cell, TCellKind kind) {
    const std::string_view text = cell.Text();
    if (IsNumeric(kind)) {
        if (cell.Number())
            AppendDecimal(to, *cell.Number(), kind == TCellKind::Money ? 2 : 0);
    } else if (kind == TCellKind::Date && ParseIsoDate(text)) {
        to.append(text.substr(8)).append(1, '/').append(text.substr(5, 2)).append(1, '/');
        to.append(text.substr(0, 4));
    } else {
        to += text;
    }
}

std::string CellText(const TListingCell& cell, TCellKind kind) {
    std::string text;
    AppendCellText(text, cell, kind);
    return text;
}

std::string NumberText(double number, TCellKind kind) {
    return CellText(TListingCell(number), kind);
}

std::string SumsTitle(const TListingSums& sums, bool only) {
    if (only)
        return "Total de " + Counted(sums.Files, "arquivo", "arquivos");
    return "Total de " + CountedFiles(sums);
}

std::string CountedFiles(const TListingSums& sums) {
    return sums.Tipo == TEnumTipoArquivoTiss::taMensagemTISS
               ? Counted(sums.Files, "lote de guias", "lotes de guias")
               : Counted(sums.Files, "arquivo de monitoramento", "arquivos de monitoramento");
}

std::vector<std::string> SumsNotes(const TListing& listing) {
    std::vector<std::string> notes;
    if (const std::size_t failures = listing.Failures(); failures != 0)
        notes.push_back(fmt::format("Fora dos totais: {}, por não {}.",
                                    Counted(failures, "arquivo", "arquivos"),
                                    failures == 1 ? "poder ser listado" : "poderem ser listados"));
    const auto noted = static_cast<std::size_t>(
        std::ranges::count_if(listing.Files, [](const TFileListing& file) { return !file.Notes.empty(); }));
    if (noted != 0)
        notes.push_back(fmt::format("{} observações.", Counted(noted, "arquivo tem", "arquivos têm")));
    return notes;
}

std::vector<std::size_t> ShownColumns(const TFileListing& file) {
    std::vector<std::size_t> shown;
    for (std::size_t column = 0; column < file.Columns.size(); ++column)
        for (const TListingGroup& group : file.Groups)
            if (std::ranges::any_of(
                    group.Rows, [column](const TListingRow& row) { return !row.Cells[column].IsEmpty(); })) {
                shown.push_back(column);
                break;
            }
    return shown;
}

void WriteListing(std::ostream& out, const TListing& listing, std::string_view format, bool colours) {
    if (format == "csv")
        WriteListingCsv(out, listing);
    else if (format == "json")
        WriteListingJson(out, listing);
    else if (format == "html")
        WriteListingHtml(out, listing);
    else if (format == "pdf")
        WriteListingPdf(out, listing);
    else
        WriteListingText(out, listing, colours);
}

} // namespace conferix
