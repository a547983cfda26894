#include "rules/tuss_validation.h"

#include "data/tuss_writer.h"
#include "findings.h"

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

template<class Validation>
void Check(TTussManager& manager, const TDate& date, const char* code, int result,
           const std::string& message) {
    SCOPED_TRACE(fmt::format("{} {}", code, FormatIsoDate(date)));
    Validation term(manager, date, "22", code);
    EXPECT_EQ(static_cast<int>(term.ValidationReturn()), result);
    EXPECT_EQ(term.IsValid(), result == 0);
    EXPECT_EQ(term.ValidationMessage(), message);
}

TEST(TussTerm, IsJudgedByItsStartAndItsInactivation) {
    TTussManager manager(TTussConnection::InMemory(FillTerms));
    const std::string notFound = " da tabela 22 da TUSS não foi localizado no componente de representação de "
                                 "conceitos em saúde do padrão TISS.";
    const struct {
        const char* Code;
        TDate Date;
        int Result;
        std::string Message;
    } cases[] = {
        {"INICIO", Dia(2020, 3, 1), 0, ""},
        {"INICIO", Dia(2020, 2, 29), 3,
         "O termo de código INICIO da tabela 22 da TUSS entrará em vigência somente em 01/03/2020."},
        {"SEMINICIO", Dia(1990, 1, 1), 0, ""},
        {"SAIU", Dia(2020, 3, 31), 0, ""},
        {"SAIU", Dia(2020, 4, 1), 1,
         "O termo de código SAIU da tabela 22 da TUSS foi inativado em 31/03/2020."},
        // Before its start, but the inactivation lies ahead.
        {"SAIU", Dia(2009, 12, 31), 0, ""},
        {"SAIUSEMINICIO", Dia(2020, 4, 1), 1,
         "O termo de código SAIUSEMINICIO da tabela 22 da TUSS foi inativado em 31/03/2020."},
        {"VOLTOU", Dia(2020, 6, 1), 0, ""},
        {"VOLTOU", Dia(2020, 4, 1), 1,
         "O termo de código VOLTOU da tabela 22 da TUSS foi inativado em 31/03/2020."},
        {"VOLTOU", Dia(2020, 3, 31), 0, ""},
        {"SAIUNOINICIO", Dia(2020, 4, 1), 1,
         "O termo de código SAIUNOINICIO da tabela 22 da TUSS foi inativado em 31/03/2020."},
        {"SOINATIVADO", Dia(2020, 3, 31), 0, ""},
        {"SOINATIVADO", Dia(2020, 4, 1), 1,
         "O termo de código SOINATIVADO da tabela 22 da TUSS foi inativado em 31/03/2020."},
        {"SEMFIM", Dia(2020, 1, 1), 1, "O termo de código SEMFIM da tabela 22 da TUSS foi inativado."},
        {"0123", Dia(2021, 1, 1), 0, ""},
        {"123", Dia(2021, 1, 1), 2, "O termo de código 123" + notFound},
        {"", Dia(2021, 1, 1), 2, "O termo de código " + notFound},
    };
    // Twice: the second time from memory.
    for (int round = 0; round < 2; ++round)
        for (const auto& c : cases)
            Check<TTussValidation>(manager, c.Date, c.Code, c.Result, c.Message);
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

TTuss64 Periodo(std::string codigo, bool consolidado, std::string grupo, std::optional<TDate> inicio,
                std::optional<TDate> fim = std::nullopt) {
    return {"22", std::move(codigo), consolidado, std::move(grupo), inicio, fim, std::nullopt};
}

TEST(TussTable64, WalksThePeriodsOfATermInOrder) {
    TTussManager manager(TTussConnection::InMemory([](TTussWriter& writer) {
        // Written in disorder.
        writer.Insert(Periodo("MUDA", false, "", Dia(2021, 1, 1)));
        writer.Insert(Periodo("MUDA", true, "045", Dia(2020, 1, 1)));
        writer.Insert(Periodo("ACABOU", true, "045", Dia(2019, 1, 1), Dia(2019, 6, 30)));
        writer.Insert(Periodo("ACABOU", true, "046", Dia(2020, 1, 1), Dia(2020, 12, 31)));
        writer.Insert(Periodo("SEMPRE", true, "007", std::nullopt));
        writer.Insert(Periodo("GRUPOINDIVIDUAL", false, "007", Dia(2020, 1, 1), Dia(2020, 1, 31)));
        writer.Insert(Periodo("SEMGRUPO", true, "", Dia(2020, 1, 1)));
    }));
    const auto consolidated = [](const char* code, const char* group) {
        return fmt::format(
            "O termo de código {} da tabela 22 da TUSS deverá ser enviado de forma consolidada, através "
            "do código de grupo {} (de acordo com a tabela de domínio nº 64).",
            code, group);
    };
    const struct {
        const char* Code;
        TDate Date;
        int Result;
        std::string Message;
    } cases[] = {
        {"NENHUM", Dia(2020, 1, 1), 2,
         "O termo de código NENHUM da tabela 22 da TUSS não foi localizado no componente de representação de "
         "conceitos em saúde do padrão TISS."},
        {"MUDA", Dia(2019, 12, 31), 3,
         "O termo de código MUDA da tabela 22 da TUSS entrará em vigência somente em 01/01/2020."},
        {"MUDA", Dia(2020, 1, 1), 4, consolidated("MUDA", "045")},
        // The last day before the next period.
        {"MUDA", Dia(2020, 12, 31), 4, consolidated("MUDA", "045")},
        {"MUDA", Dia(2021, 1, 1), 0, ""},
        {"ACABOU", Dia(2019, 6, 30), 4, consolidated("ACABOU", "045")},
        {"ACABOU", Dia(2019, 7, 1), 3,
         "O termo de código ACABOU da tabela 22 da TUSS entrará em vigência somente em 01/01/2020."},
        {"ACABOU", Dia(2020, 12, 31), 4, consolidated("ACABOU", "046")},
        {"ACABOU", Dia(2021, 1, 1), 1,
         "O termo de código ACABOU da tabela 22 da TUSS foi inativado em 31/12/2020."},
        {"SEMPRE", Dia(1990, 1, 1), 4, consolidated("SEMPRE", "007")},
        // A period of single sending does not end, and its group counts all the same.
        {"GRUPOINDIVIDUAL", Dia(2024, 1, 1), 4, consolidated("GRUPOINDIVIDUAL", "007")},
        {"SEMGRUPO", Dia(2024, 1, 1), 0, ""},
    };
    for (int round = 0; round < 2; ++round)
        for (const auto& c : cases)
            Check<TTuss64Validation>(manager, c.Date, c.Code, c.Result, c.Message);
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
