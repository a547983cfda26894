#pragma once

#include "app/schema_import.h"

#include <QWidget>

#include <filesystem>
#include <vector>

class QLabel;
class QPushButton;

namespace conferix {

class TCellTable;
class TWorkBar;

/// Which schemas are installed, and from where; imports published ones.
class TSchemasPage : public QWidget {
    Q_OBJECT

  public:
    explicit TSchemasPage(QWidget* parent = nullptr);

    TWorkBar& Work() { return *work_; }
    /// Lists and compiles anew what is installed.
    void Refresh();
    /// Imports a folder or a ZIP file beside the window; what cannot be used of it is told.
    void Import(const std::filesystem::path& source);

  signals:
    /// Other schemas are in use now.
    void Changed();

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void ShowSchemas();
    void ShowButtons();
    void GoBack();
    void TellImport(const TSchemaImport& import);

    std::vector<TMainSchema> schemas_;
    QLabel* folder_;
    TCellTable* table_;
    QPushButton* importFile_;
    QPushButton* importFolder_;
    QPushButton* remove_;
    TWorkBar* work_;
};

} // namespace conferix
