#include "app/desktop/dark_style.h"

#include "app/desktop/theme.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>

#include <utility>

namespace conferix {

namespace {

/// Where the letters of what is disabled stand between their ground (0) and other letters (1).
constexpr double kDisabled = 0.55;

} // namespace

void TDarkStyle::Install() {
    // Qt takes "windows" where Windows is dark, which its native style cannot be.
    const QString style = QApplication::style()->name();
    if (style != QLatin1String("fusion") && style != QLatin1String("windows"))
        return;
    QApplication::setStyle(new TDarkStyle(QStringLiteral("fusion")));
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the application takes the style over

void TDarkStyle::polish(QPalette& palette) {
    QProxyStyle::polish(palette);
    if (!IsDark(palette))
        return;
    for (const auto& [letters, ground] :
         {std::pair(QPalette::WindowText, QPalette::Window), std::pair(QPalette::Text, QPalette::Base),
          std::pair(QPalette::ButtonText, QPalette::Button)}) {
        const QColor from = palette.color(QPalette::Active, ground);
        const QColor to = palette.color(QPalette::Active, letters);
        const auto between = [](int one, int other) {
            return one + static_cast<int>((other - one) * kDisabled);
        };
        palette.setColor(QPalette::Disabled, letters,
                         QColor(between(from.red(), to.red()), between(from.green(), to.green()),
                                between(from.blue(), to.blue())));
    }
}

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
