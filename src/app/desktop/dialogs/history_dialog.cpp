#include "app/desktop/dialogs/history_dialog.h"

#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/dialog_parts.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace conferix {

namespace {

constexpr QSize kSize(940, 460);

QString VerdictText(const std::optional<bool>& valid) {
    if (!valid)
        return QStringLiteral("Não verificado");
    return *valid ? QStringLiteral("Válido") : QStringLiteral("Inválido");
}

QStringList RowOf(const TValidationRecord& record) {
    const QFileInfo file(ToQt(record.File));
    return {
        QDateTime::fromString(ToQt(record.Time), Qt::ISODate).toString(QStringLiteral("dd/MM/yyyy HH:mm")),
        file.fileName(),
        VerdictText(record.Valid),
        ToQt(record.Versao),
        QString::number(record.Errors),
        QString::number(record.Warnings),
        file.path()};
}

} // namespace

TFHistory::TFHistory(TFileHistory& history, QWidget* owner)
    : QDialog(owner), history_(history),
      table_(new TCellTable(QStringLiteral("Validações"),
                            {QStringLiteral("Data"), QStringLiteral("Arquivo"), QStringLiteral("Resultado"),
                             QStringLiteral("Versão"), QStringLiteral("Erros"), QStringLiteral("Avisos"),
                             QStringLiteral("Pasta")},
                            6, this)),
      open_(new QPushButton(QStringLiteral("&Abrir"), this)),
      clear_(new QPushButton(QStringLiteral("&Limpar histórico"), this)) {
    setWindowTitle(QStringLiteral("Histórico de validações"));
    table_->SetNumbers({4, 5});
    auto* const close = new QPushButton(QStringLiteral("Fechar"), this);
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(clear_);
    buttons->addStretch();
    buttons->addWidget(open_);
    buttons->addWidget(close);
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(table_);
    lines->addLayout(buttons);
    resize(kSize);
    open_->setDefault(true);
    connect(open_, &QPushButton::clicked, this, &TFHistory::Choose);
    connect(table_, &QTableWidget::cellDoubleClicked, this, &TFHistory::Choose);
    connect(table_, &QTableWidget::itemSelectionChanged, this,
            [this] { open_->setEnabled(table_->SelectedRow() >= 0); });
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    connect(clear_, &QPushButton::clicked, this, [this] {
        if (!AskYesNo(this, windowTitle(),
                      "As validações anteriores e a lista de arquivos recentes serão esquecidas. Os arquivos "
                      "ficam como estão. Confirma?"))
            return;
        history_.Clear();
        Fill();
    });
    Fill();
}

void TFHistory::Fill() {
    records_ = history_.Validations();
    std::vector<QStringList> rows;
    rows.reserve(records_.size());
    for (const TValidationRecord& record : records_)
        rows.push_back(RowOf(record));
    table_->SetRows(rows);
    if (!rows.empty())
        table_->selectRow(0);
    open_->setEnabled(!rows.empty());
    clear_->setEnabled(!rows.empty());
}

void TFHistory::Choose() {
    const int row = table_->SelectedRow();
    if (row < 0)
        return;
    chosen_ = ToQt(records_[static_cast<std::size_t>(row)].File);
    accept();
}

} // namespace conferix
