#include "app/desktop/dialogs/recoding_dialog.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/recoding.h"

#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace conferix {

namespace {

constexpr QSize kSize(640, 360);
/// More than anybody reads.
constexpr std::size_t kMostLines = 1'000;

} // namespace

TFRecoding::TFRecoding(const QString& encoding, const TXmlMessages& replaced, QWidget* owner)
    : QDialog(owner) {
    setWindowTitle(QStringLiteral("Salvar com codificação"));
    const TRecodingList list = ListRecoding(replaced, kMostLines);
    QStringList changes;
    for (const std::string& line : list.Lines)
        changes << ToQt(line);
    if (list.Further != 0)
        changes << QStringLiteral("e mais %1").arg(QLocale().toString(list.Further));
    auto* const text = new QPlainTextEdit(changes.join(QLatin1Char('\n')), this);
    text->setReadOnly(true);
    text->setTabChangesFocus(true);
    text->setAccessibleName(QStringLiteral("O que muda"));
    const TEndButtons buttons = AddEndButtons(*this, QStringLiteral("&Salvar"));
    connect(buttons.Accept, &QPushButton::clicked, this, &QDialog::accept);
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(new QLabel(QStringLiteral("O que muda no texto ao salvar em %1:").arg(encoding), this));
    lines->addWidget(text);
    lines->addLayout(buttons.Line);
    buttons.Accept->setFocus();
    resize(kSize);
}

} // namespace conferix
