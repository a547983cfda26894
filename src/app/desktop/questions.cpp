#include "app/desktop/questions.h"

#include "app/desktop/dialogs/dialog_parts.h"

#include <QMessageBox>
#include <QPushButton>

namespace conferix {

int Ask(QWidget* parent, const QString& title, const QString& question, const QStringList& answers) {
    QMessageBox box(QMessageBox::Question, title, question, QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    QList<QAbstractButton*> buttons;
    for (const QString& answer : answers)
        buttons << box.addButton(answer,
                                 buttons.isEmpty() ? QMessageBox::AcceptRole : QMessageBox::DestructiveRole);
    auto* cancel = box.addButton(QStringLiteral("Cancelar"), QMessageBox::RejectRole);
    box.setEscapeButton(cancel);
    box.setDefaultButton(qobject_cast<QPushButton*>(buttons.front()));
    box.exec();
    return static_cast<int>(buttons.indexOf(box.clickedButton()));
}

void ShowError(QWidget* owner, const QString& text) {
    ShowFailure(owner, QStringLiteral("Conferix"), FromQt(text));
}

} // namespace conferix
