#include "app/desktop/welcome_page.h"

#include "app/desktop/theme.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace conferix {

TWelcomePage::TWelcomePage(QWidget* parent) : QWidget(parent) {
    auto* rows = new QVBoxLayout(this);
    rows->setAlignment(Qt::AlignCenter);
    rows->setSpacing(12);
    auto* icon = new QLabel;
    icon->setPixmap(ProgramIcon().pixmap(QSize(96, 96), devicePixelRatioF()));
    icon->setAlignment(Qt::AlignCenter);
    rows->addWidget(icon);
    auto* text = new QLabel(QStringLiteral("1. Arraste para cá os arquivos XML do padrão TISS, ou abra-os.\n"
                                           "2. Vá de mensagem em mensagem: Enter leva ao lugar no texto.\n"
                                           "3. Corrija uma a uma, ou tudo de uma vez, e salve."));
    text->setObjectName(QStringLiteral("primeirosPassos"));
    QFont larger = text->font();
    larger.setPointSizeF(larger.pointSizeF() * 1.3);
    text->setFont(larger);
    rows->addWidget(text, 0, Qt::AlignCenter);
    auto* buttons = new QHBoxLayout;
    buttons->setAlignment(Qt::AlignCenter);
    auto* open = new QPushButton(IconOf(QStringLiteral("abrir")), QStringLiteral("Ab&rir arquivos..."));
    auto* example = new QPushButton(IconOf(QStringLiteral("arquivo")), QStringLiteral("Abrir &um exemplo"));
    open->setDefault(true);
    connect(open, &QPushButton::clicked, this, &TWelcomePage::OpenWanted);
    connect(example, &QPushButton::clicked, this, &TWelcomePage::ExampleWanted);
    buttons->addWidget(open);
    buttons->addWidget(example);
    rows->addLayout(buttons);
}

} // namespace conferix
