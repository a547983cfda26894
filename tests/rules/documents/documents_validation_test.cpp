#include "rules/documents/documents_validation.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace conferix {
namespace {

struct TCase {
    std::string_view value;
    bool valid;
    const char* why;
};

template<std::size_t count>
void Expect(bool (*isValid)(std::string_view), const TCase (&cases)[count]) {
    for (const TCase& c : cases)
        EXPECT_EQ(isValid(c.value), c.valid) << '"' << c.value << "\": " << c.why;
}

TEST(DocumentsValidation, Cpf) {
    const TCase cases[] = {
        {"52998224725", true, "right digits"},
        {"52998224726", false, "wrong second digit"},
        {"52998224715", false, "wrong first digit"},
        {"52998224625", false, "wrong digit before the check digits"},
        {"10000004600", true, "both remainders give 10, written 0"},
        {"10000003700", true, "first remainder gives 11, second 11"},
        {"00000000191", true, "leading zeros"},
        {"00000000000", false, "repeated, though the check digits are right"},
        {"11111111111", false, "repeated"},
        {"11111111112", false, "repeated but for the last character"},
        {"529982247250", true, "judged by the first 11"},
        {"52998224725abc", true, "judged by the first 11, whatever follows"},
        {"000000000001", false, "repeated but for the last of twelve"},
        {"00000000000\xC3\xA9", false, "the last character may take two bytes"},
        {"000000000001\xC3\xA9", true, "two characters follow: no longer all but one equal"},
        {"5299822472", false, "one short"},
        {"529.982.247-25", false, "punctuation"},
        {" 52998224725", false, "blank"},
        {"5299822472x", false, "letter"},
        {"", false, "empty"},
        {"5", false, "one character"},
        {"52", false, "two characters"},
        {"\xC3\xA9", false, "one character of two bytes"},
        {"\x80\x80", false, "no character at all"},
    };
    Expect(&TDocumentsValidation::IsValidCpf, cases);
}

TEST(DocumentsValidation, Cnpj) {
    const TCase cases[] = {
        {"11222333000181", true, "right digits"},
        {"11222333000180", false, "wrong second digit"},
        {"11222333000171", false, "wrong first digit"},
        {"11444777000161", true, "right digits"},
        {"00000000000191", true, "leading zeros"},
        {"99999999999962", true, "repeated but for the last two"},
        {"00000000000000", false, "repeated, though the check digits are right"},
        {"11111111111119", false, "repeated but for the last character"},
        {"11222333000181X", true, "judged by the first 14"},
        {"1122233300018", false, "one short"},
        {"11.222.333/0001-81", false, "punctuation"},
        {"AB222333000181", false, "letters"},
        {"", false, "empty"},
    };
    Expect(&TDocumentsValidation::IsValidCnpj, cases);
}

TEST(DocumentsValidation, Cns) {
    const TCase cases[] = {
        {"700000000000005", true, "provisional with 7"},
        {"800000000000001", true, "provisional with 8"},
        {"900000000000008", true, "provisional with 9"},
        {"700000000000006", false, "sum is no multiple of 11"},
        {"7000000000000059", true, "provisional, judged by the first 15"},
        {"70000000000000", false, "provisional, one short"},
        {"70000000000000x", false, "provisional, letter"},
        {"100000000000007", true, "definitive"},
        {"100000000000008", false, "definitive, wrong digit"},
        {"100000000000107", false, "definitive, the three digits before the last are not 000"},
        {"100000000080000", true, "definitive, the digit computes to 11, written 0"},
        {"100000000060018", true, "definitive, the digit computes to 10: 001 and the next one"},
        {"100000000060008", false, "definitive, the digit computes to 10 without 001"},
        {"012345678900006", true, "the first digit need not be 1 or 2"},
        {"512345678900008", true, "the first digit need not be 1 or 2"},
        {"1000000000000070", false, "definitive, a 16th character"},
        {"100000000000007 ", false, "definitive, a blank after it"},
        {"10000000000000", false, "definitive, one short"},
        {"1000000000", false, "definitive, shorter than its base"},
        {"1000000000x0007", false, "definitive, letter in the base"},
        {"111111111110000", true, "definitive, repeated digits are no fault of it"},
        {"", false, "empty"},
    };
    Expect(&TDocumentsValidation::IsValidCNS, cases);
}

} // namespace
} // namespace conferix
