#include "model/money.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace conferix {

TEST(Dinheiro, ArredondaACentavosParaLongeDeZero) {
    const struct {
        double Valor;
        double Esperado;
    } kCasos[] = {
        {1.005, 1.01},
        {-1.005, -1.01},
        {0.125, 0.13},
        {-0.125, -0.13},
        {10.005, 10.01},
        {2.675, 2.68},
        {1.0049, 1.00},
        {1.00499, 1.00},
        {1.0049994, 1.00},
        {1.0049996, 1.01},
        {33.333333, 33.33},
        {99999999.994, 99999999.99},
        {12345678.905, 12345678.91},
        {0.07, 0.07},
        {1e300, 1e300},
        {0.0, 0.0},
    };
    for (const auto& caso : kCasos)
        EXPECT_EQ(RoundMoney(caso.Valor), caso.Esperado) << caso.Valor;
    EXPECT_EQ(RoundMoney(2.0L * 10.005L), 20.01);
    EXPECT_FALSE(std::signbit(RoundMoney(-0.001))) << "um zero não tem sinal";
    EXPECT_TRUE(std::isinf(RoundMoney(std::numeric_limits<long double>::infinity())));
}

TEST(Dinheiro, IgualSoDentroDoRuidoBinario) {
    EXPECT_TRUE(SameMoney(33.33 + 33.33 + 33.34, 100.0));
    EXPECT_TRUE(SameMoney(0.1 + 0.2, 0.3));
    EXPECT_TRUE(SameMoney(0.0, 1e-12));
    EXPECT_FALSE(SameMoney(0.0, 1.1e-12));
    EXPECT_TRUE(SameMoney(1e6, 1e6 + 0.9e-6)) << "a tolerância cresce com o menor dos dois";
    EXPECT_FALSE(SameMoney(1e6, 1e6 + 1.2e-6));
    EXPECT_FALSE(SameMoney(10.00, 10.01));
    EXPECT_FALSE(SameMoney(5.0, -5.0));
}

} // namespace conferix
