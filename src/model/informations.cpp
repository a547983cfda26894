#include "model/informations.h"

#include "model/arquivo_tiss.h"
#include "model/lote_guias.h"
#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "model/tiss_utils.h"
#include "platform/utf8.h"

#include <array>

namespace conferix {

namespace {

std::string TipoGuiaText(TEnumTipoGuia tipo) {
    static constexpr std::array<std::string_view, kTiposGuia> kTexts = {"Consulta", "SP/SADT", "Internação",
                                                                        "Honorários", "Odontologia"};
    return std::string(kTexts.at(static_cast<std::size_t>(tipo)));
}

/// "202301" as "01/2023"; a text that does not have six characters stays as it is.
std::string CompetenciaText(std::string_view text) {
    if (CountCharacters(text) != 6)
        return std::string(text);
    const std::size_t month = BytesOfCharacters(text, 4);
    return std::string(text.substr(month)) + "/" + std::string(text.substr(0, month));
}

TInformationGroup LoteGuiasGroup(const TXmlDocument& document, const ILoteGuias& lote,
                                 const TFormatSettings& formats) {
    std::string prestador(TTissUtils::NomeContratado(document));
    if (prestador.empty())
        prestador = TTissUtils::CodigoContratado(document);
    TInformationGroup group = {"Lote de Guias",
                               {{"Prestador", std::move(prestador)},
                                {"Operadora", std::string(TTissUtils::RegistroANS(document))},
                                {"Nº do Lote", std::string(lote.NumeroLote().Text())}}};
    const std::int64_t count = lote.QtdGuias();
    if (count > 0) {
        group.Linhas.emplace_back("Tipo de Guia", TipoGuiaText(lote.TipoGuia()));
        group.Linhas.emplace_back("Qtd Guias", formats.Count(count));
        group.Linhas.emplace_back("Valor Total Informado", "R$ " + formats.Money(lote.ValorTotal()));
    }
    return group;
}

TInformationGroup MonitoramentoGroup(const TXmlDocument& document, const TLoteMonitoramento& lote,
                                     const TFormatSettings& formats) {
    return {"Monitoramento",
            {{"Operadora", std::string(TTissUtils::RegistroANS(document))},
             {"Competência", CompetenciaText(lote.CompetenciaLote().Text())},
             {"Nº do Lote", std::string(lote.NumeroLote().Text())},
             {"Qtd Guias", lote.SemMovimento() ? "Sem Movimento" : formats.Count(lote.QtdGuias())}}};
}

} // namespace

TInformations InformationsOf(const IArquivoTiss& arquivo, const TFormatSettings& formats) {
    TInformations groups = {{"TISS",
                             {{"Versão", std::string(arquivo.Versao())},
                              {"Tipo de Transação", std::string(arquivo.TextoTipoTransacao())},
                              {"Hash", std::string(arquivo.Hash())}}}};
    const TXmlDocument& document = *arquivo.Xml();
    // The header alone decides which group is shown, so that it may name a lot that the root cannot hold.
    const auto* mensagem = dynamic_cast<const IMensagemTiss*>(&arquivo);
    switch (arquivo.TipoTransacao()) {
    case TEnumTipoTransacaoTiss::tmEnvioLoteGuias:
        groups.push_back(LoteGuiasGroup(
            document, mensagem != nullptr ? mensagem->LoteGuias() : ILoteGuias(nullptr, kLoteGuiasV3_02),
            formats));
        break;
    case TEnumTipoTransacaoTiss::tmMonitoramento:
        groups.push_back(MonitoramentoGroup(document, TLoteMonitoramento(arquivo.Node()), formats));
        break;
    default:
        break;
    }
    return groups;
}

} // namespace conferix
