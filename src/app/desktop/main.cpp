#include "app/desktop/main_window.h"

#include "platform/platform.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include <cstdio>

namespace {

/// True where windows can be shown; without a display Qt would end the program.
bool HasDisplay() {
#if defined(_WIN32) || defined(__APPLE__)
    return true;
#else
    using conferix::GetEnvironment;
    return !GetEnvironment("QT_QPA_PLATFORM").empty() || !GetEnvironment("DISPLAY").empty() ||
           !GetEnvironment("WAYLAND_DISPLAY").empty();
#endif
}

} // namespace

int main(int argc, char* argv[]) {
    if (!HasDisplay()) {
        std::fputs("conferix: erro: não há tela em que abrir a janela; use o comando conferix.\n", stderr);
        return 3;
    }
    const QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Brenvo"));
    QApplication::setApplicationName(QStringLiteral("Conferix"));
    QApplication::setDesktopFileName(QStringLiteral("conferix"));
    QTranslator qt;
    QTranslator editor;
    if (qt.load(QStringLiteral("qtbase_pt_BR"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qt);
    if (editor.load(QStringLiteral("qscintilla_pt_br"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&editor);
    conferix::RemoveTemporaryFilesAtSignals();
    conferix::TMainWindow window;
    window.show();
    window.OpenFiles(QApplication::arguments().mid(1));
    return QApplication::exec();
}
