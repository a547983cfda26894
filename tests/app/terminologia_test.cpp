// conferix terminologia importar, estado, consultar, procurar and restaurar, as a user runs them.
#include "app/cli/cli.h"
#include "platform/platform.h"
#include "support/suporte.h"

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace conferix {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class CliTerminologia : public testing::Test {
  protected:
    struct TResult {
        int Status;
        std::string Out;
        std::string Err;
    };

    void SetUp() override {
        setenv("CONFERIX_DADOS", (folder_.Path() / "dados").c_str(), 1);
        unsetenv("CONFERIX_TUSS");
    }
    void TearDown() override { unsetenv("CONFERIX_DADOS"); }

    static TResult Run(const std::vector<std::string>& words) {
        std::istringstream in;
        std::ostringstream out;
        std::ostringstream err;
        const int status = RunCli(words, {in, out, err});
        return {status, out.str(), err.str()};
    }

    static TResult Terminologia(std::vector<std::string> words) {
        words.insert(words.begin(), "terminologia");
        return Run(words);
    }

    std::string File(const std::string& name) const { return (folder_.Path() / name).string(); }

    TTemporaryFolder folder_;
};

const std::string kExemplo = (std::filesystem::path(CONFERIX_FONTE) / "exemplos/terminologia").string();

TEST_F(CliTerminologia, ImportsTheExampleAndJudgesItsLot) {
    const TResult import = Terminologia({"importar", kExemplo});
    ASSERT_EQ(import.Status, kExitValid) << import.Err;
    EXPECT_THAT(import.Out, AllOf(HasSubstr("  22                  12           0           2           0\n"),
                                  HasSubstr("  64                   6"), HasSubstr(File("dados/tuss.db"))));
    EXPECT_THAT(Terminologia({"importar", kExemplo}).Out,
                HasSubstr("  22                   0           0           0          14\n"));

    const json lot = json::parse(Run({"validar", kExemplo + "/lote-spsadt.xml", "--formato", "json"}).Out)[0];
    std::vector<std::string> verdicts;
    for (const json& message : lot["mensagens"])
        if (message["validacao"] == "tiss.mensagem.loteguias.spsadt.procedimento.codigo")
            verdicts.push_back(message["motivo"]);
    EXPECT_THAT(verdicts,
                testing::ElementsAre(
                    HasSubstr("22900024 da tabela 22 da TUSS foi inativado em 31/12/2024"),
                    HasSubstr("22900032 da tabela 22 da TUSS entrará em vigência somente em 01/01/2099"),
                    HasSubstr("22900099 da tabela 22 da TUSS não foi localizado")));

    const auto ask = [](std::vector<std::string> words) {
        words.insert(words.begin(), {"consultar", "--tabela", "22", "--data", "2026-01-15", "--codigo"});
        return Terminologia(words);
    };
    EXPECT_EQ(ask({"22900016"}).Status, kExitValid);
    EXPECT_THAT(ask({"22900016", "--consolidado"}).Out, HasSubstr("código de grupo 029"));
    const TResult unknown = ask({"22900099"});
    EXPECT_EQ(unknown.Status, kExitInvalid);
    EXPECT_THAT(unknown.Out,
                AllOf(HasSubstr("não foi localizado"),
                      HasSubstr("Parecidos:\n  22  22900059  desde 01/07/2023  Sessão de exemplo")));
    EXPECT_EQ(json::parse(ask({"22900099", "--formato", "json"}).Out)["parecidos"][1]["codigo"], "22900091");
    EXPECT_EQ(json::parse(ask({"22900016", "--formato", "json"}).Out).count("parecidos"), 0U);
}

TEST_F(CliTerminologia, SearchesByWords) {
    const TResult before = Terminologia({"procurar", "avaliação", "--terminologia", CONFERIX_TUSS_DB});
    EXPECT_EQ(before.Status, kExitUnreadable);
    EXPECT_THAT(before.Err, HasSubstr("conferix terminologia importar ARQUIVO"));
    ASSERT_EQ(Terminologia({"importar", kExemplo}).Status, kExitValid);
    EXPECT_THAT(Terminologia({"procurar", "AVALIACAO exemplo", "--tabela", "22"}).Out,
                HasSubstr("  22  22900016  desde 01/01/2020  "));
    const json all =
        json::parse(Terminologia({"procurar", "exemplo", "--tabela", "22", "--formato", "json"}).Out);
    const json now = json::parse(
        Terminologia({"procurar", "exemplo", "--tabela", "22", "--data", "2026-01-15", "--formato", "json"})
            .Out);
    EXPECT_EQ(all.size(), 14U);
    EXPECT_EQ(now.size(), 11U);
    EXPECT_EQ(Terminologia({"procurar", "inexistente"}).Status, kExitInvalid);
    EXPECT_EQ(Terminologia({"procurar", "x", "--data", "15/01/2026"}).Status, kExitUsage);
}

TEST_F(CliTerminologia, ShowsImportsWarnsOfOldOnesAndGoesBack) {
    EXPECT_THAT(Terminologia({"restaurar"}).Out, HasSubstr("Não há importações a desfazer"));
    WriteTestFile(File("Tabela 22.csv"), "Código do Termo;Termo\n10101012;Consulta\nerrada;X\n");
    const TResult import = Terminologia({"importar", File("Tabela 22.csv")});
    EXPECT_EQ(import.Status, kExitValid);
    EXPECT_THAT(import.Out, HasSubstr("linha 3: \"errada\" não é um código"));
    std::string wrong = "Código do Termo;Termo;Início\n10101012;Consulta;\n";
    for (int i = 0; i < 1001; ++i)
        wrong += "errada;X;\n";
    WriteTestFile(File("Tabela 20.csv"), wrong);
    WriteTestFile(File("Tabela 24.csv"), "Código do Termo;Termo\n1;X\n;X\n");
    const std::vector<std::string> several = {"importar", File("Tabela 20.csv"), File("Tabela 24.csv"),
                                              "--terminologia", File("varias.db")};
    EXPECT_THAT(Terminologia(several).Out,
                AllOf(HasSubstr("entendidas: 1.002\n"), HasSubstr("linha 22: "), Not(HasSubstr("linha 23: ")),
                      HasSubstr("Tabela 24.csv, linha 3: falta o código\n  e mais 981\n"),
                      HasSubstr("sempre vigentes: " + File("Tabela 20.csv"))));
    std::vector<std::string> asJson = several;
    asJson.insert(asJson.end(), {"--formato", "json"});
    const json report = json::parse(Terminologia(asJson).Out);
    EXPECT_EQ(report["naoEntendidas"].size(), 1001U);
    EXPECT_EQ(report["arquivos"][0]["naoEntendidas"], 1001);
    EXPECT_EQ(report["semDatas"].size(), 1U);

    const TResult state = Terminologia({"estado"});
    EXPECT_THAT(state.Out, AllOf(HasSubstr("1 linha  Tabela 22.csv"), HasSubstr(File("dados/tuss.db"))));
    EXPECT_THAT(state.Err, IsEmpty());
    {
        SQLite::Database database(File("dados/tuss.db"), SQLite::OPEN_READWRITE);
        database.exec("UPDATE TB_CARGA SET DATA = '2020-01-31 10:00:00';"
                      "INSERT INTO TB_CARGA SELECT ARQUIVO, SHA256, DATA, '24', 1, NULL FROM TB_CARGA");
    }
    EXPECT_THAT(
        Terminologia({"estado"}).Err,
        AllOf(HasSubstr("tabela 22 é de 2020-01-31, há mais de seis meses"), Not(HasSubstr("tabela 24"))));
    EXPECT_EQ(json::parse(Terminologia({"estado", "--formato", "json"}).Out)["cargas"][0]["linhas"], 1);

    const TResult other =
        Terminologia({"importar", File("Tabela 22.csv"), "--terminologia", File("outra.db")});
    EXPECT_EQ(other.Status, kExitValid);
    EXPECT_THAT(Terminologia({"estado", "--terminologia", File("outra.db")}).Out, HasSubstr("Tabela 22.csv"));
    EXPECT_EQ(Terminologia({"restaurar", "--terminologia", File("outra.db")}).Status, kExitUsage);

    const TResult bad = Terminologia({"importar", File("outra.db")});
    EXPECT_EQ(bad.Status, kExitUnreadable);
    EXPECT_THAT(bad.Err, HasSubstr("conferix: erro: Não foi possível importar"));
    EXPECT_EQ(Terminologia({"importar"}).Status, kExitUsage);

    EXPECT_THAT(Terminologia({"restaurar"}).Out, HasSubstr("As importações foram desfeitas"));
    EXPECT_TRUE(std::filesystem::is_empty(File("dados")));
    EXPECT_EQ(json::parse(Terminologia({"restaurar", "--formato", "json"}).Out)["base"],
              (ExecutablePath().parent_path() / "tuss.db").string());
}

} // namespace
} // namespace conferix
