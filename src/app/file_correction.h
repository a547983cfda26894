// The corrections of a whole file that need no question.
#pragma once

#include "app/execute_solver.h"

namespace conferix {

/// Why a correction of structure is left out where only the others are asked for.
inline constexpr const char* kOfStructure = "da estrutura, que só --estrutura faz";
inline constexpr const char* kWithLoss = "com perda, que só --com-perdas faz";

/// What is to be corrected in a file.
struct TFileCorrections {
    bool Estrutura = false; ///< first, where it is asked for together with the others
    bool ComPerdas = false; ///< with the corrections of structure that lose something
    bool Todas = false;
};

/// Corrects the text of the file that the controller has open. Where corrections of structure or all of them
/// are asked for, the last validation, of the answered text, is the current one of OnValidate; else nothing
/// is done.
TCorrectionResult CorrectFile(TValidadorController& controller, const std::shared_ptr<const std::string>& xml,
                              const std::vector<std::string>& enabledValidations,
                              const TFileCorrections& what, const TSolverChoice& choose);

} // namespace conferix
