// Work that the user has to wait for, in a window that goes on answering.
#pragma once

#include "app/desktop/background.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>

class QProgressDialog;
class QWidget;

namespace conferix {

/// Keeps the window drawn while something is done that nothing else may interfere with: keys and clicks wait.
/// Where it takes longer, a dialog says what is being done, and offers to stop it where that can be.
class TPatience : public QObject {
    Q_OBJECT

  public:
    enum class TStop { No, Offered };
    /// `what`: "Salvando..."
    TPatience(QWidget* owner, QString what, TStop stop);
    ~TPatience() override;

    /// True while the user waits: what would change a text, or close it, has to wait too.
    static bool IsWaited() { return waited_ > 0; }

    /// To be called between two steps of a few milliseconds; false once the user wants to stop.
    bool Go();
    /// Does work in another thread and waits for it; answers its value, or raises what it raised.
    template<class Work>
    auto Await(Work work) {
        std::optional<TOutcome<decltype(work())>> outcome;
        RunBeside(this, std::move(work), [&outcome](auto done) { outcome.emplace(std::move(done)); });
        while (!outcome)
            HandleEvents(QEventLoop::WaitForMoreEvents);
        return outcome->Take();
    }

  private:
    void HandleEvents(QEventLoop::ProcessEventsFlag wait);

    static inline int waited_ = 0;
    QWidget* owner_;
    QString what_;
    TStop stop_;
    QElapsedTimer since_;
    QElapsedTimer turn_;
    QTimer waker_; ///< while nothing happens
    std::unique_ptr<QProgressDialog> dialog_;
};

} // namespace conferix
