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

std::string_view TGuiaTissBase::NumeroMostrado() const {
    if (const std::string_view number = NumeroGuia(); !number.empty() || !HasNode())
        return number;
    for (const TXmlNode* node = Node(); node != nullptr; node = node->NextInWalk(Node()))
        if (node->IsTag() && node->LocalName().starts_with("numeroGuia") && !node->Value().empty())
            return node->Value();
    return {};
}

} // namespace conferix
