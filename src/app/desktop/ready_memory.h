// Large blocks of memory that are made ready beside the thread of the user interface.
#pragma once

#include <cstddef>
#include <vector>

namespace conferix {

/// The system hands memory out page by page, when each is written first: a text of 60 MB, which the editing
/// component keeps in two blocks, stops the window for a tenth of a second that way. Blocks made ready in
/// another thread are handed to the next who ask `operator new` for just so many bytes.
class TReadyMemory {
  public:
    TReadyMemory() = default;
    /// Makes `count` blocks of `size` bytes ready, or as many as the system gives; of less than Least bytes
    /// none.
    TReadyMemory(std::size_t count, std::size_t size);
    TReadyMemory(TReadyMemory&& other) noexcept = default;
    TReadyMemory& operator=(TReadyMemory&& other) noexcept {
        blocks_.swap(other.blocks_);
        return *this;
    }
    /// Gives back the blocks that nobody took.
    ~TReadyMemory();

    /// Blocks of fewer bytes are not worth it.
    static constexpr std::size_t Least = std::size_t{8} << 20U;

    /// A block of just `size` bytes that was made ready, now the caller's; nullptr for none.
    static void* Take(std::size_t size) noexcept;

  private:
    std::vector<void*> blocks_;
};

} // namespace conferix
