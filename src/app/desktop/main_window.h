#pragma once

#include <QMainWindow>

namespace conferix {

/// The window of conferix-desktop.
class TMainWindow : public QMainWindow {
    Q_OBJECT

  public:
    TMainWindow();
};

} // namespace conferix
