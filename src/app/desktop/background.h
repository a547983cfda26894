// Work that happens beside the user interface.
#pragma once

#include <QApplication>
#include <QPointer>
#include <QThreadPool>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace conferix {

/// What came of a piece of work: a value, or what it raised.
template<class Value>
class TOutcome {
  public:
    template<class Work>
    static TOutcome Of(Work& work) {
        TOutcome outcome;
        try {
            outcome.value_.emplace(work());
        } catch (...) {
            outcome.failure_ = std::current_exception();
        }
        return outcome;
    }
    /// The value; raises what the work raised.
    Value Take() {
        if (failure_ != nullptr)
            std::rethrow_exception(failure_);
        return std::move(*value_);
    }

  private:
    std::optional<Value> value_;
    std::exception_ptr failure_;
};

/// The threads of such work, which are waited for before the application ends. Qt's own pool is left to Qt:
/// it paints large areas in it, and the window would stand still until the work there is done.
QThreadPool& ThreadsBeside();

/// Does work in another thread, then hands its outcome to `done` in the thread of the user interface, unless
/// `owner` is gone by then. The work must touch nothing that others have. To be called in the thread of the
/// user interface.
template<class Work, class Done>
void RunBeside(QObject* owner, Work work, Done done) {
    using TValue = decltype(work());
    struct TTask {
        QPointer<QObject> Owner;
        Work Do;
        Done Tell;
        TOutcome<TValue> Outcome;
    };
    auto task = std::make_shared<TTask>(TTask{owner, std::move(work), std::move(done), {}});
    ThreadsBeside().start([task]() mutable {
        task->Outcome = TOutcome<TValue>::Of(task->Do);
        // The task ends where it began, since what it holds may belong to the user interface.
        QMetaObject::invokeMethod(
            qApp,
            [task = std::move(task)]() {
                if (task->Owner != nullptr)
                    task->Tell(std::move(task->Outcome));
            },
            Qt::QueuedConnection);
    });
}

/// Lets go of something large in another thread, which takes as long as making it.
template<class Value>
void LetGoBeside(Value value) {
    ThreadsBeside().start([held = std::move(value)] {});
}

} // namespace conferix
