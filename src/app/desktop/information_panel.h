// What a file is and holds.
#pragma once

#include "model/informations.h"

#include <QTreeWidget>

namespace conferix {

/// The groups of information of a file, a row an entry.
class TInformationPanel : public QTreeWidget {
    Q_OBJECT

  public:
    explicit TInformationPanel(QWidget* parent = nullptr);
    void ShowInformations(const TInformations& groups);
};

} // namespace conferix
