#include "listing/listing.h"

#include "listing/cells.h"
#include "listing/lot_listing.h"
#include "listing/monitoring_listing.h"
#include "model/money.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace conferix {

namespace {

// In the order of the enumeration.
constexpr std::array<std::string_view, 6> kNames = {"guias",    "capa",          "procedimentos",
                                                    "despesas", "profissionais", "entrega"};
constexpr std::array<std::string_view, 6> kTitles = {"Relação de guias",          "Capa de lote",
                                                     "Procedimentos por código",  "Outras despesas por tipo",
                                                     "Produção por profissional", "Protocolo de entrega"};

} // namespace

std::span<const std::string_view> ListingNames() {
    return kNames;
}

std::optional<TListingKind> ListingKindOf(std::string_view name) {
    const auto found = std::ranges::find(kNames, name);
    if (found == kNames.end())
        return std::nullopt;
    return static_cast<TListingKind>(found - kNames.begin());
}

std::string_view ListingTitle(TListingKind kind) {
    return kTitles.at(static_cast<std::size_t>(kind));
}

std::string IlegiveisText(std::size_t count) {
    return count == 1
               ? "1 valor do arquivo não pode ser lido como número, ou é grande demais, e fica fora dos "
                 "totais."
               : fmt::format("{} valores do arquivo não podem ser lidos como número, ou são grandes "
                             "demais, e ficam fora dos totais.",
                             count);
}

std::optional<double> DifferenceOf(const std::optional<double>& declared,
                                   const std::optional<double>& computed) {
    if (!declared || !computed || SameMoney(*declared, *computed))
        return std::nullopt;
    return *declared - *computed;
}

bool TFileListing::HasDifferences() const {
    return std::ranges::any_of(Totals, &TListingTotal::Differs) ||
           std::ranges::any_of(Groups, [](const TListingGroup& group) {
               return std::ranges::any_of(group.Rows, &TListingRow::Differs);
           });
}

std::vector<TListingSums> TListing::Sums() const {
    std::vector<TListingSums> all;
    for (const TFileListing& file : Files) {
        if (!file.Failure.empty())
            continue;
        auto sums = std::ranges::find(all, file.Tipo, &TListingSums::Tipo);
        if (sums == all.end())
            sums = all.insert(sums, {file.Tipo, 0, TotalsOf(file.Tipo)});
        ++sums->Files;
    }
    return all;
}

std::vector<TListingTotal> TListing::TotalsOf(TEnumTipoArquivoTiss tipo) const {
    struct TSum {
        TDecimalSum Sum;
        bool Told = false;   ///< by a file
        bool Untold = false; ///< by another
    };
    std::vector<TListingTotal> totals;
    std::vector<TSum> sums;
    for (const TFileListing& file : Files) {
        if (file.Tipo != tipo)
            continue;
        for (const TListingTotal& total : file.Totals) {
            const auto at = static_cast<std::size_t>(
                std::ranges::find(totals, total.Key, &TListingTotal::Key) - totals.begin());
            if (at == totals.size()) {
                totals.push_back(total);
                sums.emplace_back();
            }
            totals[at].Differs = totals[at].Differs || total.Differs;
            (total.Value ? sums[at].Told : sums[at].Untold) = true;
            sums[at].Sum.Add(total.Value.value_or(0));
            totals[at].Counted.insert(total.Counted.begin(), total.Counted.end());
        }
    }
    // What was counted is counted; an amount without that of one file is not the amount of all.
    for (std::size_t i = 0; i < totals.size(); ++i)
        totals[i].Value = !sums[i].Told || (sums[i].Untold && totals[i].Kind == TCellKind::Money)
                              ? std::nullopt
                              : std::optional(sums[i].Sum.Value());
    for (TListingTotal& total : totals)
        if (!total.Counted.empty())
            total.Value = static_cast<double>(total.Counted.size());
    return totals;
}

std::size_t TListing::Failures() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(Files, [](const TFileListing& file) { return !file.Failure.empty(); }));
}

TFileListing ListFile(const IArquivoTiss& file, TListingKind kind, TListingOrder order) {
    TFileListing listing{.Arquivo = {}, .Tipo = file.TipoArquivo(), .Versao = std::string(file.Versao())};
    if (const auto* monitoring = dynamic_cast<const IMonitoramento*>(&file)) {
        ListMonitoring(*monitoring, kind, order, listing);
        return listing;
    }
    const auto* message = dynamic_cast<const IMensagemTiss*>(&file);
    if (message == nullptr || file.TipoTransacao() != TEnumTipoTransacaoTiss::tmEnvioLoteGuias)
        throw ENotListed(fmt::format("não há o que listar em uma transação {}; as listagens são de lotes de "
                                     "guias (ENVIO_LOTE_GUIAS) e de arquivos de monitoramento",
                                     file.TextoTipoTransacao()));
    ListLot(*message, kind, order, listing);
    return listing;
}

bool HasOrder(TListingKind kind, TListingOrder order) {
    switch (kind) {
    case TListingKind::Guias:
    case TListingKind::Entrega:
    case TListingKind::Profissionais:
        return true;
    case TListingKind::Procedimentos:
        return order == TListingOrder::Arquivo || order == TListingOrder::Valor;
    case TListingKind::Capa:
    case TListingKind::Despesas:
        return order == TListingOrder::Arquivo;
    }
    return false;
}

} // namespace conferix
