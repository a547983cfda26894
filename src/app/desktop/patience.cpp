#include "app/desktop/patience.h"

#include <QProgressDialog>

namespace conferix {

namespace {

/// Milliseconds between two turns of the event loop, and until the dialog comes up.
constexpr int kTurn = 20;
constexpr int kUntilDialog = 600;

} // namespace

TPatience::TPatience(QWidget* owner, QString what, TStop stop)
    : owner_(owner), what_(std::move(what)), stop_(stop) {
    ++waited_;
    since_.start();
    turn_.start();
    waker_.start(kUntilDialog / 4);
}

TPatience::~TPatience() {
    --waited_;
}

bool TPatience::Go() {
    if (turn_.elapsed() >= kTurn) {
        HandleEvents(QEventLoop::AllEvents);
        turn_.restart();
    }
    return dialog_ == nullptr || !dialog_->wasCanceled();
}

void TPatience::HandleEvents(QEventLoop::ProcessEventsFlag wait) {
    if (dialog_ == nullptr && since_.hasExpired(kUntilDialog)) {
        dialog_ = std::make_unique<QProgressDialog>(
            what_, stop_ == TStop::Offered ? QStringLiteral("Parar") : QString(), 0, 0, owner_);
        dialog_->setWindowModality(Qt::ApplicationModal);
        dialog_->setMinimumDuration(0);
        dialog_->show();
    }
    // The dialog keeps keys and clicks from what is behind it.
    QCoreApplication::processEvents(
        wait | (dialog_ == nullptr ? QEventLoop::ExcludeUserInputEvents : QEventLoop::AllEvents));
}

} // namespace conferix
