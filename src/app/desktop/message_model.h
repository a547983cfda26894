// The list of messages as views show it.
#pragma once

#include "app/message_table.h"

#include <QAbstractItemModel>

#include <optional>

namespace conferix {

/// Rows of a TMessageTable: groups with their messages below them, or messages. Nothing is kept a row.
class TMessageModel : public QAbstractItemModel {
    Q_OBJECT

  public:
    explicit TMessageModel(QObject* parent = nullptr);

    const TMessageTable& Table() const { return table_; }
    void SetDigest(std::shared_ptr<const TMessageDigest> digest);
    void SetFilter(TMessageFilter filter);
    void SetGrouping(TMessageGrouping grouping);
    /// Column -1: as the messages came.
    void sort(int column, Qt::SortOrder order) override;

    /// The message at an index; the first one of a group.
    std::optional<std::size_t> MessageAt(const QModelIndex& index) const;
    /// All messages at an index.
    std::vector<std::size_t> MessagesAt(const QModelIndex& index) const;
    QModelIndex IndexOf(std::size_t message) const;
    /// A message as a line of text, as it is copied.
    QString LineOf(std::size_t message) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    /// Of a top row 0, of a message in a group the row plus one.
    static quintptr Id(std::size_t group) { return group; }
    QString TextOf(const QModelIndex& index) const;
    bool IsGroup(const QModelIndex& index) const;

    TMessageTable table_;
};

/// A message as people read it, without its place: the reason, and the item that it is about.
QString ReasonOf(const TXmlMessage& message);

} // namespace conferix
