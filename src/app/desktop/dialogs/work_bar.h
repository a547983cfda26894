#pragma once

#include <QWidget>

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>

class QLabel;
class QProgressBar;
class QPushButton;
class QThread;

namespace conferix {

/// What a piece of work beside the window may use; from its own thread.
struct TWork {
    const std::atomic<bool>& Stop; ///< set once the user has had enough
    std::function<void(const QString& what, double fraction)>
        Tell; ///< how far it is, 0 to 1; below 0: unknown
};

enum class TWorkKind : std::uint8_t { Reading, Changing };

/// Runs work beside the window, one piece at a time, and shows how far it is, with a button that stops it.
class TWorkBar : public QWidget {
    Q_OBJECT

  public:
    explicit TWorkBar(QWidget* parent = nullptr);
    /// Stops what runs, and waits for it.
    ~TWorkBar() override;

    bool Running() const { return thread_ != nullptr; }
    /// Something runs that changes what is installed.
    bool Changing() const { return Running() && kind_ == TWorkKind::Changing; }
    void Stop();
    /// Begins a piece of work. `done` is called in the window's thread once it has ended, with what it
    /// raised, or null; not where the bar is gone by then.
    void Run(TWorkKind kind, const QString& title, std::function<void(const TWork&)> work,
             std::function<void(std::exception_ptr)> done);

  signals:
    /// Work has begun or ended.
    void RunningChanged(bool running);
    void Told(const QString& what, double fraction);

  private:
    void Show(const QString& what, double fraction);

    QLabel* label_;
    QProgressBar* bar_;
    QPushButton* stop_;
    QThread* thread_ = nullptr;
    TWorkKind kind_ = TWorkKind::Reading;
    std::atomic<bool> stopped_{false};
};

/// What an exception tells the user.
QString ReasonOf(const std::exception_ptr& failure);

} // namespace conferix
