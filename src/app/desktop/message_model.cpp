#include "app/desktop/message_model.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/theme.h"
#include "app/missing_data.h"
#include "validation/identity.h"
#include "validation/solver.h"

#include <QLocale>

namespace conferix {

namespace {

TMessageColumn ColumnOf(const QModelIndex& index) {
    return static_cast<TMessageColumn>(index.column());
}

QString OneLine(QString text) {
    text.replace(QLatin1String("\r\n"), QLatin1String(" "));
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return text;
}

QString RuleOf(const TXmlMessage& message) {
    return message.Rule() != nullptr ? ToQt(message.Rule()->Description) : QString();
}

QString NumberOf(std::int32_t line) {
    return line > 0 ? QLocale().toString(line) : QString();
}

} // namespace

QString ReasonOf(const TXmlMessage& message) {
    const QString reason = ToQt(TextForWindow(message.Reason()));
    return message.Item().empty() ? reason : ToQt(message.Item()) + QStringLiteral(": ") + reason;
}

TMessageModel::TMessageModel(QObject* parent) : QAbstractItemModel(parent) {}

void TMessageModel::SetDigest(std::shared_ptr<const TMessageDigest> digest) {
    beginResetModel();
    table_.SetDigest(std::move(digest));
    endResetModel();
}

void TMessageModel::SetFilter(TMessageFilter filter) {
    beginResetModel();
    table_.SetFilter(std::move(filter));
    endResetModel();
}

void TMessageModel::SetGrouping(TMessageGrouping grouping) {
    beginResetModel();
    table_.SetGrouping(grouping);
    endResetModel();
}

void TMessageModel::sort(int column, Qt::SortOrder order) {
    beginResetModel();
    table_.Sort(column < 0 ? std::nullopt : std::optional(static_cast<TMessageColumn>(column)),
                order == Qt::DescendingOrder);
    endResetModel();
}

bool TMessageModel::IsGroup(const QModelIndex& index) const {
    return index.internalId() == 0 && table_.MemberCount(static_cast<std::size_t>(index.row())) > 1;
}

std::optional<std::size_t> TMessageModel::MessageAt(const QModelIndex& index) const {
    if (!index.isValid())
        return std::nullopt;
    const auto row = static_cast<std::size_t>(index.row());
    return index.internalId() == 0 ? table_.Member(row, 0) : table_.Member(index.internalId() - 1, row);
}

std::vector<std::size_t> TMessageModel::MessagesAt(const QModelIndex& index) const {
    std::vector<std::size_t> messages;
    if (!index.isValid())
        return messages;
    if (!IsGroup(index))
        return {*MessageAt(index)};
    const auto row = static_cast<std::size_t>(index.row());
    for (std::size_t member = 0; member < table_.MemberCount(row); ++member)
        messages.push_back(table_.Member(row, member));
    return messages;
}

QModelIndex TMessageModel::IndexOf(std::size_t message) const {
    const auto place = table_.Find(message);
    if (!place)
        return {};
    const QModelIndex top = index(static_cast<int>(place->Row), 0);
    return IsGroup(top) ? index(static_cast<int>(place->Member), 0, top) : top;
}

QModelIndex TMessageModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column < 0 || row >= rowCount(parent) || column >= columnCount())
        return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : 0);
}

QModelIndex TMessageModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == 0)
        return {};
    return createIndex(static_cast<int>(child.internalId() - 1), 0, quintptr{0});
}

int TMessageModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid())
        return static_cast<int>(table_.RowCount());
    return parent.column() == 0 && IsGroup(parent)
               ? static_cast<int>(table_.MemberCount(static_cast<std::size_t>(parent.row())))
               : 0;
}

int TMessageModel::columnCount(const QModelIndex& /*parent*/) const {
    return static_cast<int>(kMessageColumns);
}

QString TMessageModel::TextOf(const QModelIndex& index) const {
    const TXmlMessage& message = *table_.Messages()[*MessageAt(index)];
    const bool group = IsGroup(index);
    switch (ColumnOf(index)) {
    case TMessageColumn::Severity:
        return SeverityName(message.MsgType());
    case TMessageColumn::Line:
        return NumberOf(message.Line());
    case TMessageColumn::Guide:
        return group ? QString() : ToQt(message.NumeroGuia());
    case TMessageColumn::Field:
        return ToQt(message.Campo());
    case TMessageColumn::Rule:
        return RuleOf(message);
    case TMessageColumn::Text:
        return OneLine(group ? ToQt(TextForWindow(table_.GroupText(static_cast<std::size_t>(index.row()))))
                             : ReasonOf(message));
    case TMessageColumn::Corrections:
        return message.Solvers().empty() ? QString() : QLocale().toString(message.Solvers().size());
    }
    return {};
}

QVariant TMessageModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const TXmlMessage& message = *table_.Messages()[*MessageAt(index)];
    switch (role) {
    case Qt::DisplayRole:
        return TextOf(index);
    case Qt::ToolTipRole:
        return ColumnOf(index) == TMessageColumn::Text || ColumnOf(index) == TMessageColumn::Rule
                   ? TextOf(index)
                   : QVariant();
    case Qt::DecorationRole:
        return ColumnOf(index) == TMessageColumn::Severity ? SeverityIcon(message.MsgType()) : QVariant();
    case Qt::TextAlignmentRole:
        return ColumnOf(index) == TMessageColumn::Line || ColumnOf(index) == TMessageColumn::Corrections
                   ? QVariant(static_cast<int>(Qt::AlignRight | Qt::AlignVCenter))
                   : QVariant();
    case Qt::AccessibleTextRole:
        return ColumnOf(index) == TMessageColumn::Corrections && !message.Solvers().empty()
                   ? QStringLiteral("%1 %2")
                         .arg(message.Solvers().size())
                         .arg(message.Solvers().size() == 1 ? QStringLiteral("correção")
                                                            : QStringLiteral("correções"))
                   : TextOf(index);
    default:
        return {};
    }
}

QVariant TMessageModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const std::array kTitles = {QStringLiteral("Gravidade"), QStringLiteral("Linha"),
                                       QStringLiteral("Guia"),      QStringLiteral("Campo"),
                                       QStringLiteral("Regra"),     QStringLiteral("Mensagem"),
                                       QStringLiteral("Correções")};
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal || section < 0 ||
        static_cast<std::size_t>(section) >= kTitles.size())
        return {};
    return kTitles[static_cast<std::size_t>(section)];
}

QString TMessageModel::LineOf(std::size_t message) const {
    const TXmlMessage& found = *table_.Messages()[message];
    QStringList cells = {SeverityName(found.MsgType()), NumberOf(found.Line()), ToQt(found.NumeroGuia()),
                         ToQt(found.Campo()),           RuleOf(found),          OneLine(ReasonOf(found))};
    return cells.join(QLatin1Char('\t'));
}

} // namespace conferix
