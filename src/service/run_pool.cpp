#include "service/run_pool.h"

#include <utility>

namespace conferix {

TRunPool::TRunPool(std::size_t workers, std::size_t waiting) : workers_(workers), waiting_(waiting) {
    for (std::size_t worker = 0; worker < workers; ++worker)
        threads_.emplace_back([this, worker] { Work(worker); });
}

TRunPool::~TRunPool() {
    DropWaiting();
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
}

bool TRunPool::TryPost(TJob job) {
    {
        const std::lock_guard lock(mutex_);
        if (FullLocked())
            return false;
        queue_.push_back(std::move(job));
    }
    changed_.notify_one();
    return true;
}

TRunPool::TLoad TRunPool::Load() const {
    const std::lock_guard lock(mutex_);
    return {running_, queue_.size()};
}

bool TRunPool::Full() const {
    const std::lock_guard lock(mutex_);
    return FullLocked();
}

bool TRunPool::IdleWithin(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return idle_.wait_for(lock, time, [this] { return running_ == 0; });
}

void TRunPool::DropWaiting() {
    std::deque<TJob> dropped; // destroyed without the lock
    const std::lock_guard lock(mutex_);
    dropped.swap(queue_);
}

void TRunPool::Work(std::size_t worker) {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return ending_ || !queue_.empty(); });
        if (ending_)
            return;
        TJob job = std::move(queue_.front());
        queue_.pop_front();
        ++running_;
        lock.unlock();
        job(worker);
        job = nullptr;
        lock.lock();
        if (--running_ == 0)
            idle_.notify_all();
    }
}

} // namespace conferix
