// Controls that can be told from a dark ground.
#pragma once

#include <QProxyStyle>

namespace conferix {

/// Qt's own style draws outlines darker than the ground; on a dark one nobody sees them. This adds light
/// outlines to boxes, buttons and what is pressed, and makes the letters of what is disabled readable. Other
/// styles know dark themes themselves, and stay as they are.
class TDarkStyle : public QProxyStyle {
    Q_OBJECT

  public:
    using QProxyStyle::QProxyStyle;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void polish(QPalette& palette) override;
    using QProxyStyle::polish;
    /// Puts it over the application's style where that needs it.
    static void Install();
};

} // namespace conferix
