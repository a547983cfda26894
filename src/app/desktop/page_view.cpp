#include "app/desktop/page_view.h"

#include "app/desktop/paper_painter.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace conferix {

namespace {

constexpr int kMargin = 12; ///< pixels around the page
constexpr double kMillimetresPerInch = 25.4;
constexpr double kHundred = 100;

// Of a marked box; millimetres.
constexpr double kMarkPen = 0.7;
constexpr double kMarkGap = 0.6;
constexpr double kArrow = 4;
const QColor kMarkColor(179, 38, 30);
const QColor kMarkGround(255, 214, 0, 70);

QRectF MarkOf(const TPaperRect& box) {
    return QRectF(box.X, box.Y, box.Width, box.Height).adjusted(-kMarkGap, -kMarkGap, kMarkGap, kMarkGap);
}

/// An arrow that points at a box from the left.
QPainterPath ArrowAt(const QRectF& box) {
    const QPointF point(box.left() - kMarkGap, box.center().y());
    QPainterPath arrow(point);
    arrow.lineTo(point + QPointF(-kArrow, -kArrow / 2));
    arrow.lineTo(point + QPointF(-kArrow, kArrow / 2));
    arrow.closeSubpath();
    return arrow;
}

} // namespace

TPageView::TPageView(QWidget* parent) : QAbstractScrollArea(parent) {
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Mid);
    viewport()->setAutoFillBackground(true);
}

void TPageView::ShowPage(std::optional<TPaperPage> page, const QString& instead) {
    page_ = std::move(page);
    instead_ = instead;
    marks_.clear();
    UpdateBars();
    verticalScrollBar()->setValue(0);
    viewport()->update();
}

void TPageView::Mark(std::vector<TPaperRect> boxes) {
    marks_ = std::move(boxes);
    if (!marks_.empty())
        ScrollTo(MarkOf(marks_.front()).center());
    viewport()->update();
}

void TPageView::ScrollTo(const QPointF& place) {
    if (!page_)
        return;
    const QPointF pixels = place * (Unit() * Percent() / kHundred);
    horizontalScrollBar()->setValue(static_cast<int>(pixels.x()) + kMargin - viewport()->width() / 2);
    verticalScrollBar()->setValue(static_cast<int>(pixels.y()) + kMargin - viewport()->height() / 2);
}

void TPageView::SetZoom(int zoom) {
    // What is pointed out, or stands in the middle, stays in sight.
    QPointF middle;
    if (!marks_.empty())
        middle = MarkOf(marks_.front()).center();
    else if (page_)
        middle =
            (QRectF(viewport()->rect()).center() - PageRect().topLeft()) / (Unit() * Percent() / kHundred);
    zoom_ = zoom;
    UpdateBars();
    ScrollTo(middle);
    viewport()->update();
}

double TPageView::Unit() const {
    return logicalDpiX() / kMillimetresPerInch;
}

double TPageView::Percent() const {
    if (zoom_ > 0 || !page_)
        return std::max(zoom_, 1);
    // Without the bar, so that it does not come and go.
    const double across =
        maximumViewportSize().width() - 2 * kMargin - verticalScrollBar()->sizeHint().width();
    const double down = maximumViewportSize().height() - 2 * kMargin;
    const double width = across / (page_->Width * Unit());
    return std::max(
        1.0, kHundred * (zoom_ == kFullWidth ? width : std::min(width, down / (page_->Height * Unit()))));
}

QSizeF TPageView::PageSize(double percent) const {
    return QSizeF(page_->Width, page_->Height) * Unit() * percent / kHundred;
}

QRectF TPageView::PageRect() const {
    const QSizeF size = PageSize(Percent());
    const auto start = [](double room, double length, int scrolled) {
        return std::max((room - length) / 2, static_cast<double>(kMargin)) - scrolled;
    };
    return {QPointF(start(viewport()->width(), size.width(), horizontalScrollBar()->value()),
                    start(viewport()->height(), size.height(), verticalScrollBar()->value())),
            size};
}

void TPageView::UpdateBars() {
    const QSize size = page_ ? PageSize(Percent()).toSize() + QSize(2 * kMargin, 2 * kMargin) : QSize();
    const auto update = [](QScrollBar& bar, int length, int room) {
        bar.setRange(0, std::max(0, length - room));
        bar.setPageStep(room);
        bar.setSingleStep(std::max(1, room / 12));
    };
    update(*horizontalScrollBar(), size.width(), viewport()->width());
    update(*verticalScrollBar(), size.height(), viewport()->height());
}

void TPageView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(viewport());
    if (!page_) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.fillRect(viewport()->rect(), palette().color(QPalette::Window));
        painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, instead_);
        return;
    }
    const QRectF place = PageRect();
    painter.fillRect(place, Qt::white);
    painter.translate(place.topLeft());
    const double scale = place.width() / page_->Width;
    DrawPaper(painter, *page_, scale);
    painter.scale(scale, scale);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const TPaperRect& box : marks_) {
        const QRectF mark = MarkOf(box);
        painter.setPen(QPen(kMarkColor, kMarkPen, Qt::DashLine));
        painter.setBrush(kMarkGround);
        painter.drawRect(mark);
        painter.fillPath(ArrowAt(mark), kMarkColor);
    }
}

void TPageView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    UpdateBars();
}

void TPageView::Turn(int by) {
    emit PageWanted(by);
    if (by < 0)
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void TPageView::keyPressEvent(QKeyEvent* event) {
    const QScrollBar& bar = *verticalScrollBar();
    switch (event->key()) {
    case Qt::Key_PageDown:
        return bar.value() == bar.maximum() ? Turn(1) : QAbstractScrollArea::keyPressEvent(event);
    case Qt::Key_PageUp:
        return bar.value() == bar.minimum() ? Turn(-1) : QAbstractScrollArea::keyPressEvent(event);
    case Qt::Key_Home:
        return emit PageWanted(std::numeric_limits<int>::min());
    case Qt::Key_End:
        return emit PageWanted(std::numeric_limits<int>::max());
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

void TPageView::wheelEvent(QWheelEvent* event) {
    const int turned = event->angleDelta().y();
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        if (turned != 0)
            emit ZoomWanted(turned > 0 ? 1 : -1);
        return event->accept();
    }
    const QScrollBar& bar = *verticalScrollBar();
    const bool beyond = turned < 0 ? bar.value() == bar.maximum() : bar.value() == bar.minimum();
    if (!beyond || turned == 0) {
        wheel_ = 0;
        return QAbstractScrollArea::wheelEvent(event);
    }
    wheel_ += turned;
    if (std::abs(wheel_) >= QWheelEvent::DefaultDeltasPerStep)
        Turn(std::exchange(wheel_, 0) < 0 ? 1 : -1);
    event->accept();
}

} // namespace conferix
