#include "app/desktop/dialogs/import_result.h"

#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/terminology_state.h"
#include "platform/format_settings.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace conferix {

namespace {

constexpr QSize kSize(640, 440);

} // namespace

TFImportResult::TFImportResult(const TImportReport& report, QWidget* owner) : QDialog(owner) {
    setWindowTitle(QStringLiteral("Resultado da importação"));
    const TFormatSettings formats = TFormatSettings::Regional();
    auto* const tables =
        new TCellTable(QStringLiteral("Mudanças por tabela"),
                       {QStringLiteral("Tabela"), QStringLiteral("Novos"), QStringLiteral("Alterados"),
                        QStringLiteral("Encerrados"), QStringLiteral("Iguais")},
                       0, this);
    tables->SetNumbers({1, 2, 3, 4});
    std::vector<QStringList> rows;
    for (const auto& [table, changes] : report.Tables)
        rows.push_back({ToQt(table), ToQt(formats.Count(changes.Added)), ToQt(formats.Count(changes.Changed)),
                        ToQt(formats.Count(changes.Ended)), ToQt(formats.Count(changes.Same))});
    tables->SetRows(rows);
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(new QLabel(QStringLiteral("O que a importação mudou, em termos de cada tabela:"), this));
    lines->addWidget(tables, 2);
    if (const std::string notes = NotesOf(report); !notes.empty()) {
        auto* const text = new QPlainTextEdit(ToQt(notes), this);
        text->setReadOnly(true);
        text->setTabChangesFocus(true);
        text->setAccessibleName(QStringLiteral("Observações"));
        lines->addWidget(new QLabel(QStringLiteral("Observações:"), this));
        lines->addWidget(text, 1);
    }
    auto* const close = new QPushButton(QStringLiteral("Fechar"), this);
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(close);
    lines->addLayout(buttons);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    resize(kSize);
}

} // namespace conferix
