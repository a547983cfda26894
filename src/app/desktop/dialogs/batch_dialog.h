#pragma once

#include "report/batch_validation.h"

#include <QAbstractTableModel>
#include <QDialog>

#include <filesystem>
#include <functional>
#include <memory>

class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QSortFilterProxyModel;
class QTableView;
class QTimer;

namespace conferix {

/// The files of a batch, a row each.
class TBatchModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum TColumn : std::uint8_t { kFile, kVerdict, kVersao, kTipo, kErrors, kWarnings, kNote, kColumns };
    /// Rows by what they hold, numbers as such; of the path, all of it.
    static constexpr int kSortRole = Qt::UserRole;

    explicit TBatchModel(const TBatchValidation& batch, QObject* parent = nullptr)
        : QAbstractTableModel(parent), batch_(batch) {}

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /// A row has another content now.
    void Renew(std::size_t row);

  private:
    const TBatchValidation& batch_;
};

/// Validates many files: between two of them the window answers. Not modal.
class TFBatchValidation : public QDialog {
    Q_OBJECT

  public:
    TFBatchValidation(std::unique_ptr<TBatchValidation> batch, QWidget* owner = nullptr);
    ~TFBatchValidation() override;

    const TBatchValidation& Batch() const { return *batch_; }
    bool Running() const;
    /// Goes on with the next file, or waits for Start again.
    void Start();
    void Stop();
    /// Saves the report on the files done so far, in the format of the name's extension; what goes wrong is
    /// told.
    bool SaveReport(const std::filesystem::path& file);

    /// Stops what runs, and ends.
    void reject() override;

  signals:
    /// The user wants to see a file.
    void OpenRequested(const QString& file);
    /// A file was validated.
    void Validated(std::size_t row);

  private:
    void ValidateNext();
    void ShowState();
    void OpenSelected();
    void AskWhereToSave();

    std::unique_ptr<TBatchValidation> batch_;
    TBatchModel* model_;
    QSortFilterProxyModel* sorted_;
    QTableView* table_;
    QComboBox* shown_;
    QLabel* counts_;
    QProgressBar* bar_;
    QPushButton* stop_;
    QPushButton* open_;
    QPushButton* save_;
    QTimer* next_;
};

} // namespace conferix
