#include "app/desktop/dialogs/configuracao_validacoes_dialog.h"

#include "app/application_log.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/rule_tree_model.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace conferix {

namespace {

constexpr QSize kSize(620, 560);

} // namespace

TFConfiguracaoValidacoes::TFConfiguracaoValidacoes(TConfig config, std::filesystem::path file,
                                                   std::string_view name, QWidget* owner)
    : QDialog(owner), rules_(std::move(config), &LogRuleSwitched), file_(std::move(file)),
      model_(new TRuleTreeModel(rules_, this)), tree_(new QTreeView(this)) {
    setWindowTitle(ToQt(TConfiguracaoValidacoes::kTitle));
    auto* const instruction = new QLabel(ToQt(TConfiguracaoValidacoes::kInstruction), this);
    instruction->setWordWrap(true);
    tree_->setModel(model_);
    tree_->setHeaderHidden(true);
    tree_->setUniformRowHeights(true);
    tree_->setAccessibleName(QStringLiteral("Validações"));
    tree_->expandAll();
    instruction->setBuddy(tree_);
    const TEndButtons buttons = AddEndButtons(*this, QStringLiteral("Salvar"));
    connect(buttons.Accept, &QPushButton::clicked, this, &QDialog::accept);
    // Told after the click that asked for it has ended.
    connect(
        model_, &TRuleTreeModel::Refused, this,
        [this](const QString& reason) { ShowNotice(this, windowTitle(), FromQt(reason)); },
        Qt::QueuedConnection);

    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(instruction);
    lines->addWidget(tree_);
    lines->addLayout(buttons.Line);
    resize(kSize);
    const QModelIndex first = model_->IndexOf(rules_.Find(name).value_or(0));
    tree_->setCurrentIndex(first);
    tree_->setFocus();
}

bool TFConfiguracaoValidacoes::Abrir(QWidget* owner, std::string_view name,
                                     const std::filesystem::path& file) {
    try {
        TFConfiguracaoValidacoes dialog(TConfig::Load(file), file, name, owner);
        return dialog.exec() == Accepted;
    } catch (const EInvalidConfig& error) {
        ShowFailure(owner, ToQt(TConfiguracaoValidacoes::kTitle), error.what());
    }
    return false;
}

void TFConfiguracaoValidacoes::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    // Before, the tree has no height in which a row could be the middle one.
    tree_->scrollTo(tree_->currentIndex(), QAbstractItemView::PositionAtCenter);
}

void TFConfiguracaoValidacoes::accept() {
    try {
        rules_.SaveTo(file_);
    } catch (const std::exception& error) { // of the file, of its folder, or of what stands in it now
        ShowFailure(this, windowTitle(), error.what());
        return;
    }
    QDialog::accept();
}

void TFConfiguracaoValidacoes::reject() {
    if (!rules_.Changed() ||
        AskYesNo(this, ToQt(TConfiguracaoValidacoes::kQuestionTitle), TConfiguracaoValidacoes::kQuestion))
        QDialog::reject();
}

} // namespace conferix
