// Judging of one terminology code on one day.
#pragma once

#include "rules/tuss_manager.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// The day of an xs:date text, its time zone left out; nothing for another text.
std::optional<TDate> ParseXsDate(std::string_view text);
/// A day as "dd/mm/yyyy".
std::string FormatUserDate(const TDate& date);

/// What can be said of a term on a day.
enum class TTussResult : std::uint8_t {
    Valid = 0,
    Inactivated = 1,     ///< taken out of use before that day
    NotFound = 2,        ///< neither in its table nor among the inactivated terms
    NotYetInForce = 3,   ///< comes into use after that day
    SendConsolidated = 4 ///< is sent through the code of its group (TTuss64Validation only)
};

/// Whether a code exists in its TUSS table and was in force on a day. Asks the terminology once, when the
/// first answer is wanted; that call raises ETussTableWithoutEntity, ETerminologyNotRead.
class TTussValidation {
  public:
    /// The manager has to outlive the object. `date`: the day of execution.
    TTussValidation(TTussManager& manager, TDate date, std::string_view table, std::string_view code)
        : manager_(&manager), date_(date), table_(table), code_(code) {}
    virtual ~TTussValidation() = default;

    bool IsValid() { return ValidationReturn() == TTussResult::Valid; }
    TTussResult ValidationReturn();
    /// The verdict for the user; empty for a valid code.
    std::string ValidationMessage();

  protected:
    /// Result of the check and the dates or group that its text names.
    struct TVerdict {
        TTussResult Result = TTussResult::NotFound;
        std::optional<TDate> Start; ///< first day of validity
        std::optional<TDate> End;   ///< last day of validity
        std::string Group;
    };
    virtual TVerdict Evaluate() const;

    TTussManager& Manager() const { return *manager_; }
    const TDate& Date() const { return date_; }
    const std::string& Table() const { return table_; }
    const std::string& Code() const { return code_; }

  private:
    const TVerdict& Verdict();

    TTussManager* manager_;
    TDate date_;
    std::string table_;
    std::string code_;
    std::optional<TVerdict> verdict_; ///< none before the first answer
};

/// Whether domain table 64 lets a code be sent as itself on a day, or demands the code of its group.
class TTuss64Validation : public TTussValidation {
  public:
    using TTussValidation::TTussValidation;

  protected:
    TVerdict Evaluate() const override;
};

} // namespace conferix
