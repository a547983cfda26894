// The guides of a file on their forms: looked at, printed, saved.
#pragma once

#include "app/guide_pages.h"

#include <QAbstractListModel>
#include <QDialog>

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListView;
class QPrinter;
class QPushButton;
class QSortFilterProxyModel;
class QSpinBox;
class QSplitter;
class QToolButton;

namespace conferix {

class TPageView;

/// The guides of a file, each with a mark whether it is printed.
class TGuideChoiceModel : public QAbstractListModel {
    Q_OBJECT

  public:
    explicit TGuideChoiceModel(const TGuidePages& pages, QObject* parent = nullptr);

    const std::vector<bool>& Chosen() const { return chosen_; }
    /// Marks guides, by their place in the file, or takes the marks away.
    void Choose(const std::vector<std::size_t>& guides, bool chosen);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  signals:
    void ChoiceChanged();

  private:
    const TGuidePages& pages_;
    std::vector<bool> chosen_;
};

/// Shows the pages of chosen guides as they will be printed; prints them, and saves them as a PDF. A page is
/// laid out when it is shown.
class TFGuidePrint : public QDialog {
    Q_OBJECT

  public:
    /// `file`: name of the file that the guides are of.
    TFGuidePrint(std::unique_ptr<TGuidePages> pages, QString file, QWidget* owner = nullptr);
    ~TFGuidePrint() override;

    const TGuidePages& Pages() const { return *pages_; }
    /// Shows the page of a box, and points it out.
    void ShowBox(const TBoxPlace& place);
    /// Prints pages (0-based, both included); what goes wrong is told.
    void PrintOn(QPrinter& printer, std::size_t first, std::size_t last);
    /// Writes the same document as the command does; what goes wrong is told.
    bool SavePdf(const std::filesystem::path& file);

  private:
    QWidget* BuildChoice();
    QWidget* BuildPreview();
    void BuildKeys();
    void RestoreState();
    void SaveState() const;
    void ApplyChoice();
    /// Shows the first page of the guide on which the list stands, where it is printed.
    void ShowCurrentGuide();
    void ShowPage(std::size_t page);
    void GoBy(int pages);
    void ZoomBy(int steps);
    void ChooseShown(bool chosen);
    void AskAndPrint();
    void AskAndSavePdf();

    std::unique_ptr<TGuidePages> pages_;
    QString file_;
    std::size_t page_ = 0;
    std::size_t guide_ = 0; ///< of the page that was shown last
    std::optional<TBoxPlace> marked_;
    TGuideChoiceModel* guides_;
    QSortFilterProxyModel* found_;
    QLineEdit* filter_;
    QListView* list_;
    QPushButton* all_;
    QPushButton* none_;
    QComboBox* form_;
    QCheckBox* terms_;
    QCheckBox* errors_;
    QLabel* chosen_;
    TPageView* view_;
    QLabel* told_;
    QSpinBox* number_;
    QToolButton* previous_;
    QToolButton* next_;
    QComboBox* zoom_;
    QPushButton* print_;
    QPushButton* pdf_;
    QSplitter* parts_;
};

} // namespace conferix
