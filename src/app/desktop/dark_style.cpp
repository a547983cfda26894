#include "app/desktop/dark_style.h"

#include "app/desktop/theme.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>

namespace conferix {

void TDarkStyle::Install() {
    if (QApplication::style()->name() != QLatin1String("fusion"))
        return;
    QApplication::setStyle(new TDarkStyle(QStringLiteral("fusion")));
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the application takes the style over

void TDarkStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    const bool pressed = (option->state & State_On) != 0;
    QColor line = option->palette.color(QPalette::Active, QPalette::WindowText);
    const bool dark = IsDark(option->palette);
    if (dark && element == PE_PanelButtonTool && pressed) {
        QColor ground = option->palette.color(QPalette::Highlight);
        ground.setAlphaF(0.35F);
        painter->fillRect(option->rect, ground);
    } else {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
    if (!dark)
        return;
    qreal radius = 2;
    switch (element) {
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        line.setAlphaF(0.7F);
        break;
    case PE_IndicatorRadioButton:
        line.setAlphaF(0.7F);
        radius = option->rect.height() / 2.0;
        break;
    case PE_PanelButtonCommand:
        line.setAlphaF(0.3F);
        break;
    case PE_PanelButtonTool:
        if (!pressed)
            return;
        line.setAlphaF(0.6F);
        break;
    default:
        return;
    }
    if ((option->state & State_Enabled) == 0)
        line.setAlphaF(line.alphaF() / 2);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(line, 1));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter->restore();
}

} // namespace conferix
