#include "app/repeated_guides.h"

#include "model/lote_guias.h"
#include "model/mensagem_tiss.h"
#include "model/tiss_utils.h"
#include "xml/cut_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace conferix {

std::vector<TBilledGuide> BilledGuides(const TValidateArgs& result) {
    std::vector<TBilledGuide> guides;
    const auto* mensagem = dynamic_cast<const IMensagemTiss*>(result.ArquivoTiss.get());
    if (mensagem == nullptr || mensagem->TipoTransacao() != TEnumTipoTransacaoTiss::tmEnvioLoteGuias)
        return guides;
    const TXmlDocument& document = *mensagem->Xml();
    const std::string provider = fmt::format("{}/{}/{}/", TTissUtils::IdentificacaoPrestadorCnpj(document),
                                             TTissUtils::IdentificacaoPrestadorCpf(document),
                                             TTissUtils::IdentificacaoPrestadorCodigoNaOperadora(document));
    for (const IGuiaTiss& guia : mensagem->LoteGuias().Guias())
        if (const std::string number(guia.NumeroGuia()); !number.empty())
            guides.push_back({provider + number, number, static_cast<std::int32_t>(guia.Node()->Line())});
    return guides;
}

std::string TGuideInTwoFiles::Text() const {
    return fmt::format("Guia {} está também em {}, linha {}", CutText(Number), OtherFile, OtherLine);
}

std::vector<TGuideInTwoFiles> WithFileNames(const std::vector<TRepeatedGuide>& repeated,
                                            const std::vector<std::string>& names) {
    std::vector<TGuideInTwoFiles> named;
    named.reserve(repeated.size());
    for (const TRepeatedGuide& guide : repeated)
        named.push_back({guide.Number, names[guide.First.File], guide.First.Line, names[guide.Again.File],
                         guide.Again.Line});
    return named;
}

std::vector<std::string> RepeatedGuideTexts(const std::vector<TGuideInTwoFiles>& repeated) {
    constexpr std::size_t kTold = 50;
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < std::min(repeated.size(), kTold); ++i)
        texts.push_back(fmt::format("{}: {}", repeated[i].File, repeated[i].Text()));
    if (repeated.size() > kTold)
        texts.push_back(fmt::format("e mais {} {} em dois arquivos", repeated.size() - kTold,
                                    repeated.size() == kTold + 1 ? "guia" : "guias"));
    return texts;
}

void TRepeatedGuides::Add(std::size_t file, const std::vector<TBilledGuide>& guides) {
    for (const TBilledGuide& guide : guides) {
        TRepeatedGuide::TPlace here{file, guide.Line};
        const auto [known, added] = billed_.try_emplace(guide.Key, TBilled{guide.Number, here, {}});
        if (added)
            continue;
        TBilled& billed = known->second;
        if (here < billed.First)
            std::swap(here, billed.First);
        billed.Others.push_back(here);
    }
}

std::vector<TRepeatedGuide> TRepeatedGuides::Found() const {
    std::vector<TRepeatedGuide> found;
    for (const auto& [key, billed] : billed_)
        for (const TRepeatedGuide::TPlace& other : billed.Others)
            if (other.File != billed.First.File)
                found.push_back({billed.Number, billed.First, other});
    std::ranges::sort(found, {}, [](const TRepeatedGuide& guide) {
        return std::tuple(guide.First, guide.Again, guide.Number);
    });
    return found;
}

} // namespace conferix
