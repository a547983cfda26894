#include "app/desktop/dark_style.h"
#include "app/desktop/main_window.h"

#include "platform/platform.h"
#include "platform/program.h"

#include <QApplication>
#include <QHash>
#include <QLibraryInfo>
#include <QPalette>
#include <QTranslator>

#include <cstdio>

namespace {

/// Words of file dialogs that Qt's own translation leaves in English.
class TFileDialogWords : public QTranslator {
  public:
    QString translate(const char* context, const char* source, const char* /*note*/,
                      int /*count*/) const override {
        static const QHash<QLatin1String, QString> kWords = {
            {QLatin1String("Folder"), QStringLiteral("Pasta")},
            {QLatin1String("File Folder"), QStringLiteral("Pasta")},
            {QLatin1String("Drive"), QStringLiteral("Unidade")},
            {QLatin1String("File"), QStringLiteral("Arquivo")},
            {QLatin1String("%1 File"), QStringLiteral("Arquivo %1")},
            {QLatin1String("Shortcut"), QStringLiteral("Atalho")}};
        const QLatin1String of(context);
        return of == QLatin1String("QAbstractFileIconProvider") || of == QLatin1String("QFileDialog")
                   ? kWords.value(QLatin1String(source))
                   : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

int main(int argc, char* argv[]) {
    if (!conferix::HasDisplay()) {
        std::fputs("conferix: erro: não há tela em que abrir a janela; use o comando conferix.\n", stderr);
        return 3;
    }
    const QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Brenvo"));
    QApplication::setApplicationName(QStringLiteral("Conferix"));
    QApplication::setDesktopFileName(QStringLiteral("conferix"));
    conferix::TDarkStyle::Install();
    // Some themes leave the hints in empty fields as dark as their ground.
    QPalette hints;
    QColor hint = QApplication::palette().color(QPalette::Text);
    hint.setAlphaF(0.6F);
    hints.setColor(QPalette::PlaceholderText, hint);
    QApplication::setPalette(hints);
    TFileDialogWords words; // first: what Qt translates itself goes before
    QApplication::installTranslator(&words);
    QTranslator qt;
    QTranslator editor;
    if (qt.load(QStringLiteral("qtbase_pt_BR"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qt);
    if (editor.load(QStringLiteral("qscintilla_pt_br"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&editor);
    conferix::RemoveTemporaryFilesAtSignals();
    try {
        conferix::TMainWindow window;
        window.show();
        window.OpenFiles(QApplication::arguments().mid(1));
        return QApplication::exec();
    } catch (const conferix::EDataFolderUnknown& error) {
        std::fprintf(stderr, "conferix: erro: %s\n", error.what());
        return 3;
    }
}
