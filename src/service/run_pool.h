#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace conferix {

/// Threads that do work one piece after the other, and a short queue before them.
class TRunPool {
  public:
    /// Told the number of the thread that does it, 0-based.
    using TJob = std::function<void(std::size_t worker)>;

    TRunPool(std::size_t workers, std::size_t waiting);
    /// What waits is dropped; what runs is waited for.
    ~TRunPool();
    TRunPool(const TRunPool&) = delete;
    TRunPool& operator=(const TRunPool&) = delete;

    /// Answers false, with nothing done, where all threads are busy and the queue is full.
    bool TryPost(TJob job);

    struct TLoad {
        std::size_t Running;
        std::size_t Waiting;
    };
    TLoad Load() const;
    bool Full() const;
    /// True where nothing runs, now or within that time.
    bool IdleWithin(std::chrono::milliseconds time);
    /// Forgets what waits.
    void DropWaiting();

  private:
    void Work(std::size_t worker);
    bool FullLocked() const { return running_ + queue_.size() >= workers_ + waiting_; }

    const std::size_t workers_;
    const std::size_t waiting_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::condition_variable idle_;
    std::deque<TJob> queue_;
    std::size_t running_ = 0;
    bool ending_ = false;
    std::vector<std::jthread> threads_;
};

} // namespace conferix
