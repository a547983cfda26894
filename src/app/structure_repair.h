// Corrections of structure, each proven.
#pragma once

#include "app/execute_solver.h"

namespace conferix {

/// Runs the corrections that the schema's findings offer: names first, then levels, order and values, until
/// none is left. `withLoss`: also those by which something is lost. The schema judges a text with a
/// correction anew: where its finding remains or another error appears, it is taken back and told among those
/// left out, with the reason. Totals and hash stay as they are. The last validation, of the answered text, is
/// the current one of OnValidate.
TCorrectionResult RepairStructure(TValidadorController& controller,
                                  const std::shared_ptr<const std::string>& xml,
                                  const std::vector<std::string>& enabledValidations, bool withLoss);

} // namespace conferix
