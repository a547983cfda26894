#include "model/money.h"

#include "model/cases.h"

namespace conferix::tests {
namespace {

TEST(Money, RoundsToCentsAwayFromZero) {
    ExpectCases("money.casos", [](std::string_view, const auto& amount) {
        return fmt::format("{}\n", RoundMoney(std::stod(amount.first)));
    });
    EXPECT_EQ(RoundMoney(2.0L * 10.005L), 20.01);
}

TEST(Money, IsEqualWithinTheNoiseOfBinaryArithmeticOnly) {
    EXPECT_TRUE(SameMoney(33.33 + 33.33 + 33.34, 100.0));
    EXPECT_TRUE(SameMoney(0.1 + 0.2, 0.3));
    EXPECT_TRUE(SameMoney(0.0, 1e-12));
    EXPECT_FALSE(SameMoney(0.0, 1.1e-12));
    EXPECT_TRUE(SameMoney(1e6, 1e6 + 0.9e-6)) << "the tolerance grows with the smaller of the two";
    EXPECT_FALSE(SameMoney(1e6, 1e6 + 1.2e-6));
    EXPECT_FALSE(SameMoney(10.00, 10.01));
    EXPECT_FALSE(SameMoney(5.0, -5.0));
}

} // namespace
} // namespace conferix::tests
