// Check digits of the identity numbers that TISS files carry.
#pragma once

#include <cstddef>
#include <string_view>

namespace conferix {

inline constexpr std::size_t kCpfDigits = 11;
inline constexpr std::size_t kCnpjDigits = 14;
inline constexpr std::size_t kCnsDigits = 15;

/// Tells whether a number is a valid CPF, CNPJ or CNS. Each function judges the text exactly as it stands in
/// the file: punctuation and blanks make it invalid. None raises.
class TDocumentsValidation {
  public:
    TDocumentsValidation() = delete;

    /// CPF, a person's taxpayer number: two check digits over nine. Only the first 11 characters are read.
    static bool IsValidCpf(std::string_view value);
    /// CNPJ, a company's taxpayer number: two check digits over twelve. Only the first 14 characters are
    /// read.
    static bool IsValidCnpj(std::string_view value);
    /// CNS, the national health card number. Of a provisional card (first digit 7, 8 or 9) only the first 15
    /// characters are read; a definitive one has 15 digits and nothing else.
    static bool IsValidCNS(std::string_view value);
};

} // namespace conferix
