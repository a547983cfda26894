#include "app/desktop/dialogs/batch_dialog.h"

#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "platform/format_settings.h"
#include "platform/platform.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QSortFilterProxyModel>
#include <QStyle>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include <array>

namespace conferix {

namespace {

constexpr QSize kSize(1080, 560);
/// Width of the columns before the last, in letters.
constexpr std::array<int, TBatchModel::kNote> kLetters = {38, 20, 10, 38, 10, 10};
const auto kTitle = QStringLiteral("Validar vários arquivos");

/// The sign of a verdict, which its text says as well.
QStyle::StandardPixmap IconOf(TVerdict verdict) {
    switch (verdict) {
    case TVerdict::Valid:
        return QStyle::SP_DialogApplyButton;
    case TVerdict::Invalid:
        return QStyle::SP_MessageBoxCritical;
    case TVerdict::NotVerified:
        return QStyle::SP_MessageBoxWarning;
    }
    return QStyle::SP_CustomBase;
}

QString Counted(std::size_t count, const char* one, const char* many) {
    return ToQt(TFormatSettings::Regional().Count(static_cast<std::int64_t>(count))) + u' ' +
           QString::fromUtf8(count == 1 ? one : many);
}

} // namespace

int TBatchModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(batch_.Rows().size());
}

int TBatchModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

QVariant TBatchModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const QStringList kTitles = {QStringLiteral("Arquivo"),   QStringLiteral("Resultado"),
                                        QStringLiteral("Versão"),    QStringLiteral("Tipo"),
                                        QStringLiteral("Erros"),     QStringLiteral("Avisos"),
                                        QStringLiteral("Observação")};
    return kTitles.value(section);
}

QVariant TBatchModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const TBatchRow& row = batch_.Rows()[static_cast<std::size_t>(index.row())];
    const bool number = index.column() == kErrors || index.column() == kWarnings;
    if (role == Qt::TextAlignmentRole && number)
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::DecorationRole && index.column() == kVerdict && row.Verdict)
        return qobject_cast<QWidget*>(QObject::parent())->style()->standardIcon(IconOf(*row.Verdict));
    if (role == Qt::ToolTipRole)
        return index.column() == kFile ? ToQt(row.File) : data(index, Qt::DisplayRole);
    if (role != Qt::DisplayRole && role != kSortRole)
        return {};
    switch (index.column()) {
    case kFile:
        return role == kSortRole ? ToQt(row.File) : QFileInfo(ToQt(row.File)).fileName();
    case kVerdict:
        return ToQt(row.VerdictText());
    case kVersao:
        return ToQt(row.Versao);
    case kTipo:
        return ToQt(row.Tipo);
    case kErrors:
    case kWarnings: {
        const std::size_t count = index.column() == kErrors ? row.Errors : row.Warnings;
        if (role == kSortRole)
            return static_cast<qulonglong>(count);
        return row.Verdict ? ToQt(TFormatSettings::Regional().Count(static_cast<std::int64_t>(count)))
                           : QString();
    }
    case kNote:
        return ToQt(row.Note);
    default:
        return {};
    }
}

void TBatchModel::Renew(std::size_t row) {
    const int number = static_cast<int>(row);
    emit dataChanged(index(number, 0), index(number, kColumns - 1));
}

TFBatchValidation::TFBatchValidation(std::unique_ptr<TBatchValidation> batch, QWidget* owner)
    : QDialog(owner, Qt::Window), batch_(std::move(batch)), model_(new TBatchModel(*batch_, this)),
      sorted_(new QSortFilterProxyModel(this)), table_(new QTableView(this)), shown_(new QComboBox(this)),
      counts_(new QLabel(this)), bar_(new QProgressBar(this)), stop_(new QPushButton(this)),
      open_(new QPushButton(QStringLiteral("&Abrir"), this)),
      save_(new QPushButton(QStringLiteral("&Salvar relatório..."), this)), next_(new QTimer(this)) {
    setWindowTitle(kTitle);
    sorted_->setSourceModel(model_);
    sorted_->setSortRole(TBatchModel::kSortRole);
    sorted_->setFilterKeyColumn(TBatchModel::kVerdict);
    table_->setModel(sorted_);
    ShowRows(*table_, QStringLiteral("Arquivos"));
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    table_->setSortingEnabled(true);
    const int letter = fontMetrics().averageCharWidth();
    for (int column = 0; column < TBatchModel::kNote; ++column)
        table_->setColumnWidth(column, kLetters[static_cast<std::size_t>(column)] * letter);
    shown_->setAccessibleName(QStringLiteral("Mostrar"));
    shown_->addItem(QStringLiteral("Todos"), QString());
    for (const char* verdict : {"Inválido", "Não verificado", "Válido"})
        shown_->addItem(QString::fromUtf8(verdict) + QStringLiteral("s"), QString::fromUtf8(verdict));
    shown_->setItemText(2, QStringLiteral("Não verificados"));
    bar_->setRange(0, static_cast<int>(batch_->Rows().size()));
    bar_->setAccessibleName(QStringLiteral("Andamento"));
    counts_->setTextFormat(Qt::PlainText);
    next_->setSingleShot(true);
    next_->setInterval(0); // once all that the user did meanwhile is done

    auto* const top = new QHBoxLayout;
    auto* const show = new QLabel(QStringLiteral("&Mostrar:"), this);
    show->setBuddy(shown_);
    top->addWidget(counts_, 1);
    top->addWidget(show);
    top->addWidget(shown_);
    auto* const bottom = new QHBoxLayout;
    auto* const close = new QPushButton(QStringLiteral("Fechar"), this);
    bottom->addWidget(bar_, 1);
    for (QPushButton* button : {stop_, open_, save_, close}) {
        button->setAutoDefault(false); // Enter opens the file of the row
        bottom->addWidget(button);
    }
    auto* const lines = new QVBoxLayout(this);
    lines->addLayout(top);
    lines->addWidget(table_);
    lines->addLayout(bottom);
    resize(kSize);

    connect(next_, &QTimer::timeout, this, &TFBatchValidation::ValidateNext);
    connect(stop_, &QPushButton::clicked, this, [this] { Running() ? Stop() : Start(); });
    connect(open_, &QPushButton::clicked, this, &TFBatchValidation::OpenSelected);
    connect(save_, &QPushButton::clicked, this, &TFBatchValidation::AskWhereToSave);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    connect(table_, &QTableView::doubleClicked, this, &TFBatchValidation::OpenSelected);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter})
        connect(new QShortcut(QKeySequence(key), table_, nullptr, nullptr, Qt::WidgetShortcut),
                &QShortcut::activated, this, &TFBatchValidation::OpenSelected);
    connect(shown_, &QComboBox::currentIndexChanged, this, [this] {
        const QString verdict = shown_->currentData().toString();
        sorted_->setFilterRegularExpression(verdict.isEmpty() ? QString() : u'^' + verdict + u'$');
    });
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &TFBatchValidation::ShowState);
    ShowState();
    table_->setFocus();
}

TFBatchValidation::~TFBatchValidation() {
    hide(); // while there is something to show: the base class would do it later
}

bool TFBatchValidation::Running() const {
    return next_->isActive();
}

void TFBatchValidation::Start() {
    if (!batch_->Finished())
        next_->start();
    ShowState();
}

void TFBatchValidation::Stop() {
    next_->stop();
    ShowState();
}

void TFBatchValidation::ValidateNext() {
    const std::size_t row = batch_->Done();
    try {
        batch_->ValidateNext();
    } catch (const EFile& error) { // the disk is full
        Stop();
        ShowFailure(this, kTitle, error.what());
        return;
    }
    model_->Renew(row);
    if (!batch_->Finished())
        next_->start();
    ShowState();
    emit Validated(row);
}

void TFBatchValidation::ShowState() {
    const TReportTotals& totals = batch_->Totals();
    QString text = Counted(batch_->Rows().size(), "arquivo", "arquivos");
    if (!batch_->Finished())
        text += QStringLiteral(", ") + Counted(batch_->Done(), "validado", "validados");
    text += QStringLiteral(": ") + Counted(totals.Of(TVerdict::Valid), "válido", "válidos") +
            QStringLiteral(", ") + Counted(totals.Of(TVerdict::Invalid), "inválido", "inválidos");
    if (totals.Of(TVerdict::NotVerified) > 0)
        text += QStringLiteral(", ") +
                Counted(totals.Of(TVerdict::NotVerified), "não verificado", "não verificados");
    counts_->setText(text);
    bar_->setValue(static_cast<int>(batch_->Done()));
    stop_->setText(Running() ? QStringLiteral("&Parar") : QStringLiteral("C&ontinuar"));
    stop_->setEnabled(!batch_->Finished());
    open_->setEnabled(table_->selectionModel()->hasSelection());
    save_->setEnabled(batch_->Done() > 0);
}

void TFBatchValidation::OpenSelected() {
    const QModelIndex current = table_->currentIndex();
    if (current.isValid())
        emit OpenRequested(
            current.siblingAtColumn(TBatchModel::kFile).data(TBatchModel::kSortRole).toString());
}

void TFBatchValidation::AskWhereToSave() {
    QFileDialog dialog(this, QStringLiteral("Salvar relatório"), {},
                       QStringLiteral("Planilha (*.csv);;JSON (*.json)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("csv"));
    connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& filter) {
        dialog.setDefaultSuffix(filter.contains(QLatin1String("json")) ? QStringLiteral("json")
                                                                       : QStringLiteral("csv"));
    });
    Widen(dialog);
    if (dialog.exec() == Accepted)
        SaveReport(PathFromText(FromQt(dialog.selectedFiles().front())));
}

bool TFBatchValidation::SaveReport(const std::filesystem::path& file) {
    try {
        batch_->SaveReport(file);
        return true;
    } catch (const EFile& error) {
        ShowFailure(this, kTitle, error.what());
    }
    return false;
}

void TFBatchValidation::reject() {
    Stop();
    QDialog::reject();
}

} // namespace conferix
