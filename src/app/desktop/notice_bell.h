#pragma once

#include "data/notice_box.h"

#include <QToolButton>

#include <functional>

namespace conferix {

/// The bell of the window: how many notices are unread.
class TNoticeBell : public QToolButton {
    Q_OBJECT

  public:
    explicit TNoticeBell(QWidget* parent = nullptr);

    /// Puts what the program has to tell of what is installed into the inbox, beside, and counts again.
    void NoteInstalled();
    /// Puts notices into the inbox and counts again.
    void Note(const std::function<void(TNoticeBox&)>& note);
    void Count();

  private:
    void Show(std::int64_t unread);
};

} // namespace conferix
