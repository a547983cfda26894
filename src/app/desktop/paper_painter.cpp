#include "app/desktop/paper_painter.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "paper/text_metrics.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <array>

namespace conferix {

namespace {

/// Letters are set in this size and scaled down, since sizes of fonts are whole pixels.
constexpr int kSetSize = 100;

QFont FontOf(TPaperFace face) {
    QFont font(QStringLiteral("Helvetica"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(kSetSize);
    font.setBold(face == TPaperFace::Bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

class TPaperPainter {
  public:
    explicit TPaperPainter(QPainter& painter) : painter_(painter) {}

    /// In millimetres.
    void Draw(const TDrawing& drawing) {
        for (const TPaperFrame& frame : drawing.Frames) {
            painter_.setPen(frame.Pen > 0 ? QPen(Qt::black, frame.Pen) : QPen(Qt::NoPen));
            painter_.setBrush(frame.Ground != 255 ? QBrush(QColor(frame.Ground, frame.Ground, frame.Ground))
                                                  : QBrush(Qt::NoBrush));
            painter_.drawRect(QRectF(frame.Place.X, frame.Place.Y, frame.Place.Width, frame.Place.Height));
        }
        for (const TPaperPicture& picture : drawing.Pictures)
            Draw(picture);
        for (const TPaperLine& line : drawing.Lines) {
            painter_.setPen(QPen(Qt::black, line.Pen));
            painter_.drawLine(QPointF(line.X1, line.Y1), QPointF(line.X2, line.Y2));
        }
        painter_.setPen(Qt::black);
        for (const TPaperText& text : drawing.Texts)
            Draw(text);
    }

  private:
    void Draw(const TPaperPicture& picture) {
        constexpr std::size_t kBytesOfPixel = 3;
        const TPaperImage& image = *picture.Image;
        const QImage pixels(reinterpret_cast<const uchar*>(image.Pixels.data()),
                            static_cast<int>(image.Width), static_cast<int>(image.Height),
                            static_cast<int>(kBytesOfPixel * image.Width), QImage::Format_RGB888);
        painter_.drawImage(
            QRectF(picture.Place.X, picture.Place.Y, picture.Place.Width, picture.Place.Height), pixels);
    }

    void Draw(const TPaperText& text) {
        const auto face = static_cast<std::size_t>(text.Face);
        const QString shown = ToQt(text.Text);
        const double width = metrics_[face].horizontalAdvance(shown);
        if (width <= 0)
            return;
        const QTransform before = painter_.transform();
        painter_.translate(text.X, text.Baseline);
        painter_.scale(TextWidth(text.Text, text.Face, text.Size) / width,
                       text.Size * kMillimetresPerPoint / kSetSize);
        painter_.setFont(fonts_[face]);
        painter_.drawText(QPointF(0, 0), shown);
        painter_.setTransform(before);
    }

    QPainter& painter_;
    std::array<QFont, 2> fonts_ = {FontOf(TPaperFace::Regular), FontOf(TPaperFace::Bold)};
    std::array<QFontMetricsF, 2> metrics_ = {QFontMetricsF(fonts_[0]), QFontMetricsF(fonts_[1])};
};

} // namespace

void DrawPaper(QPainter& painter, const TPaperPage& page, double scale) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.scale(scale, scale);
    TPaperPainter paper(painter);
    for (const auto& common : page.Common)
        paper.Draw(*common);
    paper.Draw(page.Own);
    painter.restore();
}

} // namespace conferix
