// The listings of a file as tables.
#pragma once

#include "app/tiss_file.h"
#include "listing/listing_table.h"

#include <QAbstractTableModel>
#include <QDialog>

#include <filesystem>
#include <memory>

class QComboBox;
class QLabel;
class QPushButton;
class QTableView;

namespace conferix {

/// The rows of a listing for views.
class TListingModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    using QAbstractTableModel::QAbstractTableModel;

    const TListingTable& Table() const { return table_; }
    void SetTable(TListingTable table);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    TListingTable table_;
};

/// Shows the listings of a file, made beside; copies rows, and saves the listing as the command writes it.
class TFListings : public QDialog {
    Q_OBJECT

  public:
    /// `name`: of the file, with its folder.
    TFListings(TTissFile file, QString name, QWidget* owner = nullptr);
    ~TFListings() override;

    const TListingModel& Model() const { return *model_; }
    /// Copies the rows that are selected, or all where none is.
    void Copy();
    /// Saves in the format of the name's extension; what goes wrong is told.
    bool Save(const std::filesystem::path& file);

  private:
    /// What is listed beside; used by one thread at a time.
    struct TSource;
    struct TMade {
        TListingTable Table;
        QString Failure;
    };

    void FillOrders();
    void List();
    void ShowMade(TMade made);
    void AskWhereToSave();
    TListingKind Kind() const;

    std::shared_ptr<TSource> source_;
    QString name_;
    TListingModel* model_;
    QComboBox* kind_;
    QComboBox* order_;
    QLabel* head_;
    QTableView* table_;
    QLabel* foot_;
    QPushButton* copy_;
    QPushButton* save_;
    bool listing_ = false; ///< something is being made
    bool again_ = false;   ///< something else is wanted meanwhile
};

} // namespace conferix
