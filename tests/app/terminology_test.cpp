// conferix terminologia importar, estado, consultar, procurar and restaurar, as a user runs them.
#include "data/tuss_writer.h"
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
    EXPECT_THAT(import.Out, AllOf(HasSubstr("  22                  12           0           2           0\n"),
                                  HasSubstr("  64                   6"), HasSubstr(File("dados/tuss.db"))));
    EXPECT_THAT(Terms({"importar", kExample}).Out,
                HasSubstr("  22                   0           0           0          14\n"));

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

    const auto ask = [this](std::vector<std::string> words) {
        words.insert(words.begin(), {"consultar", "--tabela", "22", "--data", "2026-01-15", "--codigo"});
        return Terms(words);
    };
    EXPECT_EQ(ask({"22900016"}).Status, kExitValid);
    EXPECT_THAT(ask({"22900016", "--consolidado"}).Out, HasSubstr("código de grupo 029"));
    const TCommandResult unknown = ask({"22900099"});
    EXPECT_EQ(unknown.Status, kExitInvalid);
    EXPECT_THAT(unknown.Out,
                AllOf(HasSubstr("não foi localizado"),
                      HasSubstr("Parecidos:\n  22  22900059  desde 01/07/2023  Sessão de exemplo")));
    EXPECT_EQ(json::parse(ask({"22900099", "--formato", "json"}).Out)["parecidos"][1]["codigo"], "22900091");
    EXPECT_EQ(json::parse(ask({"22900016", "--formato", "json"}).Out).count("parecidos"), 0U);
}

TEST_F(Terminology, TheTerminologyTellsItsVerdictOnACode) {
    TTussWriter terms(File("codigos.db"));
    terms.Insert(TTuss22{{"10101012", ParseIsoDate("2000-01-01"), std::nullopt}});
    terms.Insert(TTuss22{{"40304361", ParseIsoDate("2030-01-01"), std::nullopt}});
    terms.Insert(TTuss64{"22", "10101012", true, "045", ParseIsoDate("2000-01-01"), {}, {}});
    terms.Commit();
    options_ = {"--terminologia", File("codigos.db")};
    const auto query = [&](std::vector<std::string> words) {
        words.insert(words.begin(), "consultar");
        return Terms(std::move(words));
    };
    const struct {
        std::vector<std::string> Words;
        int Status;
        json Expected;
    } cases[] = {
        {{"--tabela", "22", "--codigo", "10101012", "--data", "2024-01-01"},
         kExitValid,
         {{"resultado", 0}, {"mensagem", ""}}},
        {{"--tabela", "22", "--codigo", "40304361", "--data", "2024-01-01"},
         kExitInvalid,
         {{"resultado", 3},
          {"mensagem",
           "O termo de código 40304361 da tabela 22 da TUSS entrará em vigência somente em 01/01/2030."}}},
        {{"--tabela", "22", "--codigo", "10101012", "--data", "2024-01-01", "--consolidado"},
         kExitInvalid,
         {{"resultado", 4},
          {"mensagem",
           "O termo de código 10101012 da tabela 22 da TUSS deverá ser enviado de forma consolidada, "
           "através do código de grupo 045 (de acordo com a tabela de domínio nº 64)."}}},
        {{"--tabela", "18", "--codigo", "1", "--data", "2024-01-01"},
         kExitUnreadable,
         {{"resultado", nullptr},
          {"mensagem", "A tabela 18 da TUSS não está instalada; os códigos dessa tabela não foram "
                       "verificados. Importe a publicação da ANS: conferix terminologia importar ARQUIVO."}}},
        {{"--tabela", "18", "--codigo", "1", "--data", "2024-01-01", "--consolidado"},
         kExitUnreadable,
         {{"resultado", nullptr},
          {"mensagem", "A tabela 64 (termos da tabela 18) da TUSS não está instalada; os códigos dessa "
                       "tabela não foram verificados. Importe a publicação da ANS: conferix terminologia "
                       "importar ARQUIVO."}}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> words = c.Words;
        const TCommandResult text = query(words);
        EXPECT_EQ(text.Status, c.Status);
        EXPECT_THAT(text.Out, AllOf(HasSubstr(c.Expected["mensagem"].get<std::string>()),
                                    Not(HasSubstr("não foi localizado"))));
        words.insert(words.end(), {"--formato", "json"});
        EXPECT_EQ(json::parse(query(words).Out), c.Expected);
    }
}

TEST_F(Terminology, SearchesByWords) {
    ASSERT_EQ(Terms({"importar", kExample}).Status, kExitValid);
    EXPECT_THAT(Terms({"procurar", "AVALIACAO exemplo", "--tabela", "22"}).Out,
                HasSubstr("  22  22900016  desde 01/01/2020  "));
    const json all = json::parse(Terms({"procurar", "exemplo", "--tabela", "22", "--formato", "json"}).Out);
    const json now = json::parse(
        Terms({"procurar", "exemplo", "--tabela", "22", "--data", "2026-01-15", "--formato", "json"}).Out);
    EXPECT_EQ(all.size(), 14U);
    EXPECT_EQ(now.size(), 11U);
    EXPECT_EQ(Terms({"procurar", "inexistente"}).Status, kExitInvalid);
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
    EXPECT_THAT(state.Out, AllOf(HasSubstr("1 linha  Tabela 22.csv"), HasSubstr(File("dados/tuss.db"))));
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

    const TCommandResult bad = Terms({"importar", File("outra.db")});
    EXPECT_EQ(bad.Status, kExitUnreadable);
    EXPECT_THAT(bad.Err, HasSubstr("conferix: erro: Não foi possível importar"));

    EXPECT_THAT(Terms({"restaurar"}).Out, HasSubstr("As importações foram desfeitas"));
    EXPECT_TRUE(std::filesystem::is_empty(File("dados")));
    EXPECT_EQ(json::parse(Terms({"restaurar", "--formato", "json"}).Out)["base"],
              (ExecutablePath().parent_path() / "tuss.db").string());
}

} // namespace
} // namespace conferix
