#pragma once

#include "app/configuracao_validacoes.h"

#include <QAbstractItemModel>

#include <vector>

namespace conferix {

/// The rules as a tree with check boxes.
class TRuleTreeModel : public QAbstractItemModel {
    Q_OBJECT

  public:
    /// `rules` has to outlive the model.
    explicit TRuleTreeModel(TConfiguracaoValidacoes& rules, QObject* parent = nullptr);

    QModelIndex IndexOf(std::size_t node) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  signals:
    /// A rule was to be switched off that cannot be; the text is for the user.
    void Refused(const QString& reason);

  private:
    struct TNode {
        std::size_t Parent; ///< index, or the number of rules for a root
        int Row;            ///< among the children of its parent
        std::vector<std::size_t> Children;
    };

    const TNode& NodeOf(const QModelIndex& index) const;

    TConfiguracaoValidacoes& rules_;
    std::vector<TNode> nodes_; ///< as the rules, and one more that holds the roots
};

} // namespace conferix
