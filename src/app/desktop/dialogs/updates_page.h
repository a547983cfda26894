#pragma once

#include "app/updater.h"

#include <QWidget>

#include <vector>

class QLabel;
class QPushButton;

namespace conferix {

class TCellTable;
class TWorkBar;

/// Packages of schemas and terminology from the address in the settings.
class TUpdatesPage : public QWidget {
    Q_OBJECT

  public:
    explicit TUpdatesPage(QWidget* parent = nullptr);

    TWorkBar& Work() { return *work_; }
    /// Asks the server what it offers, beside the window.
    void Check();
    /// Fetches and installs all that is offered and not installed; one that fails does not keep the others
    /// from it.
    void Install();

  signals:
    /// Something was installed.
    void Changed();

  private:
    void Show(const std::vector<TPackage>& packages, const QString& failures);

    std::vector<TPackage> packages_;
    QLabel* address_;
    TCellTable* table_;
    QLabel* told_;
    QPushButton* check_;
    QPushButton* install_;
    QPushButton* proxy_;
    TWorkBar* work_;
};

} // namespace conferix
