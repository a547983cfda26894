// Rules about a lot of guides, and the levels that hand out its guides.
#pragma once

#include "model/mensagem_tiss.h"
#include "validation/validation.h"

#include <vector>

namespace conferix {

/// A rule about the lot of a message that sends one; stays silent about other messages.
class TLoteValidation : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const IMensagemTiss& mensagem) override;
};

/// The lot holds a guide.
class TLoteComGuia : public TLoteValidation {
  public:
    using TLoteValidation::Visit;
    void Visit(const ILoteGuias& lote) override;
};

/// The guides are of one kind. Judged by parity: an odd number of kinds passes.
class TLoteDeUmTipo : public TLoteValidation {
  public:
    using TLoteValidation::Visit;
    void Visit(const ILoteGuias& lote) override;
};

/// The lot holds at most 100 guides.
class TLoteAteCemGuias : public TLoteValidation {
  public:
    using TLoteValidation::Visit;
    void Visit(const ILoteGuias& lote) override;
};

/// Hands the guides of one kind to the rules about them: rule by rule, to each the guides in lot order.
template<class Guia>
class TLoteGuiaTissValidation : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const ILoteGuias& lote) override {
        const std::vector<Guia> guias = lote.GuiasTiss().Lista<Guia>();
        ClearMessages();
        if (guias.empty())
            return;
        MarkValidated();
        for (const auto& rule : Validations())
            for (const Guia& guia : guias) {
                guia.Accept(*rule);
                AddValidationMessages(rule->ValidationMessages());
            }
    }
};

/// All rules about the lot of a message.
class TGrupoLoteValidation : public TLoteValidation {
  public:
    using TLoteValidation::Visit;
    void Visit(const ILoteGuias& lote) override {
        StartVisit();
        VisitChildren(lote);
    }
};

} // namespace conferix
