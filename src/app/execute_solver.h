// Applying the corrections that messages offer.
#pragma once

#include "app/validador_controller.h"
#include "validation/solver.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace conferix {

/// Picks one of several corrections, 0-based; nothing to cancel.
using TSolverChoice = std::function<std::optional<std::size_t>(const std::vector<std::shared_ptr<ISolver>>&)>;

/// A correction that was applied or left out.
struct TCorrectionRecord {
    std::shared_ptr<const TXmlMessage> Message; ///< the finding; its line is that of the text before
    std::string Solver;                         ///< class name of the correction
    std::string Description;
    std::string Element; ///< local name of the element whose value changes; empty for the document as a whole
    std::string Before;  ///< its value
    std::string After;   ///< of an applied correction
    std::string Reason;  ///< why it was left out, as the end of a sentence; empty for an applied one
    std::string NewError =
        {}; ///< of one left out: the error that there would be; empty where none is the reason

    /// Reason, with the error that there would be.
    std::string WhyLeft() const { return NewError.empty() ? Reason : Reason + ": " + NewError; }
};

/// The record of a correction that is not yet applied.
TCorrectionRecord RecordOf(std::shared_ptr<const TXmlMessage> message, const ISolver& solver);
/// Notes in the log how often which corrections were applied: for who applies those of CorrectAll or
/// RepairStructure, which may be a preview.
void LogCorrections(const std::string& fileName, const std::vector<TCorrectionRecord>& records);

/// What the caller adds to a correction.
struct TSolverHandlers {
    TSolverChoice Choose; ///< asked only when a message offers several corrections
    /// Takes over the corrected text, before it is validated.
    std::function<void(const TCorrectionRecord& record, const std::shared_ptr<const std::string>& xml)>
        Corrected;
    /// Validates the corrected text; where it is empty, the controller does so before the call returns.
    std::function<void(const std::shared_ptr<const std::string>& xml)> Validate = {};
};

/// Corrects one message of a list, found by its identifier: solves, hands out the corrected text, marks the
/// file as modified and validates the text anew, which tells the observers of OnValidate. Answers false, with
/// nothing done, without an open file, for an unknown message, one without corrections, and a cancelled
/// choice.
bool ExecuteSolver(TValidadorController& controller, const TXmlMessages& messages,
                   const std::string& messageId, const std::vector<std::string>& enabledValidations,
                   const TSolverHandlers& handlers);

/// What came of correcting a whole text.
struct TCorrectionResult {
    std::shared_ptr<const std::string> Xml; ///< the corrected text; the given one when nothing was corrected
    std::vector<TCorrectionRecord> Applied; ///< in the order in which they were
    std::vector<TCorrectionRecord> LeftOut; ///< of the errors that remain
};

/// True for a correction that may be applied.
using TCorrectionFilter = std::function<bool(const TXmlMessage& message, const ISolver& solver)>;

/// Corrects the shown errors of a text one rule after the other, in the order of the messages, and validates
/// anew after each rule, until no error offers a correction or none changes anything. Corrections of
/// structure (RepairStructure) are left as they are. The last validation, of the answered text, is the
/// current one of OnValidate. A choice that cancels leaves its error as it is, and so does `admits`, where it
/// is given, with a correction that it refuses.
///
/// No bill becomes worse: an amount is left as it is where what it is computed from is missing, misnamed,
/// repeated or itself in error, where it would become negative, zero or no number, where rules demand
/// different values, and in guides where correcting it would leave an error that was not there before.
TCorrectionResult CorrectAll(TValidadorController& controller, const std::shared_ptr<const std::string>& xml,
                             const std::vector<std::string>& enabledValidations, const TSolverChoice& choose,
                             const TCorrectionFilter& admits = {});

} // namespace conferix
