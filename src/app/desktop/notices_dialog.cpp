#include "app/desktop/notices_dialog.h"

#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/window_settings.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QDateTime>
#include <QDesktopServices>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QTextBrowser>
#include <QUrl>

#include <algorithm>
#include <array>

namespace conferix {

namespace {

constexpr QSize kSize(820, 500);

// In the order of the enumeration.
constexpr std::array<const char*, 3> kLevels = {"Informação", "Aviso", "Importante"};

QString DateText(const std::string& date) {
    QString text = ToQt(date);
    const QDateTime time = QDateTime::fromString(QString(text).replace(u' ', u'T'), Qt::ISODate);
    if (!time.isValid())
        return text;
    return time.toString(text.contains(u':') ? QStringLiteral("dd/MM/yyyy HH:mm")
                                             : QStringLiteral("dd/MM/yyyy"));
}

/// The address of a notice where it can be opened.
QUrl AddressOf(const TNotice* notice) {
    const QUrl url = notice != nullptr ? QUrl(ToQt(notice->Address), QUrl::StrictMode) : QUrl();
    return url.scheme() == QLatin1String("https") && !url.host().isEmpty() ? url : QUrl();
}

} // namespace

TFNotices::TFNotices(QWidget* owner)
    : QDialog(owner), box_(TDatabase(), [this](const std::string& reason) { failure_ = ToQt(reason); }),
      table_(new TCellTable(QStringLiteral("Avisos"),
                            {QStringLiteral("Situação"), QStringLiteral("Data"), QStringLiteral("Nível"),
                             QStringLiteral("Assunto")},
                            3)),
      text_(new QTextBrowser), unread_(new QCheckBox(QStringLiteral("Só os &não lidos"))),
      open_(new QPushButton(QStringLiteral("&Abrir endereço"))),
      read_(new QPushButton(QStringLiteral("Marcar como &lido"))),
      allRead_(new QPushButton(QStringLiteral("Marcar &todos como lidos"))),
      delete_(new QPushButton(QStringLiteral("&Excluir"))) {
    setWindowTitle(QStringLiteral("Avisos"));
    text_->setAccessibleName(QStringLiteral("Aviso selecionado por inteiro"));
    text_->setOpenLinks(false);
    text_->setTabChangesFocus(true);
    auto* const parts = new QSplitter(Qt::Vertical);
    parts->addWidget(table_);
    parts->addWidget(text_);
    parts->setStretchFactor(0, 2);
    parts->setStretchFactor(1, 1);
    parts->setChildrenCollapsible(false);
    auto* const close = new QPushButton(QStringLiteral("Fechar"));
    auto* const buttons = new QHBoxLayout;
    for (QPushButton* button : {open_, read_, allRead_, delete_, close}) {
        button->setAutoDefault(false);
        if (button == close)
            buttons->addStretch();
        buttons->addWidget(button);
    }
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(unread_);
    lines->addWidget(parts, 1);
    lines->addLayout(buttons);
    resize(kSize);

    const auto settings = WindowSettings();
    restoreGeometry(settings->value(QStringLiteral("avisos/janela")).toByteArray());
    unread_->setChecked(settings->value(QStringLiteral("avisos/naoLidos")).toBool());
    connect(unread_, &QCheckBox::toggled, this, &TFNotices::Fill);
    connect(table_, &QTableWidget::itemSelectionChanged, this, &TFNotices::ShowSelected);
    connect(open_, &QPushButton::clicked, this, &TFNotices::OpenAddress);
    connect(read_, &QPushButton::clicked, this, [this] { Change(false, &TNoticeBox::MarkRead); });
    connect(allRead_, &QPushButton::clicked, this, [this] { Change(true, &TNoticeBox::MarkRead); });
    connect(delete_, &QPushButton::clicked, this, [this] { Change(false, &TNoticeBox::Delete); });
    connect(new QShortcut(QKeySequence::Delete, table_, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, delete_, &QPushButton::click);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    Fill();
    table_->selectRow(0);
    table_->setFocus();
}

TFNotices::~TFNotices() {
    const auto settings = WindowSettings();
    settings->setValue(QStringLiteral("avisos/janela"), saveGeometry());
    settings->setValue(QStringLiteral("avisos/naoLidos"), unread_->isChecked());
}

void TFNotices::Fill() {
    const int selected = table_->SelectedRow();
    notices_ = box_.Notices(!unread_->isChecked());
    std::vector<QStringList> rows;
    rows.reserve(notices_.size());
    for (const TNotice& notice : notices_)
        rows.push_back({notice.Read ? QStringLiteral("Lido") : QStringLiteral("Novo"), DateText(notice.Date),
                        QString::fromUtf8(kLevels.at(static_cast<std::size_t>(notice.Level))),
                        ToQt(notice.Title)});
    table_->SetRows(rows);
    if (!rows.empty())
        table_->selectRow(std::clamp(selected, 0, static_cast<int>(rows.size()) - 1));
    ShowSelected();
}

const TNotice* TFNotices::Selected() const {
    const int row = table_->SelectedRow();
    return row >= 0 && row < static_cast<int>(notices_.size()) ? &notices_[static_cast<std::size_t>(row)]
                                                               : nullptr;
}

void TFNotices::ShowSelected() {
    const TNotice* const notice = Selected();
    QString text = notice != nullptr      ? ToQt(notice->Title) + QStringLiteral("\n\n") + ToQt(notice->Text)
                   : !failure_.isEmpty()  ? failure_
                   : unread_->isChecked() ? QStringLiteral("Não há avisos por ler.")
                                          : QStringLiteral("Não há avisos.");
    if (notice != nullptr && !notice->Address.empty())
        text += QStringLiteral("\n\n") + ToQt(notice->Address);
    text_->setPlainText(text);
    open_->setEnabled(!AddressOf(notice).isEmpty());
    read_->setEnabled(notice != nullptr && !notice->Read);
    allRead_->setEnabled(std::ranges::any_of(notices_, [](const TNotice& other) { return !other.Read; }));
    delete_->setEnabled(notice != nullptr);
}

void TFNotices::Change(bool all, bool (TNoticeBox::*change)(std::int64_t)) {
    if (all) {
        for (const TNotice& notice : notices_)
            if (!notice.Read)
                (box_.*change)(notice.Number);
    } else if (const TNotice* notice = Selected()) {
        (box_.*change)(notice->Number);
    }
    Fill();
}

void TFNotices::OpenAddress() {
    const QUrl url = AddressOf(Selected());
    if (!url.isEmpty() && !QDesktopServices::openUrl(url))
        ShowFailure(this, windowTitle(),
                    "O endereço não pôde ser aberto. Copie-o do texto do aviso para o navegador.");
}

} // namespace conferix
