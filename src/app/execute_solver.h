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

/// What the caller adds to a correction.
struct TSolverHandlers {
    TSolverChoice Choose; ///< asked only when a message offers several corrections
    /// Takes over the corrected text, before it is validated.
    std::function<void(const TXmlMessage& message, const ISolver& solver,
                       const std::shared_ptr<const std::string>& xml)>
        Corrected;
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
    std::size_t Corrections = 0;            ///< number of corrections applied
};

/// Corrects the shown errors of a text one rule after the other, in the order of the messages, and validates
/// anew after each rule, until no error offers a correction or none changes anything. The last validation,
/// of the answered text, is the current one of OnValidate. A choice that cancels leaves its error as it is;
/// so do rules that demand different values of one element, none of which is right for all.
TCorrectionResult CorrectAll(TValidadorController& controller, std::shared_ptr<const std::string> xml,
                             const std::vector<std::string>& enabledValidations, const TSolverChoice& choose);

} // namespace conferix
