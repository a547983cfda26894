// What a user has to know of a file, above its text.
#pragma once

#include <QMap>
#include <QWidget>

#include <functional>
#include <utility>
#include <vector>

class QVBoxLayout;

namespace conferix {

/// Notices one below the other, each with buttons and a way to put it away.
class TNoticeBar : public QWidget {
    Q_OBJECT

  public:
    using TButton = std::pair<QString, std::function<void()>>;

    explicit TNoticeBar(QWidget* parent = nullptr);
    /// `key` names the notice: another one of that name takes its place. A button that was pressed puts its
    /// notice away.
    void Show(const QString& key, const QString& text, const std::vector<TButton>& buttons = {});
    void Hide(const QString& key);
    bool IsShown(const QString& key) const { return notices_.contains(key); }

  private:
    QVBoxLayout* rows_;
    QMap<QString, QWidget*> notices_;
};

} // namespace conferix
