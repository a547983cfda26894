#include "listing/listing_style.h"
#include "listing/listing_writer.h"
#include "report/console.h"
#include "report/html_style.h"
#include "report/html_text.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>
#include <ostream>

namespace conferix {

namespace {

constexpr std::size_t kWideTable = 8; ///< columns from which on the paper lies on its side

std::string_view ClassOf(TCellKind kind) {
    return IsNumeric(kind) ? " class=\"n\"" : kind == TCellKind::Date ? " class=\"data\"" : "";
}

void WriteRow(std::ostream& out, const TFileListing& file, const std::vector<std::size_t>& columns,
              const TListingRow& row) {
    std::string html = row.Differs ? "<tr class=\"difere\">" : "<tr>";
    for (const std::size_t column : columns) {
        const TCellKind kind = file.Columns[column].Kind;
        html.append("<td").append(ClassOf(kind)).append(1, '>');
        if (IsNumeric(kind))
            AppendCellText(html, row.Cells[column], kind);
        else
            html += HtmlText(CellText(row.Cells[column], kind));
        html += "</td>";
    }
    out << html << "</tr>\n";
}

void WriteGroup(std::ostream& out, const TFileListing& file, const std::vector<std::size_t>& columns,
                const TListingGroup& group) {
    if (group.Rows.empty())
        return;
    out << "<div class=\"rolagem\"><table class=\"listagem\">\n";
    if (!group.Title.empty())
        out << "<caption>" << HtmlText(group.Title) << "</caption>\n";
    out << "<thead><tr>";
    for (const std::size_t column : columns)
        out << "<th scope=\"col\"" << ClassOf(file.Columns[column].Kind) << '>'
            << HtmlText(file.Columns[column].Title) << "</th>";
    out << "</tr></thead>\n<tbody>\n";
    for (const TListingRow& row : group.Rows)
        WriteRow(out, file, columns, row);
    out << "</tbody>\n";
    if (group.Sum) {
        out << "<tfoot>\n";
        WriteRow(out, file, columns, *group.Sum);
        out << "</tfoot>\n";
    }
    out << "</table></div>\n";
}

void WriteTotals(std::ostream& out, const std::vector<TListingTotal>& totals) {
    out << "<dl class=\"totais\">\n";
    for (const TListingTotal& total : totals)
        if (total.Value)
            out << fmt::format("<div><dt>{}</dt><dd{}>{}</dd></div>\n", HtmlText(total.Label),
                               total.Differs ? " class=\"difere\"" : "",
                               HtmlText(NumberText(*total.Value, total.Kind)));
    out << "</dl>\n";
}

void WriteFile(std::ostream& out, const TFileListing& file) {
    out << "<article class=\"arquivo\">\n<h2>"
        << (file.Arquivo == "-" ? std::string("Entrada padrão") : HtmlText(file.Arquivo)) << "</h2>\n";
    if (!file.Failure.empty()) {
        out << "<p class=\"fora\">" << HtmlLines(file.Failure) << "</p>\n</article>\n";
        return;
    }
    out << "<dl>\n";
    for (const TListingLine& line : file.Head)
        if (line.IsShown())
            out << fmt::format("<div><dt>{}</dt><dd{}>{}</dd></div>\n", HtmlText(line.Label),
                               line.ByHand ? " class=\"branco\"" : "", HtmlText(line.Value));
    out << "</dl>\n";
    const std::vector<std::size_t> columns = ShownColumns(file);
    for (const TListingGroup& group : file.Groups)
        WriteGroup(out, file, columns, group);
    WriteTotals(out, file.Totals);
    if (file.HasDifferences())
        out << "<p>Assinalado: um total não é a soma dos itens.</p>\n";
    for (const std::string& note : file.Notes)
        out << "<p>" << HtmlText(note) << "</p>\n";
    if (file.Signatures)
        out << "<div class=\"assinaturas\"><p>Entregue por, em ____/____/________</p><p>Recebido por, em "
               "____/____/________</p></div>\n";
    out << "</article>\n";
}

bool IsWide(const TListing& listing) {
    for (const TFileListing& file : listing.Files)
        if (ShownColumns(file).size() >= kWideTable)
            return true;
    return false;
}

} // namespace

void WriteListingHtml(std::ostream& out, const TListing& listing) {
    const std::string title(ListingTitle(listing.Kind));
    out << "<!DOCTYPE html>\n<html lang=\"pt-BR\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
           "'unsafe-inline'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        << "<title>" << HtmlText(title) << "</title>\n<style>\n";
    for (const std::string_view style : HtmlStyle())
        out << style;
    for (const std::string_view style : ListingStyle())
        out << style;
    if (IsWide(listing))
        out << "@media print { @page { size: A4 landscape; } }\n";
    out << "</style>\n</head>\n<body>\n<header>\n<h1>" << HtmlText(title) << "</h1>\n"
        << fmt::format("<p>{:%d/%m/%Y, %H:%M}. Conferix " CONFERIX_VERSAO ".</p>\n</header>\n<main>\n",
                       fmt::localtime(std::time(nullptr)));
    for (const TFileListing& file : listing.Files)
        WriteFile(out, file);
    if (listing.Files.size() > 1) {
        const std::vector<TListingSums> all = listing.Sums();
        out << "<article>\n";
        for (const TListingSums& sums : all) {
            out << "<h2>" << SumsTitle(sums, all.size() == 1) << "</h2>\n";
            WriteTotals(out, sums.Totals);
        }
        for (const std::string& note : SumsNotes(listing))
            out << "<p class=\"fora\">" << note << "</p>\n";
        out << "</article>\n";
    }
    out << "</main>\n</body>\n</html>\n";
}

} // namespace conferix
