// Bases of the rules about one guide of a lot.
#pragma once

#include "model/guias.h"
#include "rules/run_rule.h"

#include <memory>
#include <string>
#include <string_view>

namespace conferix {

/// What a rule says of an amount; "{}" stands for the found text and for the expected amount.
struct TAmountTexts {
    std::string_view Valid;
    std::string_view Negative; ///< found text
    std::string_view Decimals; ///< found text, expected amount
};

/// A rule about one guide at a time; its messages name the guide.
class TGuiaTissValidation : public TRunRule {
  public:
    using TRunRule::TRunRule;

  protected:
    /// Begins the visit of a guide.
    void StartGuia(const IGuiaTiss& guia);
    /// Judges an amount, where it is present: not negative, and without fractions of a cent.
    void CheckWholeCents(const TXmlField& field, const TAmountTexts& texts);
    std::shared_ptr<TValidationMessage> NewMessage(TMessageType type, std::string text,
                                                   TFindingPlace place) const override;

  private:
    std::string numeroGuia_;
    std::string guide_; ///< its mark
};

/// A level of the tree of rules: judges nothing itself and hands each guide to its children.
class TGrupoGuiaValidation : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const IGuiaConsulta& guia) override { VisitGuia(guia); }
    void Visit(const IGuiaSpSadt& guia) override { VisitGuia(guia); }
    void Visit(const IGuiaResumoInternacao& guia) override { VisitGuia(guia); }
    void Visit(const IGuiaHonorarios& guia) override { VisitGuia(guia); }
    void Visit(const IGuiaOdonto& guia) override { VisitGuia(guia); }

  private:
    void VisitGuia(const IGuiaTiss& guia) {
        StartVisit();
        VisitChildren(guia);
    }
};

} // namespace conferix
