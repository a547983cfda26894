// Corrections and what they change, before they are made.
#pragma once

#include "app/correction_preview.h"

#include <QAbstractTableModel>
#include <QDialog>

#include <array>
#include <functional>
#include <optional>

class QCheckBox;
class QLabel;
class QPushButton;
class QTableView;
class QTimer;
class QTreeView;

namespace conferix {

/// The corrections of a preview, to be ticked or not, then those that are left out with the reason.
class TCorrectionModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum TColumn : std::uint8_t { kLine, kGuide, kElement, kBefore, kAfter, kColumns };

    using QAbstractTableModel::QAbstractTableModel;
    /// Takes another preview; what the user unticked stays in the list.
    void Show(const TCorrectionPreview& preview);
    const std::set<TCorrectionKey>& Refused() const { return refused_; }
    std::size_t Ticked() const { return rows_.size() - left_ - refused_.size(); }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  signals:
    void Changed();

  private:
    TCorrectionKey KeyAt(std::size_t row) const;
    bool IsChosen(std::size_t row) const { return row < rows_.size() - left_; }

    std::vector<TCorrectionRecord> rows_;
    std::size_t left_ = 0; ///< rows at the end that cannot be applied
    std::set<TCorrectionKey> refused_;
};

/// Two texts side by side where they differ.
class TDifferenceModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    using QAbstractTableModel::QAbstractTableModel;
    void Show(std::shared_ptr<const TCorrectionPreview> preview);
    /// Characters of the longest line of either text.
    int LongestLine() const;
    /// Characters before the first that differs in a row.
    int FirstDifference(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    std::shared_ptr<const TCorrectionPreview> preview_;
};

/// Shows what corrections would change; they are made only when the user says so.
class TFCorrectionPreview : public QDialog {
    Q_OBJECT

  public:
    using TPreview = std::shared_ptr<const TCorrectionPreview>;
    /// Makes the preview of a request; is called beside.
    using TMaker = std::function<TCorrectionPreview(const TCorrectionRequest&)>;

    TFCorrectionPreview(TMaker maker, TCorrectionRequest request, QWidget* owner);
    /// The preview that was agreed to.
    const TPreview& Preview() const { return preview_; }

  private:
    void Make();
    void Show(TPreview preview);
    QWidget* NewDifference();
    /// Scrolls both texts so that what differs in a row is seen.
    void ShowDifferenceOf(int row);

    TMaker maker_;
    TCorrectionRequest request_;
    TPreview preview_;
    unsigned makings_ = 0;
    TCorrectionModel* corrections_;
    TDifferenceModel* difference_;
    QTableView* list_;
    std::array<QTreeView*, 2> texts_; ///< before and after
    QCheckBox* structure_;
    QLabel* summary_;
    QPushButton* correct_;
    QTimer* wait_;
};

} // namespace conferix
