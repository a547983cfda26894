#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <iosfwd>
#include <mutex>
#include <string>
#include <thread>

namespace conferix {

/// A progress bar on a terminal for work that takes over a second; on anything else it does nothing.
/// Threads may share it.
class TProgressBar {
  public:
    TProgressBar(std::ostream& stream, bool terminal, std::size_t total);
    /// Removes the bar.
    ~TProgressBar();
    TProgressBar(const TProgressBar&) = delete;
    TProgressBar& operator=(const TProgressBar&) = delete;

    /// Tells that a piece of work, named for the user, has begun or ended.
    void Begin(const std::string& name);
    void End();
    /// Tells how many pieces are done, and what is worked on now.
    void Set(const std::string& name, std::size_t done);
    /// Removes the bar from the terminal until it is drawn again, so that other output can be written.
    void Clear();

  private:
    void Run();
    void Draw();

    std::ostream& stream_;
    std::size_t total_;
    std::size_t done_ = 0;
    std::string current_;
    std::chrono::steady_clock::time_point start_;
    std::size_t drawnWidth_ = 0;
    bool stop_ = false;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::thread ticker_;
};

} // namespace conferix
