#include "app/desktop/notice_bell.h"

#include "app/desktop/background.h"
#include "app/desktop/theme.h"
#include "app/installation.h"
#include "app/notices.h"

#include <QLocale>

namespace conferix {

TNoticeBell::TNoticeBell(QWidget* parent) : QToolButton(parent) {
    setObjectName(QStringLiteral("sino"));
    setIcon(IconOf(QStringLiteral("sino")));
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    Show(0);
}

void TNoticeBell::NoteInstalled() {
    RunBeside(
        this, [] { return StateNotices(InstalledTerminology()); },
        [this](TOutcome<TNoticesOfSubjects> state) {
            Note([&](TNoticeBox& box) { NoteState(box, state.Take()); });
        });
}

void TNoticeBell::Note(const std::function<void(TNoticeBox&)>& note) {
    std::int64_t unread = 0;
    Notify([&](TNoticeBox& box) {
        note(box);
        unread = box.Unread();
    });
    Show(unread);
}

void TNoticeBell::Count() {
    Note([](TNoticeBox&) {});
}

void TNoticeBell::Show(std::int64_t unread) {
    setText(unread == 0 ? QString() : QLocale().toString(unread));
    const QString told = unread == 0   ? QStringLiteral("Avisos: nenhum por ler")
                         : unread == 1 ? QStringLiteral("Avisos: 1 por ler")
                                       : QStringLiteral("Avisos: %1 por ler").arg(QLocale().toString(unread));
    setAccessibleName(told);
    setToolTip(told);
}

} // namespace conferix
