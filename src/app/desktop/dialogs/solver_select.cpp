#include "app/desktop/dialogs/solver_select.h"

#include "app/desktop/dialogs/choice_group.h"
#include "app/desktop/dialogs/dialog_parts.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace conferix {

namespace {

// Together with the buttons and the gap a client area of 482 by 217.
constexpr int kMargin = 8;
constexpr int kGap = 6;
constexpr QSize kGroupSize(466, 167);

} // namespace

TFSolverSelect::TFSolverSelect(const std::vector<std::shared_ptr<ISolver>>& solvers, QWidget* owner)
    : QDialog(owner), solvers_(solvers), choices_(new TChoiceGroup(QStringLiteral("Escolha a ação"), this)) {
    KeepSystemMenuOnly(*this);
    setWindowTitle(QStringLiteral("Confirmação"));
    for (const std::shared_ptr<ISolver>& solver : solvers_)
        choices_->Add(ToQt(solver->Description()));
    choices_->setFixedWidth(kGroupSize.width());
    choices_->setMinimumHeight(kGroupSize.height());
    const TEndButtons buttons = AddEndButtons(*this);
    connect(buttons.Accept, &QPushButton::clicked, this, &QDialog::accept);

    auto* const lines = new QVBoxLayout(this);
    lines->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    lines->setSpacing(kGap);
    lines->setSizeConstraint(QLayout::SetFixedSize); // larger only where a caption needs it
    lines->addWidget(choices_);
    lines->addLayout(buttons.Line);
    if (!choices_->Choices().empty())
        choices_->Choices().front()->setFocus();
}

std::size_t TFSolverSelect::SelectedIndex() const {
    return static_cast<std::size_t>(choices_->Chosen());
}

TSolverChoice TFSolverSelect::ChoiceBy(QWidget* owner) {
    return [owner](const std::vector<std::shared_ptr<ISolver>>& solvers) -> std::optional<std::size_t> {
        TFSolverSelect dialog(solvers, owner);
        if (dialog.exec() != Accepted)
            return std::nullopt;
        return dialog.SelectedIndex();
    };
}

} // namespace conferix
