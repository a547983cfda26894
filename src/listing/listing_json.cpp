#include "listing/listing_writer.h"
#include "report/message_json.h"

#include <cmath>
#include <ostream>

namespace conferix {

namespace {

TJson CellJson(const TListingCell& cell, TCellKind kind) {
    constexpr double kMostExact = 9e15; ///< beyond, doubles hold no longer every whole number
    if (!IsNumeric(kind))
        return cell.Text;
    if (!cell.Number)
        return nullptr;
    if (kind == TCellKind::Count && std::fabs(*cell.Number) < kMostExact)
        return std::llround(*cell.Number);
    return *cell.Number;
}

TJson RowJson(const TFileListing& file, const TListingRow& row) {
    TJson json = TJson::object();
    for (std::size_t i = 0; i < file.Columns.size(); ++i)
        json[file.Columns[i].Key] = CellJson(row.Cells[i], file.Columns[i].Kind);
    json["difere"] = row.Differs;
    return json;
}

TJson TotalsJson(const std::vector<TListingTotal>& totals) {
    TJson json = TJson::object();
    for (const TListingTotal& total : totals)
        json[total.Key] = CellJson({.Number = total.Value}, total.Kind);
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
        TJson rows = TJson::array();
        for (const TListingRow& row : group.Rows)
            rows.push_back(RowJson(file, row));
        json["grupos"].push_back({{"titulo", group.Title}, {"linhas", std::move(rows)}});
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
    out << JsonText(json) << '\n';
}

} // namespace conferix
