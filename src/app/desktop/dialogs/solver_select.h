#pragma once

#include "app/execute_solver.h"
#include "validation/solver.h"

#include <QDialog>

#include <cstddef>
#include <memory>
#include <vector>

namespace conferix {

class TChoiceGroup;

/// Asks which of the corrections of a message is to be applied.
class TFSolverSelect : public QDialog {
    Q_OBJECT

  public:
    explicit TFSolverSelect(const std::vector<std::shared_ptr<ISolver>>& solvers, QWidget* owner = nullptr);

    /// The chosen one; the first until another is.
    const std::shared_ptr<ISolver>& SelectedSolver() const { return solvers_[SelectedIndex()]; }
    std::size_t SelectedIndex() const;

    /// The choice of ExecuteSolver by this dialog.
    static TSolverChoice ChoiceBy(QWidget* owner);

  private:
    std::vector<std::shared_ptr<ISolver>> solvers_;
    TChoiceGroup* choices_;
};

} // namespace conferix
