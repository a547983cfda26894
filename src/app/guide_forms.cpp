#include "app/guide_forms.h"

#include "data/tuss_search.h"
#include "forms/domain_terms.h"
#include "model/mensagem_tiss.h"

#include <fmt/format.h>

#include <array>
#include <map>
#include <memory>
#include <utility>

namespace conferix {

namespace {

/// The kinds of guide as templates name them, in the order of TEnumTipoGuia.
constexpr std::array<std::string_view, kTiposGuia> kKinds = {"consulta", "spsadt", "resumo_internacao",
                                                             "honorarios", "tratamento_odontologico"};

} // namespace

std::vector<TFormGuide> FormGuidesOf(const IArquivoTiss& file) {
    std::vector<TFormGuide> guides;
    if (const auto* message = dynamic_cast<const TMensagemTiss*>(&file))
        for (const TGuiaTissBase& guia : message->LoteGuias().GuiasTiss().EmOrdemDoDocumento())
            guides.push_back({guia.Node(), kKinds[static_cast<std::size_t>(guia.TipoGuia())],
                              std::string(guia.NumeroMostrado())});
    return guides;
}

TTermText FormTermsOf(const std::filesystem::path& terminology) {
    struct TKnown {
        explicit TKnown(const std::filesystem::path& file) : Terminology(file) {}
        TDomainTerms Domains = TDomainTerms::Installed();
        TTussSearch Terminology;
        std::map<std::pair<std::string, std::string>, std::string> Found; ///< the same codes come again
    };
    return [known = std::make_shared<TKnown>(terminology)](std::string_view table, std::string_view code) {
        const auto [entry, isNew] = known->Found.try_emplace({std::string(table), std::string(code)});
        if (isNew) {
            entry->second = known->Domains.Find(table, code);
            if (entry->second.empty())
                entry->second = known->Terminology.Description(table, code);
        }
        return entry->second;
    };
}

void TGuidePdf::Add(const TFormPage& page) {
    if (page.Guide != nullptr && page.Sheet == 1) {
        const bool below = page.Guide->Node == last_;
        pdf_.AddBookmark(below ? page.Form->Title
                               : fmt::format("{} - {}", page.Guide->Number, page.Form->Title),
                         below ? 1 : 0);
        last_ = page.Guide->Node;
    }
    pdf_.AddPage(page.Paper);
}

} // namespace conferix
