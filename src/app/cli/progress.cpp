#include "app/cli/progress.h"

#include "report/console.h"

#include <fmt/format.h>

#include <ostream>

namespace conferix {

namespace {

constexpr std::chrono::milliseconds kDelay{1000};
constexpr std::chrono::milliseconds kInterval{200};
constexpr std::size_t kBarWidth = 24;

} // namespace

TProgressBar::TProgressBar(std::ostream& stream, bool terminal, std::size_t total)
    : stream_(stream), total_(total), start_(std::chrono::steady_clock::now()) {
    if (terminal)
        ticker_ = std::thread(&TProgressBar::Run, this);
}

TProgressBar::~TProgressBar() {
    if (!ticker_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
    }
    wake_.notify_all();
    ticker_.join();
    Clear();
}

void TProgressBar::Begin(const std::string& name) {
    const std::lock_guard lock(mutex_);
    current_ = Visible(name);
}

void TProgressBar::End() {
    const std::lock_guard lock(mutex_);
    ++done_;
}

void TProgressBar::Set(const std::string& name, std::size_t done) {
    const std::lock_guard lock(mutex_);
    current_ = Visible(name);
    done_ = done;
}

void TProgressBar::Clear() {
    const std::lock_guard lock(mutex_);
    if (drawnWidth_ != 0)
        stream_ << '\r' << std::string(drawnWidth_, ' ') << '\r' << std::flush;
    drawnWidth_ = 0;
}

void TProgressBar::Run() {
    std::unique_lock lock(mutex_);
    if (wake_.wait_for(lock, kDelay, [this] { return stop_; }))
        return;
    do
        Draw();
    while (!wake_.wait_for(lock, kInterval, [this] { return stop_; }));
}

void TProgressBar::Draw() {
    const std::size_t filled = total_ == 0 ? 0 : kBarWidth * done_ / total_;
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_).count();
    const std::string line = fmt::format(
        "[{}{}] {}/{}  {} s  {}", std::string(filled, '#'), std::string(kBarWidth - filled, '.'), done_,
        total_, seconds, current_.size() > 36 ? "..." + current_.substr(current_.size() - 33) : current_);
    const std::size_t blanks = drawnWidth_ > line.size() ? drawnWidth_ - line.size() : 0;
    stream_ << '\r' << line << std::string(blanks, ' ') << std::flush;
    drawnWidth_ = line.size();
}

} // namespace conferix
