#include "app/cli/commands.h"
#include "app/cli/progress.h"
#include "listing/listing_writer.h"
#include "platform/platform.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <sstream>
#include <utility>

namespace conferix {

namespace {

TListingOrder OrderOf(const TListarOptions& options, TListingKind kind) {
    constexpr std::array<std::pair<std::string_view, TListingOrder>, 4> kOrders = {
        {{"guia", TListingOrder::Guia},
         {"beneficiario", TListingOrder::Beneficiario},
         {"data", TListingOrder::Data},
         {"valor", TListingOrder::Valor}}};
    const auto* const found =
        std::ranges::find(kOrders, options.Ordem, &std::pair<std::string_view, TListingOrder>::first);
    const TListingOrder order = found != kOrders.end() ? found->second : TListingOrder::Arquivo;
    if (!HasOrder(kind, order))
        throw EUsage(HasOrder(kind, TListingOrder::Valor)
                         ? fmt::format("a listagem {} soma as guias; a única ordem que tem é --ordem valor",
                                       options.Listagem)
                         : fmt::format("a listagem {} soma as guias e não tem --ordem", options.Listagem));
    return order;
}

/// Lists one file; of one that cannot be listed, why.
TFileListing ListInput(const TCliContext& context, const TInput& input, TListingKind kind,
                       TListingOrder order) {
    TFileListing listing;
    const std::size_t told = context.Told->Errors.size();
    int status = kExitValid;
    if (!input.Failure.empty()) {
        context.Error(fmt::format("{}: {}", input.Name, input.Failure));
        status = kExitUnreadable;
    } else {
        status = RunOnFile(context, input.Name, [&](const TTissFile& file) {
            try {
                listing = ListFile(*file.Load(), kind, order);
            } catch (const ENotListed& error) {
                context.Error(fmt::format("{}: {}", input.Name, error.what()));
                return static_cast<int>(kExitInvalid);
            }
            return static_cast<int>(kExitValid);
        });
    }
    listing.Arquivo = input.Name;
    if (status != kExitValid) {
        listing.FailureStatus = status;
        listing.Failure =
            context.Told->Errors.size() > told ? context.Told->Errors.back() : "não pôde ser listado";
    }
    return listing;
}

} // namespace

int RunListar(const TCliContext& context, const TListarOptions& options) {
    TListing listing;
    listing.Kind = ListingKindOf(options.Listagem).value();
    const TListingOrder order = OrderOf(options, listing.Kind);
    if (std::ranges::count(options.Arquivos, "-") > 1)
        throw EUsage("a entrada padrão só pode ser lida uma vez");
    if (context.Formato == "pdf" && context.Streams.OutIsTerminal && options.Saida.empty())
        throw EUsage("um PDF não se lê no terminal; use --saida ARQUIVO");
    const std::vector<TInput> inputs = ExpandFolders(options.Arquivos, !options.SemSubpastas);
    if (!options.Saida.empty())
        CheckOutput(options.Saida, inputs);
    int status = kExitValid;
    {
        TProgressBar progress(context.Streams.Err, context.Streams.ErrIsTerminal, inputs.size());
        for (const TInput& input : inputs) {
            progress.Begin(input.Name);
            listing.Files.push_back(ListInput(context, input, listing.Kind, order));
            status = std::max(status, listing.Files.back().FailureStatus);
            progress.End();
        }
    }
    if (listing.Failures() == listing.Files.size())
        return status;
    std::ostringstream text;
    std::ostream& out = options.Saida.empty() ? context.Streams.Out : text;
    try {
        WriteListing(out, listing, context.Formato, context.Streams.OutIsTerminal && options.Saida.empty());
    } catch (const ENotListed& error) {
        context.Error(error.what());
        return kExitUnreadable;
    }
    if (!options.Saida.empty()) {
        WriteFileAtomically(PathFromText(options.Saida), text.view());
        context.Told->Answered = true;
    }
    return status;
}

} // namespace conferix
