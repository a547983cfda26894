// Corrections of structure, each proven.
#pragma once

#include "app/execute_solver.h"

namespace conferix {

struct TStructureRepair {
    bool WithLoss = false;    ///< also what loses something
    bool AmountsNext = false; ///< what rules correct by themselves is corrected afterwards
};

/// Runs the corrections that the schema's findings offer: names first, then levels, order and values, until
/// none is left. The schema judges a text with a correction anew: where its finding remains or another
/// error appears, it is taken back and told among those left out, with the reason; likewise a value by which
/// all rules together find more errors than before. Totals and hash stay as they are. The last validation, of
/// the answered text, is the current one of OnValidate.
TCorrectionResult RepairStructure(TValidadorController& controller,
                                  const std::shared_ptr<const std::string>& xml,
                                  const std::vector<std::string>& enabledValidations,
                                  const TStructureRepair& what = {});

} // namespace conferix
