#include "model/informations.h"

#include "model/cases.h"

#include <gmock/gmock.h>

namespace conferix::tests {
namespace {

const TFormatSettings kBrazil = TFormatSettings::OfLocale({",", "."});

/// The groups as lines: "[title]" and "label=value".
std::string Told(const TInformations& groups) {
    std::string text;
    for (const TInformationGroup& group : groups) {
        text += fmt::format("[{}]\n", group.Titulo);
        for (const auto& [label, value] : group.Linhas)
            text += fmt::format("{}={}\n", label, value);
    }
    return text;
}

TEST(Informations, TellWhatAFileIs) {
    ExpectDocuments("informations.casos",
                    [](const std::string& xml) { return Told(LoadTiss(xml)->Informations(kBrazil)); });
}

TEST(Informations, NumbersAreWrittenAsToldElseAsTheUserDoes) {
    std::string guides;
    for (int i = 0; i < 1200; ++i)
        guides += "guiaHonorarios(valorTotalHonorarios=2.5)";
    const auto lot = LoadedMessage("3.05.00", Xml("guiasTISS(" + guides + ")"));
    EXPECT_THAT(Told(lot->Informations(kBrazil)),
                testing::EndsWith("Qtd Guias=1.200\nValor Total Informado=R$ 3.000,00\n"));
    EXPECT_THAT(Told(lot->Informations(TFormatSettings::OfLocale({".", ","}))),
                testing::EndsWith("Qtd Guias=1,200\nValor Total Informado=R$ 3,000.00\n"));
    EXPECT_THAT(Told(lot->Informations()),
                testing::EndsWith("R$ " + TFormatSettings::Regional().Money(3000) + "\n"));
}

} // namespace
} // namespace conferix::tests
