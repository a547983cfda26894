#pragma once

#include "rules/run_context.h"
#include "validation/solver.h"
#include "validation/validation.h"

#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// Base of the rules that need something of the run.
class TRunRule : public TValidation {
  public:
    explicit TRunRule(TRunContextPtr run) : run_(std::move(run)) {}

    TRunContext& Run() const { return *run_; }
    /// True for a file of that version or a later one.
    bool IsVersionFrom(std::string_view versao) const { return run_->VersaoTiss >= versao; }
    /// The terminology. Raises EManagerNotDefined in a run without one.
    TTussManager& Manager() const;

    // Whether a table can be consulted; where it is not installed, the rule says so once a run, at the first
    // element `at` that it concerns (null: at none).
    bool CanConsult(std::string_view table, const TXmlNode* at = nullptr);
    /// Domain table 64 for the terms of a table.
    bool CanConsultTable64(std::string_view table, const TXmlNode* at = nullptr);
    bool CanConsultCities(const TXmlNode* at = nullptr);

    /// Adds an error at an element whose value a correction replaces. No correction is offered for an element
    /// without a value, nor for an amount that is no number or was computed from what is none.
    /// `computation`: what the value was made of; nothing for a text that stands by itself.
    void CorrectableError(TXmlNode& at, std::string text, std::string newValue,
                          std::optional<TComputation> computation = std::nullopt);

  private:
    /// Whether the rule has not told of a missing table yet; notes that it has.
    bool IsNewNotice(std::string table);
    /// Adds a warning about the run.
    void Notice(const TXmlNode* at, std::string text);

    TRunContextPtr run_;
};

/// An amount or quantity as it stands in messages and files, whatever the locale: "12345.50".
std::string MoneyText(double value);

} // namespace conferix
