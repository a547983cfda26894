#include "app/desktop/dialogs/file_choice.h"

#include <QFileDialog>
#include <QFileInfo>

namespace conferix {

namespace {

constexpr QSize kSize(900, 560);

/// Where the user was last; the first time the folder in which the program was started.
QString& LastFolder() {
    static QString folder;
    return folder;
}

QStringList Choose(QFileDialog& dialog) {
    Widen(dialog);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    LastFolder() = dialog.directory().path();
    return dialog.selectedFiles();
}

QString First(const QStringList& names) {
    return names.isEmpty() ? QString() : names.front();
}

} // namespace

void Widen(QFileDialog& dialog) {
    dialog.resize(dialog.size().expandedTo(kSize));
}

QStringList AskForFiles(QWidget* owner, const QString& title, const QString& filter, bool several) {
    QFileDialog dialog(owner, title, LastFolder(), filter);
    dialog.setFileMode(several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    return Choose(dialog);
}

QString AskForFolder(QWidget* owner, const QString& title) {
    QFileDialog dialog(owner, title, LastFolder());
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    return First(Choose(dialog));
}

QString AskForSaveName(QWidget* owner, const QString& title, const QString& suggested, const QString& filter,
                       const QString& suffix) {
    const QFileInfo file(suggested);
    QFileDialog dialog(owner, title, file.path(), filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(suffix);
    dialog.selectFile(file.fileName());
    return First(Choose(dialog));
}

} // namespace conferix
