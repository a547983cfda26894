#include "app/desktop/ready_memory.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <mutex>
#include <new>
#include <utility>

namespace conferix {

namespace {

constexpr std::size_t kPage = 4096;

struct TReadyBlock {
    void* Start = nullptr;
    std::size_t Size = 0;
};
std::mutex readyMutex;
std::array<TReadyBlock, 8> ready; ///< as `operator new` looks here, it allocates nothing itself

bool Offer(const TReadyBlock& block) {
    const std::lock_guard lock(readyMutex);
    const auto place = std::ranges::find(ready, nullptr, &TReadyBlock::Start);
    if (place == ready.end())
        return false;
    *place = block;
    return true;
}

} // namespace

TReadyMemory::TReadyMemory(std::size_t count, std::size_t size) {
    for (std::size_t i = 0; i < count && size >= Least; ++i) {
        auto* block = static_cast<volatile char*>(std::malloc(size));
        if (block == nullptr)
            return;
        for (std::size_t at = 0; at < size; at += kPage)
            block[at] = 0;
        auto* start = const_cast<char*>(block);
        if (!Offer({start, size})) {
            std::free(start);
            return;
        }
        blocks_.push_back(start);
    }
}

TReadyMemory::~TReadyMemory() {
    const std::lock_guard lock(readyMutex);
    for (TReadyBlock& block : ready)
        if (block.Start != nullptr && std::ranges::find(blocks_, block.Start) != blocks_.end())
            std::free(std::exchange(block, {}).Start);
}

void* TReadyMemory::Take(std::size_t size) noexcept {
    const std::lock_guard lock(readyMutex);
    const auto block = std::ranges::find(ready, size, &TReadyBlock::Size);
    return block == ready.end() ? nullptr : std::exchange(*block, {}).Start;
}

} // namespace conferix

// All forms without an alignment, as a block of one may be freed by any other.

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    if (size >= conferix::TReadyMemory::Least)
        if (void* block = conferix::TReadyMemory::Take(size))
            return block;
    return std::malloc(std::max<std::size_t>(size, 1));
}

void* operator new(std::size_t size) {
    for (;;) {
        if (void* block = operator new(size, std::nothrow))
            return block;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}

void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
