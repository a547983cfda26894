// One page of paper on the screen.
#pragma once

#include "paper/drawing.h"

#include <QAbstractScrollArea>

#include <optional>
#include <vector>

namespace conferix {

/// Shows a page, scaled, with boxes on it that are pointed out. Paper is white in a dark window too.
class TPageView : public QAbstractScrollArea {
    Q_OBJECT

  public:
    /// How a page is scaled: to be seen whole, to fill the width, or in percent of its size.
    static constexpr int kWhole = 0;
    static constexpr int kFullWidth = -1;

    explicit TPageView(QWidget* parent = nullptr);

    /// Shows a page, or (nothing) what is said in its place.
    void ShowPage(std::optional<TPaperPage> page, const QString& instead = {});
    /// Points out boxes of the page that is shown, in a colour, by a thick broken frame and by an arrow; the
    /// first is scrolled to.
    void Mark(std::vector<TPaperRect> boxes);
    /// kWhole, kFullWidth or percent.
    void SetZoom(int zoom);
    /// Percent at which the page is shown now.
    double Percent() const;

  signals:
    /// The user goes on to another page.
    void PageWanted(int by);
    /// The user wants it larger (1) or smaller (-1).
    void ZoomWanted(int by);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    /// Pixels a millimetre at a hundred percent.
    double Unit() const;
    QSizeF PageSize(double percent) const;
    /// Where the page lies in the viewport.
    QRectF PageRect() const;
    void UpdateBars();
    /// Brings a place of the page, in millimetres, into the middle.
    void ScrollTo(const QPointF& place);
    void Turn(int by);

    std::optional<TPaperPage> page_;
    QString instead_;
    std::vector<TPaperRect> marks_;
    int zoom_ = kWhole;
    int wheel_ = 0; ///< turned beyond the end of the page, in eighths of a degree
};

} // namespace conferix
