#include "app/desktop/dialogs/rule_tree_model.h"

#include "app/desktop/dialogs/dialog_parts.h"

namespace conferix {

TRuleTreeModel::TRuleTreeModel(TConfiguracaoValidacoes& rules, QObject* parent)
    : QAbstractItemModel(parent), rules_(rules), nodes_(rules.Rules().size() + 1) {
    const std::vector<TListedRule>& list = rules_.Rules();
    std::vector<std::size_t> above; // the node of each depth that the next one may hang below
    for (std::size_t i = 0; i < list.size(); ++i) {
        above.resize(list[i].Depth);
        TNode& node = nodes_[i];
        node.Parent = above.empty() ? list.size() : above.back();
        std::vector<std::size_t>& siblings = nodes_[node.Parent].Children;
        node.Row = static_cast<int>(siblings.size());
        siblings.push_back(i);
        above.push_back(i);
    }
}

const TRuleTreeModel::TNode& TRuleTreeModel::NodeOf(const QModelIndex& index) const {
    return index.isValid() ? nodes_[index.internalId()] : nodes_.back();
}

QModelIndex TRuleTreeModel::IndexOf(std::size_t node) const {
    return createIndex(nodes_[node].Row, 0, node);
}

QModelIndex TRuleTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent))
        return {};
    return IndexOf(NodeOf(parent).Children[static_cast<std::size_t>(row)]);
}

QModelIndex TRuleTreeModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || NodeOf(child).Parent == rules_.Rules().size())
        return {};
    return IndexOf(NodeOf(child).Parent);
}

int TRuleTreeModel::rowCount(const QModelIndex& parent) const {
    return static_cast<int>(NodeOf(parent).Children.size());
}

int TRuleTreeModel::columnCount(const QModelIndex& /*parent*/) const {
    return 1;
}

QVariant TRuleTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const std::size_t node = index.internalId();
    const TValidationIdentity& rule = *rules_.Rules()[node].Rule;
    switch (role) {
    case Qt::DisplayRole:
        return ToQt(rule.Description);
    case Qt::CheckStateRole:
        return rules_.Checked(node) ? Qt::Checked : Qt::Unchecked;
    case Qt::ToolTipRole:
        return ToQt(rule.Name + (rule.Required ? " (obrigatória)" : ""));
    default:
        return {};
    }
}

bool TRuleTreeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::CheckStateRole)
        return false;
    try {
        for (const std::size_t node :
             rules_.SetChecked(index.internalId(), value.toInt() == static_cast<int>(Qt::Checked)))
            emit dataChanged(IndexOf(node), IndexOf(node), {Qt::CheckStateRole});
    } catch (const ERuleNotSwitched& error) {
        emit Refused(ToQt(error.what()));
        return false;
    }
    return true;
}

Qt::ItemFlags TRuleTreeModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable
                           : Qt::NoItemFlags;
}

} // namespace conferix
