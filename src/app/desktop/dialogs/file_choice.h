// Asking for files and folders.
#pragma once

#include <QString>
#include <QStringList>

class QFileDialog;
class QWidget;

namespace conferix {

/// Asks for files to be read, one or several; empty where the user cancels. `filter`: as of QFileDialog.
QStringList AskForFiles(QWidget* owner, const QString& title, const QString& filter, bool several);
/// Asks for a folder; empty where the user cancels.
QString AskForFolder(QWidget* owner, const QString& title);
/// Asks where to save; empty where the user cancels. `suggested`: a name, with its folder.
QString AskForSaveName(QWidget* owner, const QString& title, const QString& suggested, const QString& filter,
                       const QString& suffix);
/// Makes a dialog wide enough for long names.
void Widen(QFileDialog& dialog);

} // namespace conferix
