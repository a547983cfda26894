#include "app/desktop/theme.h"

#include <QApplication>
#include <QHash>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <optional>
#include <utility>

// In a static library the linker leaves out what nobody names.
static void KeepIcons() {
    Q_INIT_RESOURCE(icones);
}

namespace conferix {

namespace {

/// A drawing of the program, larger than any icon: the shape of an icon in black, or a picture in its
/// colours.
const QImage& Drawing(const QString& name) {
    static QHash<QString, QImage> drawings;
    QImage& drawing = drawings[name];
    if (drawing.isNull()) {
        KeepIcons();
        drawing = QImage(QStringLiteral(":/icones/%1.png").arg(name))
                      .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }
    return drawing;
}

/// The program's picture, in its own colours.
class TPictureEngine : public QIconEngine {
  public:
    explicit TPictureEngine(QString name) : name_(std::move(name)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State /*state*/) override {
        const QSize size = (QSizeF(rect.size()) * painter->device()->devicePixelRatio()).toSize();
        painter->drawImage(
            rect,
            Colored(Drawing(name_).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation), mode));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new TPictureEngine(*this); }

  protected:
    virtual QImage Colored(QImage drawing, QIcon::Mode /*mode*/) const { return drawing; }

  private:
    QString name_;
};

/// An icon in the colour of a severity, or of the text of the moment.
class TIconEngine : public TPictureEngine {
  public:
    explicit TIconEngine(const QString& name, std::optional<TMessageType> severity = std::nullopt)
        : TPictureEngine(name), severity_(severity) {}

    QIconEngine* clone() const override { return new TIconEngine(*this); }

  protected:
    QImage Colored(QImage drawing, QIcon::Mode mode) const override {
        const QPalette palette = QApplication::palette();
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const QColor color = severity_ && mode != QIcon::Disabled
                                 ? SeverityColor(*severity_, palette)
                                 : palette.color(group, mode == QIcon::Selected ? QPalette::HighlightedText
                                                                                : QPalette::WindowText);
        QPainter painter(&drawing);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(drawing.rect(), QColor(color.rgb()));
        return drawing;
    }

  private:
    std::optional<TMessageType> severity_;
};

} // namespace

bool IsDark(const QPalette& palette) {
    return palette.color(QPalette::Text).lightness() > palette.color(QPalette::Base).lightness();
}

TThemeColors ColorsOf(const QPalette& palette) {
    const bool dark = IsDark(palette);
    const auto of = [dark](const char* light, const char* onDark) { return QColor(dark ? onDark : light); };
    TThemeColors colors;
    colors.Tag = of("#00508c", "#7cc4ff");
    colors.Attribute = of("#8a4a00", "#f0b070");
    colors.Value = of("#1f6e2f", "#98d8a0");
    colors.Comment = of("#666666", "#a0a0a0");
    colors.Entity = of("#8b1a6b", "#f0a0dc");
    colors.MarginText = of("#5a5a5a", "#b0b0b0");
    colors.Margin = palette.color(QPalette::Window);
    colors.CurrentLine = of("#eaf3fb", "#2a3440");
    colors.MatchingTag = of("#3a8ed0", "#5fa8e0");
    colors.Found = of("#c08a00", "#e0b040");
    colors.Removed = of("#ffe3e0", "#4a2624");
    colors.Added = of("#def5e0", "#1f4027");
    return colors;
}

QColor SeverityColor(TMessageType type, const QPalette& palette) {
    const bool dark = IsDark(palette);
    switch (type) {
    case TMessageType::mtFatal:
    case TMessageType::mtError:
        return QColor(dark ? "#ff7b72" : "#b3261e");
    case TMessageType::mtWarning:
        return QColor(dark ? "#f0b849" : "#8a5a00");
    case TMessageType::mtSuccess:
        return QColor(dark ? "#7bd88f" : "#1b6e34");
    case TMessageType::mtInformation:
        break;
    }
    return QColor(dark ? "#79c0ff" : "#0b5cad");
}

QIcon IconOf(const QString& name) {
    return QIcon(new TIconEngine(name));
}

QIcon ProgramIcon() {
    return QIcon(new TPictureEngine(QStringLiteral("conferix")));
}

QIcon SeverityIcon(TMessageType type) {
    static const auto icon = [](const char* name, TMessageType of) {
        return QIcon(new TIconEngine(QString::fromLatin1(name), of));
    };
    switch (type) {
    case TMessageType::mtFatal:
        return icon("fatal", type);
    case TMessageType::mtError:
        return icon("erro", type);
    case TMessageType::mtWarning:
        return icon("aviso", type);
    case TMessageType::mtSuccess:
        return icon("sucesso", type);
    case TMessageType::mtInformation:
        break;
    }
    return icon("informacao", type);
}

QString SeverityName(TMessageType type) {
    switch (type) {
    case TMessageType::mtFatal:
        return QStringLiteral("Erro fatal");
    case TMessageType::mtError:
        return QStringLiteral("Erro");
    case TMessageType::mtWarning:
        return QStringLiteral("Aviso");
    case TMessageType::mtSuccess:
        return QStringLiteral("Sucesso");
    case TMessageType::mtInformation:
        break;
    }
    return QStringLiteral("Informação");
}

} // namespace conferix
