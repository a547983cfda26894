// conferix terminologia importar, estado, consultar, procurar and restaurar, as a user runs them.
#include "platform/platform.h"
#include "support/command_test.h"

#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>

namespace conferix {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Terminology : public TCommandTest {
  protected:
    TCommandResult Terms(std::vector<std::string> words) const {
        words.insert(words.begin(), "terminologia");
        return Run(std::move(words));
    }
};

const std::string kExample = (std::filesystem::path(CONFERIX_FONTE) / "exemplos/terminologia").string();

TEST_F(Terminology, ImportsTheExampleAndJudgesItsLot) {
    const TCommandResult import = Terms({"importar", kExample});
    ASSERT_EQ(import.Status, kExitValid) << import.Err;
    const json lot = json::parse(Run({"validar", kExample + "/lote-spsadt.xml", "--formato", "json"}).Out)[0];
    std::vector<std::string> verdicts;
    for (const json& message : lot["mensagens"])
        if (message["validacao"] == "tiss.mensagem.loteguias.spsadt.procedimento.codigo")
            verdicts.push_back(message["motivo"]);
    EXPECT_THAT(verdicts,
                testing::ElementsAre(
                    HasSubstr("22900024 da tabela 22 da TUSS foi inativado em 31/12/2024"),
                    HasSubstr("22900032 da tabela 22 da TUSS entrará em vigência somente em 01/01/2099"),
                    HasSubstr("22900099 da tabela 22 da TUSS não foi localizado")));
}

TEST_F(Terminology, SearchesByWords) {
    ASSERT_EQ(Terms({"importar", kExample}).Status, kExitValid);
    const json all = json::parse(Terms({"procurar", "exemplo", "--tabela", "22", "--formato", "json"}).Out);
    const json now = json::parse(
        Terms({"procurar", "exemplo", "--tabela", "22", "--data", "2026-01-15", "--formato", "json"}).Out);
    EXPECT_EQ(all.size(), 14U);
    EXPECT_EQ(now.size(), 11U);
}

TEST_F(Terminology, ShowsImportsWarnsOfOldOnesAndGoesBack) {
    EXPECT_THAT(Terms({"restaurar"}).Out, HasSubstr("Não há importações a desfazer"));
    WriteTestFile(File("Tabela 22.csv"), "Código do Termo;Termo\n10101012;Consulta\nerrada;X\n");
    const TCommandResult import = Terms({"importar", File("Tabela 22.csv")});
    EXPECT_EQ(import.Status, kExitValid);
    EXPECT_THAT(import.Out, HasSubstr("linha 3: \"errada\" não é um código"));
    std::string wrong = "Código do Termo;Termo;Início\n10101012;Consulta;\n";
    for (int i = 0; i < 1001; ++i)
        wrong += "errada;X;\n";
    WriteTestFile(File("Tabela 20.csv"), wrong);
    WriteTestFile(File("Tabela 24.csv"), "Código do Termo;Termo\n1;X\n;X\n");
    const std::vector<std::string> several = {"importar", File("Tabela 20.csv"), File("Tabela 24.csv"),
                                              "--terminologia", File("varias.db")};
    EXPECT_THAT(Terms(several).Out,
                AllOf(HasSubstr("entendidas: 1.002\n"), HasSubstr("linha 22: "), Not(HasSubstr("linha 23: ")),
                      HasSubstr("Tabela 24.csv, linha 3: falta o código\n  e mais 981\n"),
                      HasSubstr("sempre vigentes: " + File("Tabela 20.csv"))));
    std::vector<std::string> asJson = several;
    asJson.insert(asJson.end(), {"--formato", "json"});
    const json report = json::parse(Terms(asJson).Out);
    EXPECT_EQ(report["naoEntendidas"].size(), 1001U);
    EXPECT_EQ(report["arquivos"][0]["naoEntendidas"], 1001);
    EXPECT_EQ(report["semDatas"].size(), 1U);

    const TCommandResult state = Terms({"estado"});
    EXPECT_THAT(state.Out,
                AllOf(HasSubstr("1 linha  Tabela 22.csv"),
                      HasSubstr(std::filesystem::path(File("dados/tuss.db")).make_preferred().string())));
    EXPECT_THAT(state.Err, IsEmpty());
    {
        SQLite::Database database(File("dados/tuss.db"), SQLite::OPEN_READWRITE);
        database.exec("UPDATE TB_CARGA SET DATA = '2020-01-31 10:00:00';"
                      "INSERT INTO TB_CARGA SELECT ARQUIVO, SHA256, DATA, '24', 1, NULL FROM TB_CARGA");
    }
    EXPECT_THAT(Terms({"estado"}).Err, AllOf(HasSubstr("tabela 22 é de 2020-01-31, há mais de seis meses"),
                                             Not(HasSubstr("tabela 24"))));
    EXPECT_EQ(json::parse(Terms({"estado", "--formato", "json"}).Out)["cargas"][0]["linhas"], 1);

    const TCommandResult other =
        Terms({"importar", File("Tabela 22.csv"), "--terminologia", File("outra.db")});
    EXPECT_EQ(other.Status, kExitValid);
    EXPECT_THAT(Terms({"estado", "--terminologia", File("outra.db")}).Out, HasSubstr("Tabela 22.csv"));

    EXPECT_THAT(Terms({"restaurar"}).Out, HasSubstr("As importações foram desfeitas"));
    EXPECT_TRUE(std::filesystem::is_empty(File("dados")));
    EXPECT_EQ(json::parse(Terms({"restaurar", "--formato", "json"}).Out)["base"],
              (ExecutablePath().parent_path() / "tuss.db").string());
}

} // namespace
} // namespace conferix
