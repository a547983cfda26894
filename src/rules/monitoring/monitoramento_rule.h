// Bases of the rules of a monitoring guide, and what the rules of one file share.
#pragma once

#include "rules/monitoring/guia_fields.h"
#include "rules/tuss_manager.h"
#include "validation/named_validation.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace conferix {

/// What all rules of one monitoring file share.
struct TMonitoramentoContext {
    /// The terminology. Raises EManagerNotDefined without one.
    TTussManager& Manager() const;

    std::string VersaoTiss;                ///< the file's version, as "1.06.00"
    std::shared_ptr<TTussManager> Tuss;    ///< null where nothing is visited
    std::chrono::local_seconds Referencia; ///< what the dates of a guide have to be before
    /// The month that the lot speaks of, as "202301"; none where the header has no such element.
    std::optional<std::string> Competencia;
    const TGuiaFields* Current = nullptr; ///< set by the guide rule while its children are visited
};

using TMonitoramentoContextPtr = std::shared_ptr<TMonitoramentoContext>;

/// Base of the groups and of the field rules.
class TGuiaMonitoramentoBaseValidation : public TValidation {
  public:
    explicit TGuiaMonitoramentoBaseValidation(TMonitoramentoContextPtr context)
        : context_(std::move(context)) {}

  protected:
    const TMonitoramentoContextPtr& Context() const { return context_; }
    template<class... Rules>
    void AddRules() {
        (AddValidation<Rules>(context_), ...);
    }

  private:
    TMonitoramentoContextPtr context_;
};

/// A rule of one field of the regulator's layout. Its name ends with the three digits of the field.
class TCampoMonitoramentoValidation : public TGuiaMonitoramentoBaseValidation {
  public:
    using TGuiaMonitoramentoBaseValidation::TGuiaMonitoramentoBaseValidation;
    using TValidation::Visit;
    void Visit(const IGuiaMonitoramento& guia) override;

  protected:
    virtual void Check(const TGuiaFields& guia) = 0;

    /// Adds an error at a place, which for an absent element is the one that should hold it.
    void AddError(const TGuiaFields& guia, const TXmlField& place, std::string reason);
    /// Adds an error at an element whose value a correction replaces; an empty element offers none.
    void AddError(const TGuiaFields& guia, const TXmlField& place, std::string reason,
                  const std::string& correction);
    /// Whether a TUSS table can be consulted; tells once a run when it cannot.
    bool CanConsult(std::string_view table);
    bool CanConsultCities();

  private:
    std::shared_ptr<TLoteGuiasMonitoramentoValidationMessage>
    NewError(const TGuiaFields& guia, const TXmlField& place, std::string reason) const;
    void AddNotice(const std::optional<std::string>& text);
    /// The three digits of the field.
    std::string Campo() const { return std::string(Name().substr(Name().size() - 3)); }
};

/// A check under one row of its table of fields.
template<class Rule, const auto& row>
class TRuleOfRow : public Rule {
  public:
    explicit TRuleOfRow(TMonitoramentoContextPtr context) : Rule(std::move(context), row) {}
};

/// An amount or quantity as messages show it.
std::string AmountText(double value);

} // namespace conferix
