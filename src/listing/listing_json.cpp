#include "listing/listing_writer.h"
#include "report/message_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

namespace {

TJson NumberJson(const std::optional<double>& number, TCellKind kind) {
    constexpr double kMostExact = 9e15; ///< beyond, doubles hold no longer every whole number
    if (!number)
        return nullptr;
    if (kind == TCellKind::Count && std::fabs(*number) < kMostExact)
        return std::llround(*number);
    return *number;
}

TJson CellJson(const TListingCell& cell, TCellKind kind) {
    if (!IsNumeric(kind))
        return cell.Text();
    return NumberJson(cell.Number(), kind);
}

/// Where the rows of a group go, which are many: they are written without a tree of values. No text has this,
/// since quotation marks are escaped in it.
constexpr std::string_view kRowsKey = "\"linhas\": ";
constexpr std::string_view kNoRows = "\"linhas\": null";

void AppendCell(std::string& to, const TListingCell& cell, TCellKind kind) {
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    if (!IsNumeric(kind) && std::ranges::all_of(cell.Text(), isPlain))
        to.append("\"").append(cell.Text()).append("\"");
    else
        to += JsonText(CellJson(cell, kind), -1);
}

/// Writes the rows as they stand in the indented text.
void WriteRows(std::ostream& out, const TFileListing& file, const TListingGroup& group) {
    std::vector<std::string> keys;
    for (const TListingColumn& column : file.Columns)
        keys.push_back(fmt::format("{:14}\"{}\": ", "", column.Key));
    const std::string differs = fmt::format("{:14}\"difere\": ", "");
    const std::string end = fmt::format("\n{:12}}}", "");
    std::string text;
    out << '[';
    for (const TListingRow& row : group.Rows) {
        text = fmt::format("{}\n{:12}{{\n", &row == &group.Rows.front() ? "" : ",", "");
        for (std::size_t i = 0; i < keys.size(); ++i) {
            text += keys[i];
            AppendCell(text, row.Cells[i], file.Columns[i].Kind);
            text += ",\n";
        }
        text.append(differs).append(row.Differs ? "true" : "false").append(end);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    out << (group.Rows.empty() ? "]" : fmt::format("\n{:10}]", ""));
}

TJson TotalsJson(const std::vector<TListingTotal>& totals) {
    TJson json = TJson::object();
    for (const TListingTotal& total : totals)
        json[total.Key] = NumberJson(total.Value, total.Kind);
    return json;
}

TJson FileJson(const TFileListing& file) {
    if (!file.Failure.empty())
        return {{"arquivo", file.Arquivo},
                {"erro", ErrorJson(file.FailureStatus, std::span(&file.Failure, 1))}};
    TJson json = {{"arquivo", file.Arquivo}, {"tipoArquivo", NameOf(file.Tipo)}, {"versao", file.Versao}};
    json["cabecalho"] = TJson::object();
    for (const TListingLine& line : file.Head)
        json["cabecalho"][line.Key] = line.Value;
    json["grupos"] = TJson::array();
    for (const TListingGroup& group : file.Groups) {
        TJson& told = json["grupos"].emplace_back(TJson{{"titulo", group.Title}, {"linhas", nullptr}});
        if (group.Sum)
            for (std::size_t i = 0; i < file.Columns.size(); ++i)
                if (file.Columns[i].Summed)
                    told["totais"][file.Columns[i].Key] = CellJson(group.Sum->Cells[i], file.Columns[i].Kind);
    }
    json["totais"] = TotalsJson(file.Totals);
    json["observacoes"] = file.Notes;
    return json;
}

} // namespace

void WriteListingJson(std::ostream& out, const TListing& listing) {
    TJson json = {{"versaoFormato", kJsonFormatVersion},
                  {"versaoPrograma", CONFERIX_VERSAO},
                  {"listagem", ListingNames()[static_cast<std::size_t>(listing.Kind)]},
                  {"arquivos", TJson::array()}};
    for (const TFileListing& file : listing.Files)
        json["arquivos"].push_back(FileJson(file));
    const std::vector<TListingSums> sums = listing.Sums();
    json["totais"] = sums.size() > 1
                         ? TJson(nullptr)
                         : TotalsJson(sums.empty() ? std::vector<TListingTotal>() : sums.front().Totals);
    json["totaisPorTipo"] = TJson::object();
    for (const TListingSums& each : sums)
        json["totaisPorTipo"][NameOf(each.Tipo)] = TotalsJson(each.Totals);
    const std::string text = JsonText(json);
    std::string_view rest = text;
    for (const TFileListing& file : listing.Files)
        if (file.Failure.empty())
            for (const TListingGroup& group : file.Groups) {
                const std::size_t at = rest.find(kNoRows);
                out << rest.substr(0, at) << kRowsKey;
                WriteRows(out, file, group);
                rest.remove_prefix(at + kNoRows.size());
            }
    out << rest << '\n';
}

} // namespace conferix
