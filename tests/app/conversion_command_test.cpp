// The commands that convert lots, as they are called.
#include "support/command_test.h"
#include "support/support.h"

#include <gmock/gmock.h>

namespace conferix {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Converter = TCommandTest;

TEST_F(Converter, WritesTheLotAndTellsTheNotes) {
    const std::string source = Example("spsadt-3.05.00-valido.xml").string();
    // What is written is valid, its hash included.
    const TCommandResult text = Run({"converter", source, "--para", "4.00.00", "--regime-atendimento", "01"});
    EXPECT_EQ(Run({"validar", "-", "--terminologia", CONFERIX_TUSS_DB}, text.Out).Status, kExitValid);
    EXPECT_THAT(Run({"converter", source, "--para", "4.00.00", "--detalhar"}).Err, Not(HasSubstr("E mais")));

    std::string broken = ReadTestFile(source);
    ReplaceAll(broken, "BENEFICIARIO DE TESTE UM", "BENEFICIARIO\nDE TESTE");
    EXPECT_THAT(Run({"converter", "-", "--para", "4.00.00"}, broken).Err,
                HasSubstr("Valor: \"BENEFICIARIO DE TESTE\"."));

    const TCommandResult report =
        Run({"converter", source, "--para", "4.00.00", "--formato", "json", "--saida", File("novo.xml")});
    const json notes = json::parse(report.Out);
    EXPECT_EQ(notes["origem"], "3.05.00");
    EXPECT_EQ(notes["destino"], "4.00.00");
    EXPECT_EQ(notes["passos"], json::parse(R"(["3.05.00 -> 4.00.00"])"));
    EXPECT_EQ(notes["valido"], false);
    EXPECT_EQ(notes["notas"][1],
              json::parse(R"({"tipo": "perda", "passo": "3.05.00 -> 4.00.00", "guia": "20000001", "linha": 41,
                              "elemento": "dadosBeneficiario/nomeBeneficiario",
                              "valor": "BENEFICIARIO DE TESTE UM",
                              "texto": "<nomeBeneficiario> não existe na versão 4.00.00 e foi retirado."})"));
    EXPECT_THAT(report.Err, IsEmpty());
    EXPECT_THAT(ReadTestFile(File("novo.xml")), HasSubstr("tissV4_00_00.xsd"));
}

TEST_F(Converter, ConvertsSeveralFilesIntoAFolder) {
    const std::string first = Example("consulta-4.01.00-valido.xml").string();
    const std::string second = Example("honorarios-4.01.00-valido.xml").string();
    const TCommandResult both = Run({"converter", first, second, "--para", "4.03.00", "--pasta-saida",
                                     File("saida"), "--formato", "json"});
    EXPECT_EQ(both.Status, kExitValid);
    EXPECT_EQ(json::parse(both.Out).size(), 2U);
    for (const char* name : {"saida/consulta-4.01.00-valido.xml", "saida/honorarios-4.01.00-valido.xml"})
        EXPECT_THAT(ReadTestFile(File(name)), HasSubstr("<ans:Padrao>4.03.00</ans:Padrao>"));
    // One that cannot be converted does not keep the others from it.
    const std::string monitoring = Example("monitoramento-1.06.00-valido.xml").string();
    const TCommandResult mixed =
        Run({"converter", monitoring, first, "--para", "4.02.00", "--pasta-saida", File("outra")});
    EXPECT_EQ(mixed.Status, kExitInvalid);
    EXPECT_THAT(mixed.Err, HasSubstr("tipo de transação (tmMonitoramento). 1.06.00 -> 4.02.00"));
    EXPECT_FALSE(std::filesystem::exists(File("outra/monitoramento-1.06.00-valido.xml")));
    EXPECT_TRUE(std::filesystem::exists(File("outra/consulta-4.01.00-valido.xml")));
}

} // namespace
} // namespace conferix
