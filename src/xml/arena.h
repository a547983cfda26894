#pragma once

#include "platform/large_pages.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace conferix {

/// Memory of one document: objects and texts are carved out of blocks and freed together with the arena.
/// Nothing stored here has a destructor, so a document of a million nested elements is released at once.
class TArena {
  public:
    template<class T, class... Args>
    T* New(Args&&... args) {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (Allocate(sizeof(T), alignof(T))) T(std::forward<Args>(args)...);
    }

    /// Keeps a copy of the text for the life of the arena.
    std::string_view Copy(std::string_view text) {
        if (text.empty())
            return {};
        char* memory = static_cast<char*>(Allocate(text.size(), 1));
        std::copy(text.begin(), text.end(), memory);
        return {memory, text.size()};
    }

  private:
    // Blocks grow with the document, those of a large one by whole large pages.
    static constexpr std::size_t kFirstBlock = std::size_t{256} * 1024;
    static constexpr std::size_t kLargestBlock = 2 * kLargePage;

    struct TFree {
        std::align_val_t Alignment;
        void operator()(std::byte* block) const { ::operator delete(block, Alignment); }
    };
    using TBlock = std::unique_ptr<std::byte, TFree>;

    static TBlock NewBlock(std::size_t size) {
        const std::align_val_t alignment{size < kLargePage ? alignof(std::max_align_t) : kLargePage};
        TBlock block(static_cast<std::byte*>(::operator new(size, alignment)), TFree{alignment});
        PreferLargePages(block.get(), size);
        return block;
    }

    void* Allocate(std::size_t size, std::size_t alignment) {
        const std::size_t start = (used_ + alignment - 1) & ~(alignment - 1);
        if (blocks_.empty() || start + size > capacity_) {
            if (size > kFirstBlock / 4) {
                // A large piece gets a block of its own, placed before the current one, which stays in use.
                TBlock own = NewBlock(size);
                void* memory = own.get();
                blocks_.insert(blocks_.empty() ? blocks_.end() : blocks_.end() - 1, std::move(own));
                if (blocks_.size() == 1)
                    used_ = capacity_ = 0;
                return memory;
            }
            capacity_ = capacity_ == 0 ? kFirstBlock : std::min(2 * capacity_, kLargestBlock);
            blocks_.push_back(NewBlock(capacity_));
            used_ = size;
            return blocks_.back().get();
        }
        used_ = start + size;
        return blocks_.back().get() + start;
    }

    std::vector<TBlock> blocks_;
    std::size_t used_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace conferix
