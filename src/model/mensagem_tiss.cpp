#include "model/mensagem_tiss.h"

namespace conferix {

void TMensagemTiss::Accept(IArquivoTissVisitor& visitor) const {
    visitor.Visit(*this);
}

TLoteGuiasBase TMensagemTiss::LoteGuias() const {
    return {Find("prestadorParaOperadora/loteGuias"), Names()};
}

} // namespace conferix
