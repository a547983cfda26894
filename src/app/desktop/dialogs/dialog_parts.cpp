#include "app/desktop/dialogs/dialog_parts.h"

#include <QHBoxLayout>
#include <QMessageBox>
#include <QPushButton>

namespace conferix {

namespace {

constexpr QSize kButtonSize(105, 28);

void Show(QWidget* owner, QMessageBox::Icon icon, const QString& title, std::string_view text) {
    QMessageBox box(icon, title, ToQt(text), QMessageBox::NoButton, owner);
    box.setTextFormat(Qt::PlainText);
    box.addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    box.exec();
}

} // namespace

void ShowNotice(QWidget* owner, const QString& title, std::string_view text) {
    Show(owner, QMessageBox::Information, title, text);
}

void ShowFailure(QWidget* owner, const QString& title, std::string_view text) {
    Show(owner, QMessageBox::Warning, title, text);
}

bool AskYesNo(QWidget* owner, const QString& title, std::string_view text) {
    QMessageBox box(QMessageBox::Question, title, ToQt(text), QMessageBox::NoButton, owner);
    box.setTextFormat(Qt::PlainText);
    const QPushButton* const yes = box.addButton(QStringLiteral("&Sim"), QMessageBox::YesRole);
    QPushButton* const no = box.addButton(QStringLiteral("&Não"), QMessageBox::NoRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}

int Ask(QWidget* owner, const QString& title, const QString& question, const QStringList& answers) {
    QMessageBox box(QMessageBox::Question, title, question, QMessageBox::NoButton, owner);
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

TEndButtons AddEndButtons(QDialog& dialog, const QString& accept) {
    TEndButtons buttons{new QHBoxLayout, new QPushButton(accept, &dialog),
                        new QPushButton(QStringLiteral("Cancelar"), &dialog)};
    buttons.Line->addStretch();
    for (QPushButton* button : {buttons.Accept, buttons.Cancel}) {
        button->setMinimumSize(kButtonSize);
        buttons.Line->addWidget(button);
    }
    buttons.Accept->setDefault(true);
    QObject::connect(buttons.Cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    return buttons;
}

void KeepSystemMenuOnly(QDialog& dialog) {
    dialog.setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
}

QValidator::State TKeyFilter::validate(QString& input, int& position) const {
    QString accepted;
    int place = position;
    for (int i = 0; i < input.size(); ++i) {
        if (accepts_(input[i]))
            accepted += input[i];
        else if (i < position)
            --place;
    }
    input = accepted;
    position = place;
    return Acceptable;
}

} // namespace conferix
