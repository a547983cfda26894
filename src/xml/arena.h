#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
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

    /// Keeps copies of them side by side for the life of the arena.
    template<class T>
    std::span<const T> Copy(std::span<const T> objects) {
        static_assert(std::is_trivially_destructible_v<T>);
        T* const memory = static_cast<T*>(Allocate(objects.size_bytes(), alignof(T)));
        return {memory, std::uninitialized_copy(objects.begin(), objects.end(), memory)};
    }

  private:
    // Blocks grow with the document.
    static constexpr std::size_t kFirstBlock = std::size_t{256} * 1024;
    static constexpr std::size_t kLargestBlock = std::size_t{4} * 1024 * 1024;

    using TBlock = std::unique_ptr<std::byte[]>; // as aligned as memory of new is, hence for every type here

    static TBlock NewBlock(std::size_t size) { return std::make_unique_for_overwrite<std::byte[]>(size); }

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
