// Questions and errors in windows of their own.
#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace conferix {

/// A question with "Sim" and "Não"; true for "Sim".
bool AskYesNo(QWidget* parent, const QString& title, const QString& question);
/// A question with answers of its own and "Cancelar"; answers the index of the chosen one, or -1. The first
/// is what Enter chooses.
int Ask(QWidget* parent, const QString& title, const QString& question, const QStringList& answers);
/// Something that could not be done, and why.
void ShowError(QWidget* parent, const QString& text);

} // namespace conferix
