#include "rules/documents/documents_validation.h"

#include "platform/utf8.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace conferix {

namespace {

/// True when all characters but the last are equal to the first: numbers like 111.111.111-11, whose check
/// digits may well be right. The last one is left out, so that 111.111.111-12 counts as well.
bool IsRepeatedCharacter(std::string_view value) {
    if (value.size() == 1)
        return false;
    while (value.size() > 1 && !StartsCharacter(value.back()))
        value.remove_suffix(1);
    value.remove_suffix(1);
    return value.find_first_not_of(value.substr(0, 1)) == std::string_view::npos;
}

/// The first `count` characters as digits; nothing when there are fewer or one is no digit.
template<std::size_t count>
std::optional<std::array<std::int64_t, count>> ReadDigits(std::string_view value) {
    if (value.size() < count)
        return std::nullopt;
    std::array<std::int64_t, count> digits{};
    for (std::size_t i = 0; i < count; ++i) {
        if (value[i] < '0' || value[i] > '9')
            return std::nullopt;
        digits[i] = value[i] - '0';
    }
    return digits;
}

/// Check digit over the first `count` digits, weighted from the right with 2, 3, ... up to `maxWeight` and
/// then from 2 again.
std::int64_t CheckDigit(const std::int64_t* digits, std::size_t count, std::int64_t maxWeight) {
    std::int64_t sum = 0;
    std::int64_t weight = 2;
    for (std::size_t i = count; i-- > 0;) {
        sum += digits[i] * weight;
        weight = weight == maxWeight ? 2 : weight + 1;
    }
    const std::int64_t digit = 11 - sum % 11;
    return digit >= 10 ? 0 : digit;
}

/// Whether the last two of the first `count` digits are the check digits of the others.
template<std::size_t count>
bool HasTwoCheckDigits(std::string_view value, std::int64_t maxWeight) {
    if (value.empty() || IsRepeatedCharacter(value))
        return false;
    const auto read = ReadDigits<count>(value);
    if (!read)
        return false;
    auto expected = *read;
    expected[count - 2] = CheckDigit(expected.data(), count - 2, maxWeight);
    expected[count - 1] = CheckDigit(expected.data(), count - 1, maxWeight);
    return expected == *read;
}

/// Sum of digits with the weights 15, 14, ...
template<std::size_t count>
std::int64_t CnsSum(const std::array<std::int64_t, count>& digits) {
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += digits[i] * (15 - static_cast<std::int64_t>(i));
    return sum;
}

bool IsValidProvisionalCns(std::string_view value) {
    const auto digits = ReadDigits<15>(value);
    return digits && CnsSum(*digits) % 11 == 0;
}

bool IsValidDefinitiveCns(std::string_view value) {
    constexpr std::size_t kBase = 11;
    const auto digits = ReadDigits<kBase>(value);
    if (!digits)
        return false;
    std::string expected(value.substr(0, kBase));
    const std::int64_t sum = CnsSum(*digits);
    const std::int64_t digit = 11 - sum % 11;
    if (digit == 10)
        expected += "001" + std::to_string(11 - (sum + 2) % 11);
    else
        expected += "000" + std::to_string(digit == 11 ? 0 : digit);
    return value == expected;
}

} // namespace

bool TDocumentsValidation::IsValidCpf(std::string_view value) {
    return HasTwoCheckDigits<11>(value, 11);
}

bool TDocumentsValidation::IsValidCnpj(std::string_view value) {
    return HasTwoCheckDigits<14>(value, 9);
}

bool TDocumentsValidation::IsValidCNS(std::string_view value) {
    if (value.empty())
        return false;
    const bool provisional = value.front() >= '7' && value.front() <= '9';
    return provisional ? IsValidProvisionalCns(value) : IsValidDefinitiveCns(value);
}

} // namespace conferix
