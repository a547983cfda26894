#include "model/monitoramento.h"

namespace conferix {

std::string_view TGuiaMonitoramento::Identificacao() const {
    for (const TXmlField& number : {NumeroGuiaPrestador(), NumeroGuiaOperadora(), IdentificacaoReembolso()})
        if (number.Text().find_first_not_of('0') != std::string_view::npos)
            return number.Text();
    return NumeroGuiaPrestador().Text();
}

void TMonitoramento::Accept(IArquivoTissVisitor& visitor) const {
    visitor.Visit(*this);
}

std::shared_ptr<TMonitoramentoQualidade>
TMonitoramentoQualidade::Create(std::shared_ptr<TXmlDocument> document) {
    return std::shared_ptr<TMonitoramentoQualidade>(new TMonitoramentoQualidade(std::move(document)));
}

void TMonitoramentoQualidade::Accept(IArquivoTissVisitor& visitor) const {
    visitor.Visit(*this);
}

} // namespace conferix
