#include "model/mensagem_tiss.h"

#include "xml/name_likeness.h"

namespace conferix {

void TMensagemTiss::Accept(IArquivoTissVisitor& visitor) const {
    visitor.Visit(*this);
}

TLoteGuiasBase TMensagemTiss::LoteGuias() const {
    // A slip in a name, of which the schema rule tells, hides no guides from the other rules.
    TXmlNode* sender = HasNode() ? ChildMeant(*Node(), "prestadorParaOperadora") : nullptr;
    return {sender != nullptr ? ChildMeant(*sender, "loteGuias") : nullptr, Names()};
}

} // namespace conferix
