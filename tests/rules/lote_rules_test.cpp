#include "findings.h"

#include "data/tuss_writer.h"
#include "support/case_file.h"
#include "support/support.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view kLote = "tiss.mensagem.loteguias";

/// Names (without the common part) of the rules that found something, repetitions in a row left out.
std::vector<std::string> Spoken(const TValidationMessages& messages) {
    std::vector<std::string> names;
    for (const auto& message : messages) {
        const std::string name = message->Validation().Name.substr(kLote.size() + 1);
        if (names.empty() || names.back() != name)
            names.push_back(name);
    }
    return names;
}

TValidationMessages Judged(const std::string& xml) {
    return Mensagens(kLote, *LoadTiss(xml), TTussConnection::InMemory());
}

std::string Repeated(int times, std::string_view text) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += fmt::format(" {}", text);
    return all;
}

TEST(LotRules, FindWhatTheCasesSay) {
    for (const TCase& c : Cases("rules/lotes.casos")) {
        const auto& [guides, times] = c.Inputs.front();
        std::vector<std::string> found;
        for (const auto& message : Judged(LoteComGuias("3.05.00", Repeated(std::stoi(times), guides))))
            if (message->Validation().Name.starts_with("tiss.mensagem.loteguias.lote"))
                found.push_back(Descrito(*message));
        ExpectLines(c, found);
    }
}

TEST(LotRules, ErrorsStandAtTheLotOrTheGuideConcerned) {
    const auto errorLine = [](const std::string& guides) {
        std::string xml = LoteComGuias("3.05.00", guides);
        ReplaceAll(xml, "<guiaConsulta", "\n<guiaConsulta");
        ReplaceAll(xml, "<guiaOdonto", "\n<guiaOdonto");
        ReplaceAll(xml, "<ans:loteGuias", "\n\n\n<ans:loteGuias");
        for (const auto& message : Judged(xml))
            if (message->MsgType() == TMessageType::mtError)
                return message->Line();
        return 0;
    };
    EXPECT_EQ(errorLine(""), 4);
    EXPECT_EQ(errorLine(Repeated(101, "guiaConsulta()")), 4 + 101);
    EXPECT_EQ(errorLine("guiaConsulta() guiaOdonto() guiaConsulta()"), 4 + 1);
}

TEST(LotRules, OtherTransactionsAreNoneOfTheirs) {
    std::string xml = LotText("3.05.00", "");
    ReplaceAll(xml, "ENVIO_LOTE_GUIAS", "SOLICITACAO_PROCEDIMENTOS");
    const auto rules = Julgado(kLote, *LoadTiss(xml), TTussConnection::InMemory());
    EXPECT_THAT(rules->ValidationMessages(), IsEmpty());
    EXPECT_FALSE(rules->Validated());

    // A message without any lot has an empty one.
    ReplaceAll(xml, "SOLICITACAO_PROCEDIMENTOS", "ENVIO_LOTE_GUIAS");
    ReplaceAll(xml, "loteGuias", "loteAnexo");
    EXPECT_THAT(Spoken(Judged(xml)), ElementsAre("lotesemguias", "lotecommaisdecemguias"));
}

TEST(GuideRules, EachKindOfGuideMeetsItsRulesInOrder) {
    const auto tuss = TTussConnection::InMemory([](TTussWriter& writer) {
        writer.Insert(TTuss22{{"1", std::nullopt, std::nullopt}});
    });
    for (const TCase& c : Cases("rules/guias_por_versao.casos")) {
        const auto& [version, guide] = c.Inputs.front();
        const TValidationMessages messages = Mensagens(kLote, *LoadTiss(LoteComGuias(version, guide)), tuss);
        std::string expected = "lotesemguias lotecomguiasdetiposdiferentes lotecommaisdecemguias";
        for (const std::string& names : c.Expected)
            expected += " " + names;
        EXPECT_EQ(fmt::format("{}", fmt::join(Spoken(messages), " ")), expected) << c;
        for (const auto& message : messages)
            EXPECT_EQ(message->MsgType(), TMessageType::mtSuccess) << Descrito(*message);
    }
}

TEST(GuideRules, EachRuleMeetsTheGuidesInLotOrder) {
    const auto guide = [](int number) {
        return fmt::format(
            "guiaHonorarios(cabecalhoGuia(numeroGuiaPrestador={}) "
            "procedimentosRealizados(procedimentoRealizado(quantidadeExecutada=0 reducaoAcrescimo=0)))",
            number);
    };
    const auto file = LoadTiss(LoteComGuias("3.05.00", guide(2) + guide(1)));
    const auto rules = Julgado(kLote, *file, TTussConnection::InMemory());
    const auto found = [&] {
        std::vector<std::string> list;
        for (const auto& message : rules->ValidationMessages())
            if (!message->NumeroGuia().empty())
                list.push_back(message->NumeroGuia() + " " +
                               message->Validation().Name.substr(kLote.size() + 1));
        return list;
    };
    const std::vector<std::string> expected = {
        "2 honorarios.procedimento.quantidade",
        "2 honorarios.procedimento.fator",
        "1 honorarios.procedimento.quantidade",
        "1 honorarios.procedimento.fator",
        "2 honorarios.sequencial",
        "1 honorarios.sequencial",
        "2 honorarios.valortotal",
        "1 honorarios.valortotal",
    };
    EXPECT_EQ(found(), expected);
    // A second visit finds the same and keeps nothing of the first.
    file->Accept(*rules);
    EXPECT_EQ(found(), expected);
    const auto empty = LoadTiss(LoteComGuias("3.05.00", "guiaOdonto()"));
    empty->Accept(*rules);
    EXPECT_THAT(found(), IsEmpty());
}

} // namespace
} // namespace conferix::tests
