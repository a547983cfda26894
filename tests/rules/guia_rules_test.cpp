#include "findings.h"

#include "data/tuss_writer.h"
#include "support/case_file.h"
#include "support/support.h"

namespace conferix::tests {
namespace {

constexpr std::string_view kLote = "tiss.mensagem.loteguias";

void FillCodes(TTussWriter& writer) {
    for (const char* table : {"19", "20", "22"})
        writer.Insert(table, {"111", Dia(2020, 1, 1), std::nullopt});
    writer.Insert(TTussInativado{"22", "222", Dia(2020, 12, 31)});
}

TEST(GuideRules, FindWhatTheCasesSay) {
    const auto tuss = TTussConnection::InMemory(FillCodes);
    for (const TCase& c : Cases("rules/guias.casos")) {
        const std::size_t first = c.Section.find(" | ");
        const std::size_t second = c.Section.find(" | ", first + 3);
        const std::string version = c.Section.substr(0, first);
        const std::string group = c.Section.substr(first + 3, second - first - 3);
        std::string guides = c.Section.substr(second + 3);
        const auto& [check, values] = c.Inputs.front();
        ReplaceAll(guides, "{}", values);
        std::string xml = LoteComGuias(version, guides);
        for (const std::string element : {"<procedimentoExecutado>", "<despesa>", "<guiaSP-SADT>"})
            ReplaceAll(xml, element, "\n" + element);
        const std::string rule = fmt::format("{}.{}.{}", kLote, group, check);
        std::vector<std::string> found;
        for (const auto& message : Mensagens(kLote, *LoadTiss(xml), tuss))
            if (message->Validation().Name == rule)
                found.push_back(Descrito(*message));
        ExpectLines(c, found);
    }
}

TEST(GuideRules, MessagesNameGuideAndPlaceOfTheElement) {
    std::string xml = LotText(
        "3.05.00", Xml("guiasTISS(guiaSP-SADT(cabecalhoGuia(numeroGuiaPrestador=7) procedimentosExecutados("
                       "procedimentoExecutado(quantidadeExecutada=1 valorUnitario=2 valorTotal=3))))"));
    ReplaceAll(xml, "<valorTotal>", "\n  <valorTotal>");
    ReplaceAll(xml, "<quantidadeExecutada>", "\n\n<quantidadeExecutada>");
    const auto file = LoadTiss(xml);
    const std::int32_t total = file->Xml()->Root().FirstDescendant("valorTotal")->FilePos();
    std::vector<std::string> found;
    for (const auto& message : Mensagens(kLote, *file, TTussConnection::InMemory()))
        if (message->Line() != 0)
            found.push_back(fmt::format("{} {} {} '{}'", message->Place(), message->LinePos(),
                                        message->FilePos() - total, message->SrcText()));
    // What was found right repeats nothing of the file.
    EXPECT_EQ(found,
              (std::vector<std::string>{"[Linha: 3] [Guia: 7] 1 -79 ''", "[Linha: 3] [Guia: 7] 45 -35 ''",
                                        "[Linha: 4] [Guia: 7] 3 0 '3'"}));
}

TEST(GuideRules, NeedTheTerminologyOnlyWhereACodeIsJudged) {
    const auto visit = [](std::string_view item) {
        Julgado(kLote,
                *LoadedMessage("3.05.00", Xml(fmt::format("guiasTISS(guiaSP-SADT(procedimentosExecutados("
                                                          "procedimentoExecutado({}))))",
                                                          item))),
                nullptr);
    };
    EXPECT_NO_THROW(visit("quantidadeExecutada=1"));
    try {
        visit("dataExecucao=2024-01-01 procedimento(codigoTabela=22 codigoProcedimento=1)");
        FAIL() << "sem terminologia não há o que julgar";
    } catch (const EManagerNotDefined& error) {
        EXPECT_STREQ(error.what(), "Manager not defined.");
    }
}

} // namespace
} // namespace conferix::tests
