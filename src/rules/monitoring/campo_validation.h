// Bases of the rules about a monitoring guide.
#pragma once

#include "rules/monitoring/guia_fields.h"
#include "rules/run_rule.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace conferix {

/// Base of the groups and of the field rules.
class TGuiaMonitoramentoBaseValidation : public TRunRule {
  public:
    using TRunRule::TRunRule;
};

/// A group of field rules; has no finding of its own.
class TGrupoCamposValidation : public TGuiaMonitoramentoBaseValidation {
  public:
    using TGuiaMonitoramentoBaseValidation::TGuiaMonitoramentoBaseValidation;
    using TValidation::Visit;
    void Visit(const IGuiaMonitoramento& guia) override {
        StartVisit();
        VisitChildren(guia);
    }
};

class TCampoValidation;

/// The check of a field: adds what it finds in a guide to the rule.
using TCampoCheck = std::function<void(TCampoValidation& campo, const TGuiaFields& guia)>;

/// A rule of one field of the regulator's layout, whose three digits end its name. A finding without place is
/// one about the run and names no guide.
class TCampoValidation : public TGuiaMonitoramentoBaseValidation {
  public:
    TCampoValidation(TRunContextPtr run, TCampoCheck check)
        : TGuiaMonitoramentoBaseValidation(std::move(run)), check_(std::move(check)) {}
    using TValidation::Visit;
    void Visit(const IGuiaMonitoramento& guia) override;

    using TValidation::Error; // for the check
    /// Adds an error at the number of a document; where the number is valid but for its punctuation, with the
    /// correction that takes that away. `size`: of the bare number.
    void DocumentError(const TXmlField& number, std::string text, bool (*isValid)(std::string_view),
                       std::size_t size);

  protected:
    std::shared_ptr<TValidationMessage> NewMessage(TMessageType type, std::string text,
                                                   TFindingPlace place) const override;

  private:
    void Check(const TGuiaFields& guia);

    TCampoCheck check_;
    const TGuiaFields* guia_ = nullptr; ///< while the check runs
};

} // namespace conferix
