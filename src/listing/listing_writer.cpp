#include "listing/listing_writer.h"

#include "platform/format_settings.h"
#include "platform/iso_date.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace conferix {

namespace {

constexpr int kMaxDecimals = 4; ///< of amounts and quantities

/// The number with as many decimals as it has, at least `least`.
std::string DecimalText(double value, int least) {
    static const TFormatSettings brazil = TFormatSettings::OfLocale({});
    int decimals = kMaxDecimals;
    const auto scaled = static_cast<long double>(value) * 10'000;
    for (long double unit = 10; decimals > least && std::fmod(std::round(scaled), unit) == 0; unit *= 10)
        --decimals;
    return brazil.Decimal(value, decimals);
}

} // namespace

std::vector<std::string> ListingFormats() {
    return {"texto", "csv", "json", "html", "pdf"};
}

std::string CellText(const TListingCell& cell, TCellKind kind) {
    if (IsNumeric(kind))
        return cell.Number ? DecimalText(*cell.Number, kind == TCellKind::Money ? 2 : 0) : std::string();
    if (kind == TCellKind::Date)
        if (const std::optional<TDate> date = ParseIsoDate(cell.Text))
            return fmt::format("{:02}/{:02}/{:04}", static_cast<unsigned>(date->day()),
                               static_cast<unsigned>(date->month()), static_cast<int>(date->year()));
    return cell.Text;
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
