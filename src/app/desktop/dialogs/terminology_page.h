#pragma once

#include "app/terminology_state.h"

#include <QWidget>

#include <filesystem>
#include <vector>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

namespace conferix {

class TCellTable;
class TWorkBar;

/// What is installed of the terminology; imports the regulator's publications and searches terms.
class TTerminologyPage : public QWidget {
    Q_OBJECT

  public:
    explicit TTerminologyPage(QWidget* parent = nullptr);

    TWorkBar& Work() { return *work_; }
    /// Reads anew what is installed.
    void Refresh();
    /// Imports files and folders beside the window; what came of it is shown in a table.
    void Import(const std::vector<std::filesystem::path>& sources);

  signals:
    /// The database in use is another now.
    void Changed();

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void ShowState(const TTerminologyState& state);
    void Restore();
    void Search();

    QLabel* base_;
    TCellTable* tables_;
    QPushButton* importFiles_;
    QPushButton* importFolder_;
    QPushButton* restore_;
    QLineEdit* words_;
    QComboBox* table_;
    TCellTable* terms_;
    QLabel* found_;
    TWorkBar* work_;
    QTimer* typing_;
};

} // namespace conferix
