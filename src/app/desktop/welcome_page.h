// What an empty window shows.
#pragma once

#include <QWidget>

namespace conferix {

/// Says in three lines what to do, with an example to open.
class TWelcomePage : public QWidget {
    Q_OBJECT

  public:
    explicit TWelcomePage(QWidget* parent = nullptr);

  signals:
    void OpenWanted();
    void ExampleWanted();
};

} // namespace conferix
