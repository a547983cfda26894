// Base of the rules about one guide of a lot.
#pragma once

#include "model/guias.h"
#include "rules/tuss_manager.h"
#include "validation/named_validation.h"
#include "validation/solver.h"

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

/// A rule about one guide at a time; knows the version of the file and the terminology.
class TGuiaTissValidation : public TValidation {
  public:
    /// `versaoTiss`: version of the file, as "3.04.00"; `manager`: may be null for rules that judge no code.
    TGuiaTissValidation(std::string versaoTiss, std::shared_ptr<TTussManager> manager)
        : versaoTiss_(std::move(versaoTiss)), manager_(std::move(manager)) {}
    bool Required() const override { return true; }

  protected:
    const std::string& VersaoTiss() const { return versaoTiss_; }
    /// True for a file of that version or a later one.
    bool IsVersionFrom(std::string_view versao) const { return versaoTiss_ >= versao; }
    /// Raises EManagerNotDefined when the rule was made without one.
    TTussManager& Manager() const;

    /// Adds a child that is a rule about guides.
    template<class T>
    void AddGuiaValidation() {
        AddValidation<T>(versaoTiss_, manager_);
    }

    /// Begins the visit of a guide: the messages of the visit name it.
    void StartGuia(const IGuiaTiss& guia);
    // `at`: the element that was judged; null gives a message without position.
    void AddSuccess(std::string_view reason, const TXmlNode* at = nullptr);
    /// A warning about the run, at the first element that it concerns.
    void AddWarn(std::string reason, const TXmlNode* at);
    void AddError(std::string reason, const TXmlNode* at);
    /// Judges an amount, where it is present: not negative, and without fractions of a cent.
    void CheckWholeCents(const TXmlField& field, const TAmountTexts& texts);
    /// An error that goes away when the element is given the expected amount, which its solver does. One that
    /// was computed from what is no number, or is none itself, has no solver.
    void AddCorrectableError(std::string reason, TXmlNode& at, double expected, TComputation computation);

  private:
    std::string versaoTiss_;
    std::shared_ptr<TTussManager> manager_;
    std::string numeroGuia_;
};

/// A level of the tree of rules: judges nothing itself and hands each guide to its children.
class TGrupoGuiaValidation : public TGuiaTissValidation {
  public:
    using TGuiaTissValidation::TGuiaTissValidation;
    bool Required() const override { return false; }
    using TGuiaTissValidation::Visit;
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

/// An amount or quantity as it stands in messages and files, whatever the locale: "12345.50".
std::string MoneyText(double value);

} // namespace conferix
