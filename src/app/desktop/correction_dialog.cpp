#include "app/desktop/correction_dialog.h"

#include "app/desktop/background.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/theme.h"
#include "app/line_layout.h"
#include "app/missing_data.h"
#include "platform/utf8.h"

#include <QApplication>
#include <QCheckBox>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QTableView>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace conferix {

namespace {

constexpr int kTickPause = 300;
/// Bytes of a line that are shown.
constexpr std::size_t kShownOfLine = kLongLine;
/// Characters before what differs in a line that are shown with it.
constexpr int kShownBefore = 12;

enum TDifferenceColumn : std::uint8_t {
    kBeforeNumber,
    kBeforeText,
    kAfterNumber,
    kAfterText,
    kDifferenceColumns
};

QString NumberOf(std::size_t number) {
    return number != 0 ? QLocale().toString(number) : QString();
}

QTableView* NewTable(QAbstractItemModel* model, const QString& name) {
    auto* table = new QTableView;
    table->setModel(model);
    table->setAccessibleName(name);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
    return table;
}

} // namespace

void TCorrectionModel::Show(const TCorrectionPreview& preview) {
    beginResetModel();
    std::vector<TCorrectionRecord> refused;
    for (std::size_t row = 0; row < rows_.size() - left_; ++row)
        if (refused_.contains(KeyAt(row)))
            refused.push_back(rows_[row]);
    rows_ = preview.Applied;
    rows_.insert(rows_.end(), refused.begin(), refused.end());
    std::stable_sort(rows_.begin(), rows_.end(), [](const auto& left, const auto& right) {
        return left.Message->Line() < right.Message->Line();
    });
    left_ = preview.LeftOut.size();
    rows_.insert(rows_.end(), preview.LeftOut.begin(), preview.LeftOut.end());
    endResetModel();
}

TCorrectionKey TCorrectionModel::KeyAt(std::size_t row) const {
    return KeyOf(*rows_[row].Message, rows_[row].Solver);
}

int TCorrectionModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TCorrectionModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

QVariant TCorrectionModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    const TCorrectionRecord& record = rows_[row];
    if (role == Qt::CheckStateRole && index.column() == kLine && IsChosen(row))
        return refused_.contains(KeyAt(row)) ? Qt::Unchecked : Qt::Checked;
    if (role == Qt::ToolTipRole)
        return ToQt(record.Message->Msg());
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case kLine:
        return NumberOf(static_cast<std::size_t>(record.Message->Line()));
    case kGuide:
        return ToQt(record.Message->NumeroGuia());
    case kElement:
        return ToQt(record.Element);
    case kBefore:
        return record.Element.empty() ? QString() : ToQt(record.Before);
    default:
        if (!IsChosen(row))
            return QStringLiteral("não corrigido: ") + ToQt(TextForWindow(record.WhyLeft()));
        return record.Element.empty() ? ToQt(record.Description).trimmed() : ToQt(record.After);
    }
}

bool TCorrectionModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    const auto row = static_cast<std::size_t>(index.row());
    if (!index.isValid() || role != Qt::CheckStateRole || !IsChosen(row))
        return false;
    if (value.toInt() == Qt::Checked)
        refused_.erase(KeyAt(row));
    else
        refused_.insert(KeyAt(row));
    emit dataChanged(index, index, {role});
    emit Changed();
    return true;
}

Qt::ItemFlags TCorrectionModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.isValid() && index.column() == kLine && IsChosen(static_cast<std::size_t>(index.row())))
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

QVariant TCorrectionModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const std::array<QString, kColumns> kTitles = {QStringLiteral("Linha"), QStringLiteral("Guia"),
                                                          QStringLiteral("Elemento"), QStringLiteral("De"),
                                                          QStringLiteral("Para")};
    return role == Qt::DisplayRole && orientation == Qt::Horizontal
               ? kTitles.at(static_cast<std::size_t>(section))
               : QVariant();
}

void TDifferenceModel::Show(std::shared_ptr<const TCorrectionPreview> preview) {
    beginResetModel();
    preview_ = std::move(preview);
    endResetModel();
}

int TDifferenceModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || preview_ == nullptr ? 0 : static_cast<int>(preview_->Lines.size());
}

int TDifferenceModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kDifferenceColumns;
}

int TDifferenceModel::LongestLine() const {
    std::size_t longest = 0;
    for (const TLinePair& pair : preview_->Lines)
        longest = std::max({longest, pair.Before.size(), pair.After.size()});
    return static_cast<int>(std::min(longest, kShownOfLine));
}

int TDifferenceModel::FirstDifference(int row) const {
    const TLinePair& pair = preview_->Lines[static_cast<std::size_t>(row)];
    const auto differs = std::ranges::mismatch(pair.Before, pair.After).in1;
    const std::string_view same(pair.Before.data(), static_cast<std::size_t>(differs - pair.Before.begin()));
    return pair.Changed ? static_cast<int>(CountCharacters(same)) : 0;
}

QVariant TDifferenceModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const TLinePair& pair = preview_->Lines[static_cast<std::size_t>(index.row())];
    const bool before = index.column() <= kBeforeText;
    const std::size_t number = before ? pair.BeforeNumber : pair.AfterNumber;
    const QString mark = !pair.Changed || number == 0 ? QString()
                         : before                     ? QStringLiteral("\u2212 ")
                                                      : QStringLiteral("+ ");
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == kBeforeNumber || index.column() == kAfterNumber)
            return pair.BeforeNumber == 0 && pair.AfterNumber == 0 ? QStringLiteral("...")
                                                                   : mark + NumberOf(number);
        return ToQt((before ? pair.Before : pair.After).substr(0, kShownOfLine));
    case Qt::BackgroundRole:
        if (mark.isEmpty())
            return {};
        return before ? ColorsOf(QApplication::palette()).Removed : ColorsOf(QApplication::palette()).Added;
    case Qt::FontRole:
        return QFontDatabase::systemFont(QFontDatabase::FixedFont);
    case Qt::TextAlignmentRole:
        return static_cast<int>(Qt::AlignVCenter |
                                (index.column() == kBeforeNumber || index.column() == kAfterNumber
                                     ? Qt::AlignRight
                                     : Qt::AlignLeft));
    default:
        return {};
    }
}

QVariant TDifferenceModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const std::array<QString, kDifferenceColumns> kTitles = {
        QStringLiteral("Linha"), QStringLiteral("Antes"), QStringLiteral("Linha"), QStringLiteral("Depois")};
    return role == Qt::DisplayRole && orientation == Qt::Horizontal
               ? kTitles.at(static_cast<std::size_t>(section))
               : QVariant();
}

TFCorrectionPreview::TFCorrectionPreview(TMaker maker, TCorrectionRequest request, QWidget* owner)
    : QDialog(owner), maker_(std::move(maker)), request_(std::move(request)),
      corrections_(new TCorrectionModel(this)), difference_(new TDifferenceModel(this)),
      list_(NewTable(corrections_, QStringLiteral("Correções"))),
      structure_(new QCheckBox(QStringLiteral(
          "Consertar também a &estrutura (nomes, ordem e formato, só onde há uma única leitura)"))),
      summary_(new QLabel), wait_(new QTimer(this)) {
    setWindowTitle(QStringLiteral("Corrigir tudo"));
    resize(1000, 620);
    list_->horizontalHeader()->setStretchLastSection(true);
    list_->setColumnWidth(TCorrectionModel::kElement, 220);
    list_->setColumnWidth(TCorrectionModel::kBefore, 220);
    structure_->setChecked(request_.Structure);
    summary_->setWordWrap(true);
    auto* rows = new QVBoxLayout(this);
    rows->addWidget(summary_);
    auto* parts = new QSplitter(Qt::Vertical);
    parts->addWidget(list_);
    parts->addWidget(NewDifference());
    parts->setChildrenCollapsible(false);
    rows->addWidget(parts, 1);
    rows->addWidget(structure_);
    const TEndButtons buttons = AddEndButtons(*this, QStringLiteral("&Corrigir"));
    correct_ = buttons.Accept;
    connect(correct_, &QPushButton::clicked, this, &QDialog::accept);
    rows->addLayout(buttons.Line);
    wait_->setSingleShot(true);
    wait_->setInterval(kTickPause);
    connect(wait_, &QTimer::timeout, this, &TFCorrectionPreview::Make);
    connect(corrections_, &TCorrectionModel::Changed, this, [this] {
        request_.Refused = corrections_->Refused();
        correct_->setEnabled(false);
        wait_->start();
    });
    connect(structure_, &QCheckBox::toggled, this, [this](bool on) {
        request_.Structure = on;
        Make();
    });
    Make();
}

QWidget* TFCorrectionPreview::NewDifference() {
    auto* both = new QSplitter(Qt::Horizontal);
    both->setChildrenCollapsible(false);
    for (std::size_t side = 0; side < texts_.size(); ++side) {
        auto* view = new QTreeView;
        view->setAccessibleName(side == 0 ? QStringLiteral("Diferenças no texto: antes")
                                          : QStringLiteral("Diferenças no texto: depois"));
        view->setModel(difference_);
        view->setRootIsDecorated(false);
        view->setUniformRowHeights(true);
        view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
        view->header()->setStretchLastSection(false);
        for (const int column :
             side == 0 ? std::array{kAfterNumber, kAfterText} : std::array{kBeforeNumber, kBeforeText})
            view->setColumnHidden(column, true);
        both->addWidget(view);
        texts_[side] = view;
    }
    // Where one goes, the other follows.
    texts_[1]->setSelectionModel(texts_[0]->selectionModel());
    const auto follow = [](QScrollBar* bar, QScrollBar* other) {
        connect(bar, &QScrollBar::valueChanged, other, &QScrollBar::setValue);
        connect(other, &QScrollBar::valueChanged, bar, &QScrollBar::setValue);
    };
    follow(texts_[0]->verticalScrollBar(), texts_[1]->verticalScrollBar());
    follow(texts_[0]->horizontalScrollBar(), texts_[1]->horizontalScrollBar());
    connect(texts_[0]->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& row) { ShowDifferenceOf(row.row()); });
    return both;
}

void TFCorrectionPreview::ShowDifferenceOf(int row) {
    if (row < 0)
        return;
    const int width = QFontMetrics(difference_->data(difference_->index(row, 0), Qt::FontRole).value<QFont>())
                          .horizontalAdvance(QLatin1Char('0'));
    QScrollBar* const bar = texts_[0]->horizontalScrollBar();
    const int at = difference_->FirstDifference(row) * width;
    if (at < bar->value() || at + kShownBefore * width > bar->value() + texts_[0]->viewport()->width() / 2)
        bar->setValue(at - kShownBefore * width);
}

void TFCorrectionPreview::Make() {
    const unsigned making = ++makings_;
    correct_->setEnabled(false);
    summary_->setText(QStringLiteral("Calculando as correções..."));
    RunBeside(
        this,
        [maker = maker_, request = request_] {
            return std::make_shared<const TCorrectionPreview>(maker(request));
        },
        [this, making](TOutcome<TPreview> preview) {
            if (making != makings_)
                return;
            try {
                Show(preview.Take());
            } catch (const std::exception& error) {
                summary_->setText(QStringLiteral("As correções não puderam ser calculadas: ") +
                                  ToQt(error.what()));
            }
        });
}

void TFCorrectionPreview::Show(TPreview preview) {
    preview_ = std::move(preview);
    corrections_->Show(*preview_);
    difference_->Show(preview_);
    const QFontMetrics letters(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const int number = letters.horizontalAdvance(QStringLiteral("+ 9.999.999  "));
    const int line = letters.horizontalAdvance(QLatin1Char('0')) * (difference_->LongestLine() + 2);
    for (QTreeView* view : texts_)
        for (int column = 0; column < kDifferenceColumns; ++column)
            view->setColumnWidth(column, column == kBeforeNumber || column == kAfterNumber
                                             ? number
                                             : std::max(line, view->viewport()->width() - number));
    const bool changes = *preview_->Before != *preview_->After || !preview_->Applied.empty();
    correct_->setEnabled(changes);
    summary_->setText(changes ? QStringLiteral("Correções que serão feitas: %1. Deixadas como estão: %2. "
                                               "Desmarque o que não quiser. Nenhuma conta fica pior.")
                                    .arg(QLocale().toString(preview_->Applied.size()),
                                         QLocale().toString(preview_->LeftOut.size()))
                              : QStringLiteral("Nada pode ser corrigido sem perguntar."));
}

} // namespace conferix
