#include "rules/tuss_validation.h"

#include "data/tuss_writer.h"
#include "findings.h"
#include "support/case_file.h"

#include <gtest/gtest.h>

namespace conferix::tests {
namespace {

TTussTerm Termo(std::string codigo, std::optional<TDate> inicio) {
    return {std::move(codigo), inicio, std::nullopt};
}

void FillTerms(TTussWriter& writer) {
    writer.Insert("22", Termo("INICIO", Dia(2020, 3, 1)));
    writer.Insert("22", Termo("SEMINICIO", std::nullopt));
    writer.Insert("22", Termo("SAIU", Dia(2010, 1, 1)));
    writer.Insert(TTussInativado{"22", "SAIU", Dia(2020, 3, 31)});
    writer.Insert("22", Termo("SAIUSEMINICIO", std::nullopt));
    writer.Insert(TTussInativado{"22", "SAIUSEMINICIO", Dia(2020, 3, 31)});
    writer.Insert("22", Termo("VOLTOU", Dia(2020, 6, 1)));
    writer.Insert(TTussInativado{"22", "VOLTOU", Dia(2020, 3, 31)});
    writer.Insert("22", Termo("SAIUNOINICIO", Dia(2020, 3, 31)));
    writer.Insert(TTussInativado{"22", "SAIUNOINICIO", Dia(2020, 3, 31)});
    writer.Insert(TTussInativado{"22", "SOINATIVADO", Dia(2020, 3, 31)});
    writer.Insert(TTussInativado{"19", "INICIO", Dia(1999, 1, 1)});
    writer.Insert("22", Termo("SEMFIM", Dia(2020, 1, 1)));
    writer.Insert(TTussInativado{"22", "SEMFIM", std::nullopt});
    writer.Insert("22", Termo("0123", Dia(2020, 1, 1)));
}

TTuss64 Periodo(std::string codigo, bool consolidado, std::string grupo, std::optional<TDate> inicio,
                std::optional<TDate> fim = std::nullopt) {
    return {"22", std::move(codigo), consolidado, std::move(grupo), inicio, fim, std::nullopt};
}

void FillPeriods(TTussWriter& writer) { // in disorder
    writer.Insert(Periodo("MUDA", false, "", Dia(2021, 1, 1)));
    writer.Insert(Periodo("MUDA", true, "045", Dia(2020, 1, 1)));
    writer.Insert(Periodo("ACABOU", true, "045", Dia(2019, 1, 1), Dia(2019, 6, 30)));
    writer.Insert(Periodo("ACABOU", true, "046", Dia(2020, 1, 1), Dia(2020, 12, 31)));
    writer.Insert(Periodo("SEMPRE", true, "007", std::nullopt));
    writer.Insert(Periodo("GRUPOINDIVIDUAL", false, "007", Dia(2020, 1, 1), Dia(2020, 1, 31)));
    writer.Insert(Periodo("SEMGRUPO", true, "", Dia(2020, 1, 1)));
}

template<class Validation>
void Check(TTussManager& manager, const TCase& c) {
    for (const auto& [code, date] : c.Inputs) {
        Validation term(manager, ParseIsoDate(date).value(), "22", code);
        const int result = static_cast<int>(term.ValidationReturn());
        EXPECT_EQ(fmt::format("{} {}", result, term.ValidationMessage()), c.Expected.front()) << c;
        EXPECT_EQ(term.IsValid(), result == 0) << c;
    }
}

TEST(TussTerm, IsJudgedByItsDatesAndByThePeriodsOfTable64) {
    TTussManager manager(TTussConnection::InMemory([](TTussWriter& writer) {
        FillTerms(writer);
        FillPeriods(writer);
    }));
    // Twice: the second time from memory.
    for (int round = 0; round < 2; ++round)
        for (const TCase& c : Cases("rules/tuss.casos"))
            if (c.Section == "termo")
                Check<TTussValidation>(manager, c);
            else
                Check<TTuss64Validation>(manager, c);
}

TEST(TussTerm, AsksOnlyWhenAnAnswerIsWanted) {
    TTussManager manager(TTussConnection::InMemory());
    TTussValidation term(manager, Dia(2024, 1, 1), "98", "1");
    try {
        term.IsValid();
        FAIL() << "a tabela 98 não tem termos";
    } catch (const ETussTableWithoutEntity& error) {
        EXPECT_STREQ(error.what(), "Tabela 98 do TISS não possui entidade correspondente.");
    }
    EXPECT_THROW(TTussManager(nullptr), EManagerNotDefined);
}

TEST(TussTables, SayWhatIsNotInstalled) {
    const TTussManager manager(TTussConnection::InMemory([](TTussWriter& writer) {
        writer.Insert(TTuss22{{"1", std::nullopt, std::nullopt}});
        writer.Insert(TTussInativado{"19", "1", Dia(2020, 3, 31)});
        writer.Insert(Periodo("1", false, "", std::nullopt)); // of table 22
    }));
    EXPECT_TRUE(manager.IsInstalled("22"));
    EXPECT_TRUE(manager.IsInstalled("19")) << "inactivated terms only";
    EXPECT_FALSE(manager.IsInstalled("18"));
    EXPECT_EQ(manager.MissingTable64("22"), "");
    EXPECT_EQ(manager.MissingTable64("18"), "64 (termos da tabela 18)");
    EXPECT_EQ(TTussManager(TTussConnection::InMemory()).MissingTable64("18"), "64");
}

TEST(TussTables, CitiesAreKnownByTheirWholeCode) {
    TTussManager manager(
        TTussConnection::InMemory([](TTussWriter& writer) { writer.Insert(TCidade{"3550308"}); }));
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(manager.HasCity("3550308"));
        EXPECT_FALSE(manager.HasCity("355030"));
    }
}

TEST(XsDate, IsReadAsAWholeDay) {
    const std::optional<TDate> none;
    const struct {
        const char* Text;
        std::optional<TDate> Expected;
    } cases[] = {
        {"2024-02-29", Dia(2024, 2, 29)},
        {" \n2024-02-29\t", Dia(2024, 2, 29)},
        {"2024-02-29Z", Dia(2024, 2, 29)},
        {"2024-02-29-03:00", Dia(2024, 2, 29)},
        {"2024-02-29+14:00", Dia(2024, 2, 29)},
        {"2023-02-29", none},
        {"29/02/2024", none},
        {"2024-2-29", none},
        {"2024-02-29T10:00:00", none},
        {"2024-02-29z", none},
        {"2024-02-29+1400", none},
        {"", none},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ParseXsDate(c.Text), c.Expected) << c.Text;
}

} // namespace
} // namespace conferix::tests
