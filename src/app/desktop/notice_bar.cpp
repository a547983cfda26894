#include "app/desktop/notice_bar.h"

#include "app/desktop/theme.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

namespace conferix {

TNoticeBar::TNoticeBar(QWidget* parent) : QWidget(parent), rows_(new QVBoxLayout(this)) {
    rows_->setContentsMargins(0, 0, 0, 0);
    rows_->setSpacing(2);
}

void TNoticeBar::Show(const QString& key, const QString& text, const std::vector<TButton>& buttons) {
    Hide(key);
    auto* notice = new QFrame;
    notice->setObjectName(QStringLiteral("aviso_") + key);
    notice->setFrameShape(QFrame::StyledPanel);
    notice->setAccessibleName(text);
    auto* row = new QHBoxLayout(notice);
    row->setContentsMargins(8, 4, 4, 4);
    auto* icon = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    icon->setPixmap(SeverityIcon(TMessageType::mtWarning).pixmap(QSize(size, size), devicePixelRatioF()));
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    row->addWidget(icon);
    row->addWidget(label, 1);
    for (const auto& [caption, action] : buttons) {
        auto* button = new QPushButton(caption);
        connect(button, &QPushButton::clicked, this, [this, key, action = action] {
            Hide(key);
            action();
        });
        row->addWidget(button);
    }
    auto* close = new QToolButton;
    close->setAutoRaise(true);
    close->setIcon(IconOf(QStringLiteral("fechar")));
    close->setAccessibleName(QStringLiteral("Dispensar o aviso"));
    close->setToolTip(close->accessibleName());
    close->setFocusPolicy(Qt::TabFocus);
    connect(close, &QToolButton::clicked, this, [this, key] { Hide(key); });
    row->addWidget(close);
    rows_->addWidget(notice);
    notices_.insert(key, notice);
}

void TNoticeBar::Hide(const QString& key) {
    if (QWidget* notice = notices_.take(key)) {
        notice->hide();
        notice->deleteLater();
    }
}

} // namespace conferix
