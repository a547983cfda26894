#include "app/desktop/main_window.h"

namespace conferix {

TMainWindow::TMainWindow() {
    setWindowTitle(QStringLiteral("Conferix"));
}

} // namespace conferix
