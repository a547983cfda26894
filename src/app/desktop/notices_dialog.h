// The inbox of the program.
#pragma once

#include "data/notice_box.h"

#include <QDialog>

#include <vector>

class QCheckBox;
class QPushButton;
class QTextBrowser;

namespace conferix {

class TCellTable;

/// Shows the notices; marks them as read, deletes them, and opens the address of one when the user asks for
/// it.
class TFNotices : public QDialog {
    Q_OBJECT

  public:
    explicit TFNotices(QWidget* owner = nullptr);
    ~TFNotices() override;

  private:
    void Fill();
    void ShowSelected();
    const TNotice* Selected() const;
    /// Does something with the notice that is selected, or (all) with each that is not read.
    void Change(bool all, bool (TNoticeBox::*change)(std::int64_t));
    void OpenAddress();

    QString failure_; ///< why there are none
    TNoticeBox box_;
    std::vector<TNotice> notices_;
    TCellTable* table_;
    QTextBrowser* text_;
    QCheckBox* unread_;
    QPushButton* open_;
    QPushButton* read_;
    QPushButton* allRead_;
    QPushButton* delete_;
};

} // namespace conferix
