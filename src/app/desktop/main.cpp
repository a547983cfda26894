#include "app/desktop/main_window.h"

#include <QApplication>

int main(int argc, char* argv[]) {
    const QApplication application(argc, argv);
    conferix::TMainWindow window;
    window.show();
    return QApplication::exec();
}
