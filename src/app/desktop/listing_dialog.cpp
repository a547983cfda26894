#include "app/desktop/listing_dialog.h"

#include "app/desktop/background.h"
#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "app/desktop/patience.h"
#include "app/desktop/theme.h"
#include "app/desktop/window_settings.h"
#include "listing/listing_writer.h"
#include "platform/platform.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

namespace conferix {

namespace {

constexpr QSize kSize(1240, 620);
constexpr int kMeasuredRows = 80; ///< by which columns get their widths
constexpr int kWidestColumn = 46; ///< letters
const auto kTitle = QStringLiteral("Listagens");
const auto kDiffers = QStringLiteral("Um total não é a soma dos itens.");

/// The orders as users choose them.
constexpr std::array<std::pair<TListingOrder, const char*>, 5> kOrders = {
    {{TListingOrder::Arquivo, "Como no arquivo"},
     {TListingOrder::Guia, "Número da guia"},
     {TListingOrder::Beneficiario, "Beneficiário"},
     {TListingOrder::Data, "Data"},
     {TListingOrder::Valor, "Valor"}}};

QString Joined(const std::vector<std::string>& lines) {
    QStringList joined;
    for (const std::string& line : lines)
        joined << ToQt(line);
    return joined.join(QStringLiteral("   |   "));
}

/// The format that a name asks for; empty for one that no listing is written in.
std::string FormatOf(const QString& name) {
    std::string suffix = FromQt(QFileInfo(name).suffix().toLower());
    if (suffix == "htm")
        suffix = "html";
    const std::vector<std::string> formats = ListingFormats();
    return std::ranges::find(formats, suffix) != formats.end() ? suffix : std::string();
}

} // namespace

void TListingModel::SetTable(TListingTable table) {
    beginResetModel();
    table_ = std::move(table);
    endResetModel();
}

int TListingModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(table_.RowCount());
}

int TListingModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(table_.ColumnCount());
}

QVariant TListingModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    const auto column = static_cast<std::size_t>(index.column());
    const bool differs = table_.Differs(row);
    switch (role) {
    case Qt::DisplayRole:
        return ToQt(table_.Text(row, column));
    case Qt::ToolTipRole:
        return differs ? kDiffers : ToQt(table_.Text(row, column));
    case Qt::AccessibleDescriptionRole:
        return differs ? kDiffers : QString();
    case Qt::DecorationRole:
        return differs && column == 0 ? SeverityIcon(TMessageType::mtError) : QVariant();
    case Qt::TextAlignmentRole:
        return IsNumeric(table_.Column(column).Kind) ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                                     : QVariant();
    case Qt::FontRole:
        if (table_.KindOf(row) != TListingTable::TRowKind::Row) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return {};
    default:
        return {};
    }
}

QVariant TListingModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return ToQt(table_.Column(static_cast<std::size_t>(section)).Title);
}

struct TFListings::TSource {
    TTissFile File;
    std::shared_ptr<const IArquivoTiss> Arquivo; ///< once something was listed

    TMade List(TListingKind kind, TListingOrder order) {
        try {
            if (Arquivo == nullptr)
                Arquivo = File.Load();
            return {TListingTable(ListFile(*Arquivo, kind, order)), {}};
        } catch (const std::exception& error) { // nothing to list, or no TISS file
            return {{}, ToQt(error.what())};
        }
    }
};

TFListings::TFListings(TTissFile file, QString name, QWidget* owner)
    : QDialog(owner, Qt::Window), source_(std::make_shared<TSource>(TSource{std::move(file), nullptr})),
      name_(std::move(name)), model_(new TListingModel(this)), kind_(new QComboBox), order_(new QComboBox),
      head_(new QLabel), table_(new QTableView), foot_(new QLabel),
      copy_(new QPushButton(QStringLiteral("&Copiar"))),
      save_(new QPushButton(QStringLiteral("&Salvar..."))) {
    setWindowTitle(QStringLiteral("%1 - %2").arg(QFileInfo(name_).fileName(), kTitle));
    for (const std::string_view listing : ListingNames())
        kind_->addItem(ToQt(ListingTitle(*ListingKindOf(listing))), ToQt(listing));
    kind_->setAccessibleName(QStringLiteral("Listagem"));
    order_->setAccessibleName(QStringLiteral("Ordem"));
    for (QLabel* label : {head_, foot_}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }
    head_->setAccessibleDescription(QStringLiteral("Cabeçalho da listagem"));
    foot_->setAccessibleDescription(QStringLiteral("Totais da listagem"));
    table_->setModel(model_);
    ShowRows(*table_, QStringLiteral("Linhas da listagem"));
    table_->horizontalHeader()->setResizeContentsPrecision(kMeasuredRows);

    auto* const top = new QHBoxLayout;
    for (const auto& [caption, box] : {std::pair("&Listagem:", kind_), std::pair("&Ordem:", order_)}) {
        auto* const label = new QLabel(QString::fromUtf8(caption));
        label->setBuddy(box);
        top->addWidget(label);
        top->addWidget(box);
    }
    top->addStretch();
    auto* const close = new QPushButton(QStringLiteral("Fechar"));
    auto* const bottom = new QHBoxLayout;
    bottom->addStretch();
    for (QPushButton* button : {copy_, save_, close}) {
        button->setAutoDefault(false);
        bottom->addWidget(button);
    }
    auto* const lines = new QVBoxLayout(this);
    lines->addLayout(top);
    lines->addWidget(head_);
    lines->addWidget(table_, 1);
    lines->addWidget(foot_);
    lines->addLayout(bottom);
    resize(kSize);

    const auto settings = WindowSettings();
    restoreGeometry(settings->value(QStringLiteral("listagens/janela")).toByteArray());
    kind_->setCurrentIndex(
        std::max(0, kind_->findData(settings->value(QStringLiteral("listagens/listagem")))));
    FillOrders();
    order_->setCurrentIndex(
        std::max(0, order_->findData(settings->value(QStringLiteral("listagens/ordem")))));
    connect(kind_, &QComboBox::currentIndexChanged, this, [this] {
        FillOrders();
        List();
    });
    connect(order_, &QComboBox::currentIndexChanged, this, &TFListings::List);
    connect(copy_, &QPushButton::clicked, this, &TFListings::Copy);
    connect(new QShortcut(QKeySequence::Copy, table_, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &TFListings::Copy);
    connect(save_, &QPushButton::clicked, this, &TFListings::AskWhereToSave);
    connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, save_, &QPushButton::click);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    List();
    table_->setFocus();
}

TFListings::~TFListings() {
    const auto settings = WindowSettings();
    settings->setValue(QStringLiteral("listagens/janela"), saveGeometry());
    settings->setValue(QStringLiteral("listagens/listagem"), kind_->currentData());
    settings->setValue(QStringLiteral("listagens/ordem"), order_->currentData());
    LetGoBeside(std::move(source_));
}

TListingKind TFListings::Kind() const {
    return *ListingKindOf(FromQt(kind_->currentData().toString()));
}

void TFListings::FillOrders() {
    const QSignalBlocker quiet(order_);
    const QVariant before = order_->currentData();
    order_->clear();
    for (const auto& [order, title] : kOrders)
        if (HasOrder(Kind(), order))
            order_->addItem(QString::fromUtf8(title), static_cast<int>(order));
    order_->setCurrentIndex(std::max(0, order_->findData(before)));
    order_->setEnabled(order_->count() > 1);
}

void TFListings::List() {
    again_ = listing_;
    if (listing_)
        return;
    listing_ = true;
    copy_->setEnabled(false);
    save_->setEnabled(false);
    foot_->setText(QStringLiteral("Listando..."));
    RunBeside(
        this,
        [source = source_, kind = Kind(), order = static_cast<TListingOrder>(order_->currentData().toInt())] {
            return source->List(kind, order);
        },
        [this](TOutcome<TMade> made) {
            listing_ = false;
            if (std::exchange(again_, false))
                List();
            else
                ShowMade(made.Take());
        });
}

void TFListings::ShowMade(TMade made) {
    model_->SetTable(std::move(made.Table));
    const TListingTable& table = model_->Table();
    const int widest = kWidestColumn * fontMetrics().averageCharWidth();
    table_->resizeColumnsToContents();
    for (int column = 0; column < model_->columnCount(); ++column)
        table_->setColumnWidth(column, std::min(table_->columnWidth(column), widest));
    table_->clearSpans();
    for (std::size_t row = 0; row < table.RowCount(); ++row)
        if (table.KindOf(row) == TListingTable::TRowKind::Title && table.ColumnCount() > 1)
            table_->setSpan(static_cast<int>(row), 0, 1, model_->columnCount());
    head_->setText(Joined(table.HeadLines()));
    const bool isMade = made.Failure.isEmpty();
    foot_->setText(isMade ? Joined(table.FootLines()) : made.Failure);
    copy_->setEnabled(table.RowCount() != 0);
    save_->setEnabled(isMade);
}

void TFListings::Copy() {
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows())
        rows.push_back(static_cast<std::size_t>(index.row()));
    if (rows.empty())
        for (std::size_t row = 0; row < model_->Table().RowCount(); ++row)
            rows.push_back(row);
    std::ranges::sort(rows);
    QGuiApplication::clipboard()->setText(ToQt(model_->Table().CopyText(rows)));
}

bool TFListings::Save(const std::filesystem::path& file) {
    const std::string format = FormatOf(ToQt(PathText(file)));
    if (format.empty()) {
        ShowFailure(this, kTitle, "Dê ao arquivo um nome que termine em .csv, .html ou .pdf.");
        return false;
    }
    TListing listing{Kind(), {model_->Table().Listing()}};
    // Where the file lies is nobody's business who gets the listing.
    listing.Files.front().Arquivo = FromQt(QFileInfo(name_).fileName());
    try {
        TPatience patience(this, QStringLiteral("Salvando..."), TPatience::TStop::No);
        return patience.Await([&] {
            std::ostringstream text;
            WriteListing(text, listing, format, false);
            WriteFileAtomically(file, text.view());
            return true;
        });
    } catch (const std::exception& error) {
        ShowFailure(this, kTitle, error.what());
    }
    return false;
}

void TFListings::AskWhereToSave() {
    const QFileInfo source(name_);
    QFileDialog dialog(this, QStringLiteral("Salvar listagem"), source.path(),
                       QStringLiteral("Planilha (*.csv);;Página (*.html);;PDF (*.pdf);;JSON (*.json)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("csv"));
    dialog.selectFile(source.completeBaseName() + u'-' + kind_->currentData().toString());
    connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& filter) {
        dialog.setDefaultSuffix(filter.section(QLatin1String("*."), 1).chopped(1));
    });
    Widen(dialog);
    if (dialog.exec() == Accepted)
        Save(PathFromText(FromQt(dialog.selectedFiles().front())));
}

} // namespace conferix
