#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace conferix {

/// What is true of an open file.
enum class TFileStateFlag : std::uint8_t {
    sfAberto,     ///< a file is open
    sfModificado, ///< the text was changed since opening or saving
    sfValidando,  ///< a validation is running
    sfValidado,   ///< the current text has been validated
    sfValido,     ///< the last validation found no error
    sfInvalido    ///< the last validation found at least one error
};

/// A set of state flags in one byte, bit n for the flag of ordinal n.
class TFileStateFlags {
  public:
    bool Contains(TFileStateFlag flag) const { return (bits_ & Bit(flag)) != 0; }
    void Include(TFileStateFlag flag) { bits_ = static_cast<std::uint8_t>(bits_ | Bit(flag)); }
    void Exclude(TFileStateFlag flag) { bits_ = static_cast<std::uint8_t>(bits_ & ~Bit(flag)); }
    void Clear() { bits_ = 0; }
    std::uint8_t Bits() const { return bits_; }
    /// Identifiers of the flags in the set, in ordinal order.
    std::vector<std::string_view> Names() const;
    bool operator==(const TFileStateFlags&) const = default;

  private:
    static std::uint8_t Bit(TFileStateFlag flag) {
        return static_cast<std::uint8_t>(1U << static_cast<unsigned>(flag));
    }

    std::uint8_t bits_ = 0;
};

} // namespace conferix
