#include "rules/monitoring/guia_de_teste.h"

#include "xml/xml_encoding.h"

#include <gmock/gmock.h>

#include <sstream>

namespace conferix::tests {
namespace {

using testing::IsEmpty;

/// Knows the codes of the example files.
std::shared_ptr<TTussConnection> TerminologiaDosExemplos() {
    return TTussConnection::InMemory([](TTussWriter& writer) {
        for (const char* table : {"00", "18", "22", "63", "90", "98"})
            writer.Insert("87", {table, {}, {}});
        for (const char* group : {"009", "012", "027", "031"})
            writer.Insert("63", {group, {}, {}});
        writer.Insert(TTuss64{"18", "60000171", false, "", {}, {}, {}});
        for (const char* code : {"10101012", "31005497", "40301630", "40324770", "81000065", "85100099"})
            writer.Insert(TTuss64{"22", code, false, "", {}, {}, {}});
        for (const char* city : {"310620", "3106200", "3304557", "355030", "3550308"})
            writer.Insert(TCidade{city});
    });
}

std::shared_ptr<IMonitoramento> LoadExample(const std::string& name) {
    return std::dynamic_pointer_cast<IMonitoramento>(LoadTiss(DecodeXml(ReadTestFile(Example(name))).Text));
}

TEST(ExemplosMonitoramento, RightFilesHaveNoFindings) {
    const struct {
        std::string name;
        std::int64_t guides;
    } cases[] = {
        {"monitoramento-1.03.00-valido.xml", 3},
        {"monitoramento-1.06.00-valido.xml", 5},
        {"monitoramento-1.06.00-sem-movimento.xml", 0},
        {"monitoramento-1.06.00-fornecimento-direto.xml", 0},
        {"monitoramento-1.06.00-outra-remuneracao.xml", 0},
        {"monitoramento-1.06.00-valor-preestabelecido.xml", 0},
    };
    for (const auto& c : cases) {
        const auto arquivo = LoadExample(c.name);
        EXPECT_EQ(arquivo->Lote().QtdGuias(), c.guides) << c.name;
        EXPECT_THAT(Findings(*arquivo, TerminologiaDosExemplos()), IsEmpty()) << c.name;
    }
    EXPECT_TRUE(LoadExample("monitoramento-1.06.00-sem-movimento.xml")->Lote().SemMovimento());
}

/// The findings of the faulty example, a line each, are those of the file beside this one.
TEST(ExemplosMonitoramento, TheFaultyFileHasTheExpectedFindings) {
    const auto arquivo = LoadExample("monitoramento-1.06.00-com-erros.xml");
    std::string found;
    for (const auto& message : Mensagens(kLoteMonitoramento, *arquivo, TerminologiaDosExemplos())) {
        found += message->Msg();
        for (const auto& solver : message->Solvers())
            found += " {" + solver->Description() + "}";
        found += '\n';
    }
    ReplaceAll(found, "\r\n", "|");
    std::istringstream expected(ReadTestFile(std::filesystem::path(CONFERIX_FONTE) /
                                             "tests/rules/monitoring/com-erros.esperado.txt"));
    std::istringstream actual(found);
    std::string expectedLine;
    std::string actualLine;
    while (std::getline(expected, expectedLine)) {
        ASSERT_TRUE(std::getline(actual, actualLine)) << "missing: " << expectedLine;
        EXPECT_EQ(actualLine, expectedLine);
    }
    EXPECT_FALSE(std::getline(actual, actualLine)) << "too much: " << actualLine;
}

} // namespace
} // namespace conferix::tests
