#include "model/guias.h"

namespace conferix {

void TGuiaTissBase::Accept(IArquivoTissVisitor& visitor) const {
    switch (tipo_) {
    case TEnumTipoGuia::tgConsulta:
        return visitor.Visit(TGuiaConsulta(*this));
    case TEnumTipoGuia::tgSPSADT:
        return visitor.Visit(TGuiaSpSadt(*this));
    case TEnumTipoGuia::tgResumoInternacao:
        return visitor.Visit(TGuiaResumoInternacao(*this));
    case TEnumTipoGuia::tgHonorarios:
        return visitor.Visit(TGuiaHonorarios(*this));
    case TEnumTipoGuia::tgOdonto:
        return visitor.Visit(TGuiaOdonto(*this));
    }
}

} // namespace conferix
