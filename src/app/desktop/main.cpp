#include "app/desktop/main_window.h"

#include "platform/platform.h"
#include "platform/program.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QPalette>
#include <QTranslator>

#include <cstdio>

int main(int argc, char* argv[]) {
    if (!conferix::HasDisplay()) {
        std::fputs("conferix: erro: não há tela em que abrir a janela; use o comando conferix.\n", stderr);
        return 3;
    }
    const QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Brenvo"));
    QApplication::setApplicationName(QStringLiteral("Conferix"));
    QApplication::setDesktopFileName(QStringLiteral("conferix"));
    // Some themes leave the hints in empty fields as dark as their ground.
    QPalette hints;
    QColor hint = QApplication::palette().color(QPalette::Text);
    hint.setAlphaF(0.6F);
    hints.setColor(QPalette::PlaceholderText, hint);
    QApplication::setPalette(hints);
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
