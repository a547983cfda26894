#include "app/desktop/dialogs/choice_group.h"

#include <QStyle>
#include <QStyleOption>
#include <QStylePainter>
#include <QVBoxLayout>

#include <algorithm>

namespace conferix {

namespace {

constexpr int kTextFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap | Qt::TextShowMnemonic;
constexpr int kNarrowest = 200;    ///< width below which a caption is not squeezed
constexpr int kLineWidth = 440;    ///< width at which a caption is wrapped where nothing else decides
constexpr int kMargin = 2;         ///< around the text, for the frame of the focus
constexpr int kUnlimited = 100000; ///< height of a text to be measured

/// A caption in which no "&" stands for a key.
QString Escaped(QString caption) {
    return caption.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

TWrappingRadioButton::TWrappingRadioButton(const QString& caption, QWidget* parent)
    : QRadioButton(Escaped(caption), parent) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int TWrappingRadioButton::MarkWidth() const {
    return style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, nullptr, this) +
           style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing, nullptr, this);
}

int TWrappingRadioButton::HeightOfText(int width) const {
    return fontMetrics().boundingRect(QRect(0, 0, width, kUnlimited), kTextFlags, text()).height();
}

int TWrappingRadioButton::heightForWidth(int width) const {
    const int mark = style()->pixelMetric(QStyle::PM_ExclusiveIndicatorHeight, nullptr, this);
    return std::max(mark, HeightOfText(std::max(1, width - MarkWidth() - 2 * kMargin))) + 2 * kMargin;
}

QSize TWrappingRadioButton::sizeHint() const {
    const int line = fontMetrics().size(Qt::TextShowMnemonic, text()).width() + MarkWidth() + 2 * kMargin;
    const int width = std::min(line, std::max(kNarrowest, kLineWidth));
    return {width, heightForWidth(width)};
}

QSize TWrappingRadioButton::minimumSizeHint() const {
    return {std::min(kNarrowest, sizeHint().width()), 0};
}

void TWrappingRadioButton::paintEvent(QPaintEvent* /*event*/) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRect text = QStyle::visualRect(layoutDirection(), rect(),
                                          rect().adjusted(MarkWidth() + kMargin, kMargin, -kMargin, 0));
    QStyleOptionButton mark = option;
    const int height = style()->pixelMetric(QStyle::PM_ExclusiveIndicatorHeight, nullptr, this);
    const int width = style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, nullptr, this);
    // Beside the first line.
    const int top = kMargin + std::max(0, (fontMetrics().height() - height) / 2);
    mark.rect = QStyle::visualRect(layoutDirection(), rect(), QRect(0, top, width, height));
    painter.drawPrimitive(QStyle::PE_IndicatorRadioButton, mark);
    painter.drawItemText(text, kTextFlags, palette(), isEnabled(), option.text, QPalette::WindowText);
    if ((option.state & QStyle::State_HasFocus) == 0)
        return;
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.backgroundColor = palette().color(QPalette::Window);
    focus.rect = style()
                     ->itemTextRect(fontMetrics(), text, kTextFlags, true, option.text)
                     .adjusted(-kMargin, -1, kMargin, 1);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
}

TChoiceGroup::TChoiceGroup(const QString& title, QWidget* parent)
    : QGroupBox(title, parent), lines_(new QVBoxLayout(this)) {
    lines_->setAlignment(Qt::AlignTop);
}

QRadioButton* TChoiceGroup::Add(const QString& caption) {
    auto* const choice = new TWrappingRadioButton(caption, this);
    lines_->addWidget(choice);
    choices_.push_back(choice);
    choice->setChecked(choices_.size() == 1);
    connect(choice, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            emit Changed();
    });
    return choice;
}

void TChoiceGroup::AddBelow(QWidget* widget) {
    auto* const line = new QVBoxLayout;
    line->addWidget(widget);
    AddBelow(line);
}

void TChoiceGroup::AddBelow(QLayout* layout) {
    layout->setContentsMargins(Indentation(), 0, 0, 0);
    lines_->addLayout(layout);
}

int TChoiceGroup::Chosen() const {
    const auto chosen =
        std::ranges::find_if(choices_, [](const QRadioButton* choice) { return choice->isChecked(); });
    return chosen == choices_.end() ? -1 : static_cast<int>(chosen - choices_.begin());
}

int TChoiceGroup::Indentation() const {
    return style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, nullptr, this) +
           style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing, nullptr, this);
}

} // namespace conferix
