// The service as clients meet it, and as an administrator starts and stops it.
#include "app/servir/tiss_server.h"
#include "data/database_tuss.h"
#include "schema_model/built_in_folders.h"
#include "service/http_test_client.h"
#include "support/case_file.h"
#include "support/command_test.h"
#include "support/patterns.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sstream>
#include <thread>

namespace conferix {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using tests::TTestClient;

const std::string kFaulty = "consulta-4.01.00-com-erros.xml";

TServiceEngine Engine() {
    TServiceEngine engine;
    engine.Schemas = TSchemaFolder({}, BuiltInSchemaFolder());
    engine.NewTerminology = [] {
        return TDBConnectionFactory([] { return TDatabaseTuss(CONFERIX_TUSS_DB).CreateConnection(); });
    };
    engine.LoadConfig = [] {
        TConfig config;
        config.SetDefaultInitialConfig();
        return config;
    };
    return engine;
}

/// A service with two threads for its work.
class Servir : public TCommandTest {
  protected:
    void Begin(const TServiceEngine& engine = Engine()) {
        TTissServerOptions options;
        options.Port = 0;
        options.Version = "9.9";
        options.Limits.Runs = 2;
        service_ = std::make_unique<TTissServer>(options, engine, log_);
        thread_ = std::thread([this] { EXPECT_TRUE(service_->Server().Serve()); });
    }
    void End() {
        service_->Server().Stop();
        thread_.join();
    }
    ~Servir() override {
        if (thread_.joinable())
            End();
    }

    std::string Ask(const std::string& line, const std::string& headers, const std::string& body) const {
        return TTestClient(service_->Server().Port())
            .Send(fmt::format("{} HTTP/1.1\r\nHost: a\r\n{}Content-Length: {}\r\nConnection: close\r\n\r\n{}",
                              line, headers, body.size(), body))
            .Answer();
    }

    std::ostringstream log_;
    std::unique_ptr<TTissServer> service_;
    std::thread thread_;
};

/// Puts the examples in the places of their names between braces.
std::string WithExamples(std::string body) {
    for (std::size_t at = body.find('{'); at != std::string::npos; at = body.find('{', at)) {
        const std::size_t end = body.find('}', at);
        const std::string bytes = ReadTestFile(Example(body.substr(at + 1, end - at - 1)));
        body.replace(at, end + 1 - at, bytes);
        at += bytes.size();
    }
    return body;
}

std::string BodyOf(const std::string& answer) {
    return answer.substr(std::min(answer.size(), answer.find("\r\n\r\n") + 4));
}

TEST_F(Servir, AnswersAsTheCasesSay) {
    Begin();
    for (const tests::TCase& c : tests::Cases("service/servir.casos")) {
        const auto& [headers, body] = c.Inputs.front();
        const std::string answer = Ask(c.Section, headers == "-" ? "" : headers, WithExamples(body));
        std::size_t at = 0;
        for (const std::string& expected : c.Expected) {
            at = answer.find(expected, at);
            EXPECT_NE(at, std::string::npos) << c << "\n" << expected << "\nin:\n" << answer;
            at = at == std::string::npos ? 0 : at + expected.size();
        }
    }
    End();
    EXPECT_THAT(log_.str(), HasSubstr("[servico] POST /validar 200 "));
    EXPECT_THAT(log_.str(), Not(HasSubstr("maria"))) << "what clients write is not logged";
    EXPECT_THAT(log_.str(), Not(HasSubstr("/saude"))) << "probes are routine";
}

TEST_F(Servir, TellsWhatTheCommandsTellWhoeverAsksBeside) {
    Begin();
    const std::string bytes = ReadTestFile(Example(kFaulty));
    options_ = {"--terminologia", CONFERIX_TUSS_DB};
    const std::string told = Run({"validar", "-", "--formato", "json"}, bytes).Out;
    const std::string corrected = Run({"corrigir", "-", "--todas", "--estrutura"}, bytes).Out;
    std::vector<std::jthread> clients;
    for (int client = 0; client < 4; ++client)
        clients.emplace_back([&] {
            for (int i = 0; i < 5; ++i) {
                EXPECT_EQ(BodyOf(Ask("POST /validar", "", bytes)), told);
                EXPECT_EQ(BodyOf(Ask("POST /corrigir?todas&estrutura", "", bytes)), corrected);
                EXPECT_THAT(Ask("GET /metricas", "", ""), HasSubstr("\nconferix_info{versao=\"9.9\"} 1\n"));
            }
        });
    clients.clear();
    std::string metrics = BodyOf(Ask("GET /metricas", "", ""));
    // Who has just handed over the last answer may not have ended yet.
    for (int i = 0; i < 100 && metrics.find("andamento 0\n") == std::string::npos; ++i)
        metrics = BodyOf(Ask("GET /metricas", "", ""));
    EXPECT_THAT(metrics, HasSubstr("conferix_requisicoes_total{rota=\"/validar\",status=\"200\"} 20\n"));
    EXPECT_THAT(metrics, HasSubstr("conferix_arquivos_total{veredito=\"invalido\"} 40\n"));
    EXPECT_THAT(metrics, HasSubstr("conferix_duracao_segundos_count{rota=\"/corrigir\"} 20\n"));
    EXPECT_THAT(metrics, HasSubstr("conferix_execucoes_em_andamento 0\n"));
}

TEST_F(Servir, SaysWhenItIsNotReadyAndWhenAnAnswerGrowsTooLarge) {
    TServiceEngine engine = Engine();
    engine.AnswerBytes = 400;
    engine.NewTerminology = [this] {
        return TDBConnectionFactory([this] { return TDatabaseTuss(folder_ / "nada.db").CreateConnection(); });
    };
    Begin(engine);
    const std::string answer = Ask("GET /saude/pronta", "", "");
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 503 "));
    EXPECT_THAT(answer, HasSubstr("nada.db"));
    EXPECT_THAT(Ask("GET /saude", "", ""), testing::AllOf(StartsWith("HTTP/1.1 200 "), HasSubstr("nada.db")));
    EXPECT_THAT(Ask("POST /validar", "", std::string(20, 'x')), StartsWith("HTTP/1.1 413 "));
    EXPECT_THAT(Ask("POST /corrigir?todas", "", ReadTestFile(Example("consulta-4.01.00-valido.xml"))),
                StartsWith("HTTP/1.1 503 "))
        << "the file is not to blame";
}

TEST_F(Servir, StopsAtASignalWithWhatItHadToSay) {
    TTissServerOptions free;
    free.Port = 0;
    const std::uint16_t port = TTissServer(free, Engine(), log_).Server().Port();
    TCommandResult result{};
    std::filesystem::create_directory(File("esquemas"));
    WriteTestFile(File("esquemas/tissV4_01_00.xsd"), "<a");
    std::thread command([&] {
        result = Run({"servir", "--endereco", "0.0.0.0", "--porta", std::to_string(port), "--esquemas",
                      File("esquemas")});
    });
    std::string alive;
    while (alive.empty())
        alive = TTestClient(port).Send("GET /saude HTTP/1.0\r\n\r\n").Answer();
    EXPECT_THAT(TTestClient(port).Send("HEAD /regras HTTP/1.0\r\n\r\n").Answer(), HasSubstr(" 200 OK\r\n"));
    EXPECT_EQ(Run({"servir", "--porta", std::to_string(port)}).Err,
              fmt::format(
                  "conferix: erro: não foi possível escutar em 127.0.0.1, porta {}: a porta já está em uso\n",
                  port));
    std::raise(SIGTERM);
    command.join();
    EXPECT_EQ(result.Status, kExitValid);
    EXPECT_THAT(result.Err, StartsWith(fmt::format("conferix: aviso: o serviço atende outros computadores em "
                                                   "0.0.0.0:{}, sem senha e sem criptografia;",
                                                   port)));
    EXPECT_THAT(result.Err, HasSubstr("conferix: aviso: Esquema tissV4_01_00.xsd, linha 1: "));
    EXPECT_THAT(result.Err, ContainsPattern("HEAD /regras 200 [^\n]*, 0 enviados"));
    EXPECT_THAT(result.Err, HasSubstr(fmt::format("conferix: o serviço atende em http://0.0.0.0:{} ", port)));
    EXPECT_THAT(result.Err, testing::EndsWith("conferix: o serviço parou\n"));
}

} // namespace
} // namespace conferix
