#include "app/desktop/guide_print_dialog.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "app/desktop/page_view.h"
#include "app/desktop/paper_painter.h"
#include "app/desktop/patience.h"
#include "app/desktop/theme.h"
#include "app/desktop/window_settings.h"
#include "platform/platform.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QShortcut>
#include <QSortFilterProxyModel>
#include <QSpinBox>
#include <QSplitter>
#include <QToolButton>

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

namespace conferix {

namespace {

constexpr QSize kSize(1180, 680);
constexpr double kMillimetresPerInch = 25.4;
constexpr std::array kPercents = {50, 75, 100, 125, 150, 200, 300, 400};
const auto kTitle = QStringLiteral("Imprimir guias");

QString Counted(std::size_t count, const char* one, const char* many) {
    return QLocale().toString(count) + u' ' + QString::fromUtf8(count == 1 ? one : many);
}

} // namespace

TGuideChoiceModel::TGuideChoiceModel(const TGuidePages& pages, QObject* parent)
    : QAbstractListModel(parent), pages_(pages), chosen_(pages.Guides().size(), true) {}

int TGuideChoiceModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(chosen_.size());
}

QVariant TGuideChoiceModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const auto guide = static_cast<std::size_t>(index.row());
    if (role == Qt::DisplayRole)
        return ToQt(pages_.GuideTitle(guide));
    if (role == Qt::CheckStateRole)
        return chosen_[guide] ? Qt::Checked : Qt::Unchecked;
    return {};
}

bool TGuideChoiceModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::CheckStateRole)
        return false;
    Choose({static_cast<std::size_t>(index.row())}, value.toInt() == Qt::Checked);
    return true;
}

Qt::ItemFlags TGuideChoiceModel::flags(const QModelIndex& index) const {
    return QAbstractListModel::flags(index) | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

void TGuideChoiceModel::Choose(const std::vector<std::size_t>& guides, bool chosen) {
    if (guides.empty())
        return;
    for (const std::size_t guide : guides)
        chosen_[guide] = chosen;
    const auto [first, last] = std::ranges::minmax(guides);
    emit dataChanged(index(static_cast<int>(first)), index(static_cast<int>(last)), {Qt::CheckStateRole});
    emit ChoiceChanged();
}

TFGuidePrint::TFGuidePrint(std::unique_ptr<TGuidePages> pages, QString file, QWidget* owner)
    : QDialog(owner, Qt::Window), pages_(std::move(pages)), file_(std::move(file)),
      guides_(new TGuideChoiceModel(*pages_, this)), found_(new QSortFilterProxyModel(this)),
      filter_(new QLineEdit), list_(new QListView), all_(new QPushButton(QStringLiteral("&Marcar todas"))),
      none_(new QPushButton(QStringLiteral("D&esmarcar todas"))), form_(new QComboBox),
      terms_(new QCheckBox(QStringLiteral("Com a &descrição dos códigos"))),
      errors_(new QCheckBox(QStringLiteral("&Quantidade de erros abaixo da moldura"))), chosen_(new QLabel),
      view_(new TPageView), told_(new QLabel), number_(new QSpinBox), previous_(new QToolButton),
      next_(new QToolButton), zoom_(new QComboBox), print_(new QPushButton(QStringLiteral("&Imprimir..."))),
      pdf_(new QPushButton(QStringLiteral("&Salvar PDF..."))), parts_(new QSplitter) {
    setWindowTitle(QStringLiteral("%1 - %2").arg(QFileInfo(file_).fileName(), kTitle));
    parts_->addWidget(BuildChoice());
    parts_->addWidget(BuildPreview());
    parts_->setStretchFactor(1, 1);
    parts_->setChildrenCollapsible(false);
    auto* const close = new QPushButton(QStringLiteral("Fechar"));
    auto* const buttons = new QHBoxLayout;
    chosen_->setTextFormat(Qt::PlainText);
    chosen_->setWordWrap(true);
    buttons->addWidget(chosen_, 1);
    for (QPushButton* button : {print_, pdf_, close}) {
        button->setAutoDefault(false); // Enter belongs to the field that it is pressed in
        buttons->addWidget(button);
    }
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(parts_, 1);
    lines->addLayout(buttons);
    resize(kSize);
    RestoreState();
    connect(print_, &QPushButton::clicked, this, &TFGuidePrint::AskAndPrint);
    connect(pdf_, &QPushButton::clicked, this, &TFGuidePrint::AskAndSavePdf);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    connect(guides_, &TGuideChoiceModel::ChoiceChanged, this, [this] {
        ApplyChoice();
        ShowCurrentGuide();
    });
    connect(form_, &QComboBox::currentIndexChanged, this, &TFGuidePrint::ApplyChoice);
    connect(terms_, &QCheckBox::toggled, this, &TFGuidePrint::ApplyChoice);
    connect(errors_, &QCheckBox::toggled, this, &TFGuidePrint::ApplyChoice);
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &TFGuidePrint::ShowCurrentGuide);
    BuildKeys();
    const std::initializer_list<QWidget*> order = {filter_, list_,   all_,      none_,   form_,
                                                   terms_,  errors_, previous_, number_, next_,
                                                   zoom_,   view_,   print_,    pdf_,    close};
    for (const auto* next = order.begin() + 1; next != order.end(); ++next)
        setTabOrder(*(next - 1), *next);
    ApplyChoice();
    list_->setFocus();
}

TFGuidePrint::~TFGuidePrint() {
    SaveState();
}

QWidget* TFGuidePrint::BuildChoice() {
    filter_->setAccessibleName(QStringLiteral("Procurar guia"));
    filter_->setPlaceholderText(filter_->accessibleName());
    filter_->setClearButtonEnabled(true);
    found_->setSourceModel(guides_);
    found_->setFilterCaseSensitivity(Qt::CaseInsensitive);
    connect(filter_, &QLineEdit::textChanged, found_, &QSortFilterProxyModel::setFilterFixedString);
    list_->setModel(found_);
    list_->setAccessibleName(QStringLiteral("Guias"));
    list_->setUniformItemSizes(true);
    list_->setAlternatingRowColors(true);
    for (QPushButton* button : {all_, none_})
        button->setAutoDefault(false);
    connect(all_, &QPushButton::clicked, this, [this] { ChooseShown(true); });
    connect(none_, &QPushButton::clicked, this, [this] { ChooseShown(false); });
    form_->setAccessibleName(QStringLiteral("Formulário"));
    form_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    form_->addItem(QStringLiteral("Todos os formulários"), QString());
    for (const auto& [name, title] : pages_->Forms())
        form_->addItem(ToQt(title), ToQt(name));
    errors_->setChecked(true);
    errors_->setVisible(pages_->Errors().value_or(0) > 0);

    auto* const choice = new QWidget;
    auto* const marks = new QHBoxLayout;
    marks->addWidget(all_);
    marks->addWidget(none_);
    auto* const fields = new QFormLayout;
    fields->addRow(QStringLiteral("&Formulário:"), form_);
    auto* const lines = new QVBoxLayout(choice);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->addWidget(filter_);
    lines->addWidget(list_, 1);
    lines->addLayout(marks);
    lines->addLayout(fields);
    lines->addWidget(terms_);
    lines->addWidget(errors_);
    return choice;
}

QWidget* TFGuidePrint::BuildPreview() {
    const auto turn = [this](QToolButton& button, const char* icon, const QString& name, int by) {
        button.setIcon(IconOf(QString::fromLatin1(icon)));
        button.setAccessibleName(name);
        button.setToolTip(name);
        button.setFocusPolicy(Qt::TabFocus);
        connect(&button, &QToolButton::clicked, this, [this, by] { GoBy(by); });
    };
    turn(*previous_, "anterior", QStringLiteral("Página anterior"), -1);
    turn(*next_, "proxima", QStringLiteral("Próxima página"), 1);
    number_->setAccessibleName(QStringLiteral("Página"));
    number_->setKeyboardTracking(false);
    connect(number_, &QSpinBox::valueChanged, this,
            [this](int number) { ShowPage(static_cast<std::size_t>(std::max(number, 1) - 1)); });
    zoom_->setAccessibleName(QStringLiteral("Tamanho na tela"));
    zoom_->addItem(QStringLiteral("Página inteira"), TPageView::kWhole);
    zoom_->addItem(QStringLiteral("Largura da página"), TPageView::kFullWidth);
    for (const int percent : kPercents)
        zoom_->addItem(QStringLiteral("%1 %").arg(percent), percent);
    connect(zoom_, &QComboBox::currentIndexChanged, this,
            [this] { view_->SetZoom(zoom_->currentData().toInt()); });
    connect(view_, &TPageView::PageWanted, this, &TFGuidePrint::GoBy);
    connect(view_, &TPageView::ZoomWanted, this, &TFGuidePrint::ZoomBy);
    told_->setTextFormat(Qt::PlainText);
    told_->setWordWrap(true);

    auto* const preview = new QWidget;
    auto* const page = new QLabel(QStringLiteral("Pá&gina:"));
    page->setBuddy(number_);
    auto* const zoom = new QLabel(QStringLiteral("&Tamanho:"));
    zoom->setBuddy(zoom_);
    auto* const bar = new QHBoxLayout;
    bar->addWidget(previous_);
    bar->addWidget(page);
    bar->addWidget(number_);
    bar->addWidget(next_);
    bar->addWidget(told_, 1);
    bar->addWidget(zoom);
    bar->addWidget(zoom_);
    auto* const lines = new QVBoxLayout(preview);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->addLayout(bar);
    lines->addWidget(view_, 1);
    return preview;
}

void TFGuidePrint::BuildKeys() {
    const auto key = [this](const QKeySequence& keys, auto action) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
    };
    key(QKeySequence::Print, [this] { print_->click(); });
    key(QKeySequence::Save, [this] { pdf_->click(); });
    for (const char* keys : {"Ctrl++", "Ctrl+="}) // the same key on many keyboards
        key(QKeySequence(QLatin1String(keys)), [this] { ZoomBy(1); });
    key(QKeySequence(QStringLiteral("Ctrl+-")), [this] { ZoomBy(-1); });
    key(QKeySequence(QStringLiteral("Ctrl+0")), [this] { zoom_->setCurrentIndex(0); });
}

void TFGuidePrint::RestoreState() {
    const auto settings = WindowSettings();
    restoreGeometry(settings->value(QStringLiteral("guias/janela")).toByteArray());
    if (!parts_->restoreState(settings->value(QStringLiteral("guias/partes")).toByteArray()))
        parts_->setSizes({300, 860});
    zoom_->setCurrentIndex(
        std::max(0, zoom_->findData(settings->value(QStringLiteral("guias/tamanho")).toInt())));
    terms_->setChecked(settings->value(QStringLiteral("guias/descricao")).toBool());
}

void TFGuidePrint::SaveState() const {
    const auto settings = WindowSettings();
    settings->setValue(QStringLiteral("guias/janela"), saveGeometry());
    settings->setValue(QStringLiteral("guias/partes"), parts_->saveState());
    settings->setValue(QStringLiteral("guias/tamanho"), zoom_->currentData());
    settings->setValue(QStringLiteral("guias/descricao"), terms_->isChecked());
}

void TFGuidePrint::ChooseShown(bool chosen) {
    std::vector<std::size_t> guides;
    for (int row = 0; row < found_->rowCount(); ++row)
        guides.push_back(static_cast<std::size_t>(found_->mapToSource(found_->index(row, 0)).row()));
    guides_->Choose(guides, chosen);
}

void TFGuidePrint::ApplyChoice() {
    const std::size_t before = pages_->Count();
    if (page_ < before)
        guide_ = pages_->GuideOf(page_);
    TGuideChoice choice{guides_->Chosen(), FromQt(form_->currentData().toString()), terms_->isChecked(),
                        errors_->isChecked()};
    try {
        pages_->Choose(std::move(choice));
    } catch (const std::exception& error) { // the terminology cannot be read
        terms_->setChecked(false);
        ShowFailure(this, kTitle, error.what());
        return;
    }
    marked_.reset();
    const std::size_t count = pages_->Count();
    QString told = QStringLiteral("%1, %2").arg(Counted(pages_->PrintedGuides(), "guia", "guias"),
                                                Counted(count, "página", "páginas"));
    for (const std::string& sentence : pages_->NotPrinted())
        told += QLatin1Char('\n') + ToQt(sentence);
    chosen_->setText(told);
    {
        const QSignalBlocker quiet(number_);
        number_->setRange(count == 0 ? 0 : 1, static_cast<int>(count));
        number_->setSuffix(QStringLiteral(" de ") + QLocale().toString(count));
    }
    for (QWidget* control :
         {static_cast<QWidget*>(print_), static_cast<QWidget*>(pdf_), static_cast<QWidget*>(number_)})
        control->setEnabled(count != 0);
    ShowPage(count == before ? page_ : pages_->NearestPageOf(guide_));
}

void TFGuidePrint::ShowCurrentGuide() {
    const QModelIndex guide = found_->mapToSource(list_->currentIndex());
    if (!guide.isValid())
        return;
    if (const auto page = pages_->FirstPageOf(static_cast<std::size_t>(guide.row())))
        ShowPage(*page);
}

void TFGuidePrint::ShowPage(std::size_t page) {
    page_ = page;
    const bool there = page < pages_->Count();
    QString title = there ? ToQt(pages_->PageTitle(page)) : QString();
    if (there)
        view_->ShowPage(pages_->Page(page).Paper);
    else
        view_->ShowPage({}, QStringLiteral("Nenhuma página: marque uma guia que tenha este formulário."));
    const bool marked = there && marked_ && marked_->Page == page;
    if (marked) {
        view_->Mark(marked_->Frames);
        title += QStringLiteral(". Assinalado: ") + ToQt(marked_->Text);
    }
    told_->setText(title);
    view_->setAccessibleName(there ? QStringLiteral("Página %1. %2").arg(page + 1).arg(title)
                                   : QStringLiteral("Nenhuma página"));
    const QSignalBlocker quiet(number_);
    number_->setValue(there ? static_cast<int>(page + 1) : 0);
    previous_->setEnabled(there && page > 0);
    next_->setEnabled(page + 1 < pages_->Count());
}

void TFGuidePrint::ShowBox(const TBoxPlace& place) {
    marked_ = place;
    const int row = static_cast<int>(pages_->GuideOf(place.Page));
    list_->setCurrentIndex(found_->mapFromSource(guides_->index(row)));
    ShowPage(place.Page);
}

void TFGuidePrint::GoBy(int pages) {
    if (pages_->Count() == 0)
        return;
    const auto last = static_cast<std::int64_t>(pages_->Count()) - 1;
    const auto page =
        static_cast<std::size_t>(std::clamp(static_cast<std::int64_t>(page_) + pages, std::int64_t{0}, last));
    if (page != page_)
        ShowPage(page);
}

void TFGuidePrint::ZoomBy(int steps) {
    const int percent = static_cast<int>(view_->Percent());
    const auto* const above = std::ranges::upper_bound(kPercents, percent);
    const auto* const below = std::ranges::lower_bound(kPercents, percent);
    if (steps > 0 && above != kPercents.end())
        zoom_->setCurrentIndex(zoom_->findData(*above));
    else if (steps < 0 && below != kPercents.begin())
        zoom_->setCurrentIndex(zoom_->findData(*(below - 1)));
}

void TFGuidePrint::AskAndPrint() {
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setDocName(QStringLiteral("Guias TISS"));
    QPrintDialog dialog(&printer, this);
    dialog.setWindowTitle(kTitle);
    dialog.setOption(QAbstractPrintDialog::PrintCurrentPage);
    const auto count = static_cast<int>(pages_->Count());
    dialog.setMinMax(1, count);
    dialog.setFromTo(1, count);
    if (dialog.exec() != Accepted)
        return;
    switch (printer.printRange()) {
    case QPrinter::CurrentPage:
        return PrintOn(printer, page_, page_);
    case QPrinter::PageRange:
        return PrintOn(printer, static_cast<std::size_t>(std::clamp(printer.fromPage(), 1, count)) - 1,
                       static_cast<std::size_t>(std::clamp(printer.toPage(), 1, count)) - 1);
    default:
        return PrintOn(printer, 0, pages_->Count() - 1);
    }
}

void TFGuidePrint::PrintOn(QPrinter& printer, std::size_t first, std::size_t last) {
    printer.setFullPage(true); // the layout has its own margins
    QPainter painter;
    bool works = true;
    auto patience =
        std::make_unique<TPatience>(this, QStringLiteral("Imprimindo..."), TPatience::TStop::Offered);
    for (std::size_t page = first; page <= last; ++page) {
        const TPaperPage& paper = pages_->Page(page).Paper;
        printer.setPageOrientation(paper.Width > paper.Height ? QPageLayout::Landscape
                                                              : QPageLayout::Portrait);
        works = page == first ? painter.begin(&printer) : printer.newPage();
        if (!works)
            break;
        const QRectF sheet = printer.paperRect(QPrinter::Millimeter);
        const double fit = std::min({1.0, sheet.width() / paper.Width, sheet.height() / paper.Height});
        DrawPaper(painter, paper, printer.resolution() / kMillimetresPerInch * fit);
        if (!patience->Go()) {
            printer.abort();
            return;
        }
    }
    patience.reset();
    if (!works || !painter.end())
        ShowFailure(this, kTitle,
                    "A impressora não aceitou o documento. Verifique se está ligada, ou salve um PDF.");
}

bool TFGuidePrint::SavePdf(const std::filesystem::path& file) {
    try {
        std::ostringstream bytes;
        TGuidePdf pdf(bytes);
        TPatience patience(this, QStringLiteral("Salvando..."), TPatience::TStop::Offered);
        for (std::size_t page = 0; page < pages_->Count(); ++page) {
            pdf.Add(pages_->Page(page));
            if (!patience.Go())
                return false;
        }
        pdf.Finish();
        WriteFileAtomically(file, bytes.view());
        return true;
    } catch (const EFile& error) {
        ShowFailure(this, kTitle, error.what());
    }
    return false;
}

void TFGuidePrint::AskAndSavePdf() {
    const QFileInfo source(file_);
    const QString name = AskForSaveName(this, QStringLiteral("Salvar guias em PDF"),
                                        source.path() + QLatin1Char('/') + source.completeBaseName() +
                                            QStringLiteral("-guias.pdf"),
                                        QStringLiteral("PDF (*.pdf)"), QStringLiteral("pdf"));
    if (!name.isEmpty() && SavePdf(PathFromText(FromQt(name))))
        told_->setText(QStringLiteral("Salvo em %1").arg(name));
}

} // namespace conferix
