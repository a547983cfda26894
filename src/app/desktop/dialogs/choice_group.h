#pragma once

#include <QGroupBox>
#include <QRadioButton>

#include <vector>

class QVBoxLayout;

namespace conferix {

/// A radio button whose caption goes on in further lines where its width asks for them.
class TWrappingRadioButton : public QRadioButton {
    Q_OBJECT

  public:
    explicit TWrappingRadioButton(const QString& caption, QWidget* parent = nullptr);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& place) const override { return rect().contains(place); }

  private:
    /// Width that the mark and the gap behind it take.
    int MarkWidth() const;
    int HeightOfText(int width) const;
};

/// A frame with one choice of several.
class TChoiceGroup : public QGroupBox {
    Q_OBJECT

  public:
    explicit TChoiceGroup(const QString& title, QWidget* parent = nullptr);

    /// Adds a choice below the others; the first one is the chosen one until another is.
    QRadioButton* Add(const QString& caption);
    /// Adds something that belongs to the choice above it, moved in.
    void AddBelow(QWidget* widget);
    void AddBelow(QLayout* layout);

    int Chosen() const; ///< 0-based; -1 without choices
    void Choose(int index) { choices_[static_cast<std::size_t>(index)]->setChecked(true); }
    const std::vector<QRadioButton*>& Choices() const { return choices_; }

  signals:
    void Changed();

  private:
    int Indentation() const;

    std::vector<QRadioButton*> choices_;
    QVBoxLayout* lines_;
};

} // namespace conferix
