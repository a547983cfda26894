#include "app/desktop/questions.h"

#include <QMessageBox>
#include <QPushButton>

namespace conferix {

namespace {

void MakePlain(QMessageBox& box) {
    box.setTextFormat(Qt::PlainText);
    box.setObjectName(QStringLiteral("pergunta"));
}

} // namespace

bool AskYesNo(QWidget* parent, const QString& title, const QString& question) {
    QMessageBox box(QMessageBox::Question, title, question, QMessageBox::NoButton, parent);
    MakePlain(box);
    const auto* yes = box.addButton(QStringLiteral("&Sim"), QMessageBox::YesRole);
    auto* no = box.addButton(QStringLiteral("&Não"), QMessageBox::NoRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}

int Ask(QWidget* parent, const QString& title, const QString& question, const QStringList& answers) {
    QMessageBox box(QMessageBox::Question, title, question, QMessageBox::NoButton, parent);
    MakePlain(box);
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

void ShowError(QWidget* parent, const QString& text) {
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Conferix"), text, QMessageBox::NoButton, parent);
    MakePlain(box);
    box.addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    box.exec();
}

} // namespace conferix
