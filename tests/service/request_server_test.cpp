// The server through real connections: what clients send, well or badly, and what comes back.
#include "service/http_test_client.h"
#include "service/multipart.h"
#include "service/request_server.h"
#include "support/case_file.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

namespace conferix {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using tests::TTestClient;

/// Little of everything, so that going beyond it takes little.
THttpLimits SmallLimits() {
    return {.BodyBytes = 1000,
            .HeldBytes = 1500,
            .HeadBytes = 2000,
            .Runs = 1,
            .Waiting = 1,
            .Connections = 8,
            .Head = 300ms,
            .Stall = 300ms,
            .Upload = 600ms,
            .Run = 10s,
            .Idle = 300ms,
            .Stop = 10s};
}

const std::string kSlow =
    "POST /lento HTTP/1.1\r\nHost: a\r\nConnection: close\r\nContent-Length: 1\r\n\r\nx";

/// A server of four routes in a thread of its own.
class RequestServer : public testing::Test {
  protected:
    void Begin(const THttpLimits& limits = SmallLimits()) {
        const auto echo = [](const THttpRequest& request, std::size_t) {
            std::string body = request.Body;
            for (const auto& [name, value] : request.Query)
                body += fmt::format(" {}={}", name, value);
            return TServiceAnswer{200, "text/plain", body};
        };
        const auto slow = [this](const THttpRequest& request, std::size_t) {
            ++begun_;
            while (!released_)
                std::this_thread::sleep_for(1ms);
            return TServiceAnswer{200, "text/plain", "terminou " + request.Body};
        };
        const auto failing = [](const THttpRequest& request, std::size_t) -> TServiceAnswer {
            if (request.Query.contains("recusa"))
                throw EHttpRefusal(422, "assim não");
            if (request.Query.contains("memoria"))
                throw std::bad_alloc();
            throw std::runtime_error("quebrou");
        };
        server_ = std::make_unique<TRequestServer>(
            "127.0.0.1", std::uint16_t{0}, limits,
            std::vector<THttpRoute>{{"GET", "/rapido", false, echo},
                                    {"POST", "/eco", true, echo},
                                    {"POST", "/lento", true, slow},
                                    {"POST", "/falha", true, failing}},
            THttpObserver{[this](const THttpExchange& exchange) {
                              const std::lock_guard lock(mutex_);
                              exchanges_ += fmt::format("{} {} {} {}\n", exchange.Method, exchange.Route,
                                                        exchange.Status, exchange.BytesIn);
                          },
                          {}});
        thread_ = std::thread([this] { finished_ = server_->Serve(); });
    }
    void End() {
        released_ = true;
        server_->Stop();
        thread_.join();
    }
    ~RequestServer() override {
        if (thread_.joinable())
            End();
    }

    TTestClient Client() const { return TTestClient(server_->Port()); }
    std::string Ask(const std::string& text) const { return Client().Send(text).End().Answer(); }
    void AwaitRuns(int count) const {
        while (begun_ < count)
            std::this_thread::sleep_for(1ms);
    }
    void AwaitLoad(const std::function<bool(const THttpLoad&)>& reached) const {
        while (!reached(server_->Load()))
            std::this_thread::sleep_for(1ms);
    }

    std::unique_ptr<TRequestServer> server_;
    std::thread thread_;
    std::atomic<int> begun_ = 0;
    std::atomic<bool> released_ = false;
    std::atomic<bool> finished_ = false;
    std::mutex mutex_;
    std::string exchanges_;
};

TEST_F(RequestServer, AnswersEveryRequestAsTheCasesSay) {
    Begin();
    for (const tests::TCase& c : tests::Cases("service/requests.casos")) {
        TTestClient client = Client();
        for (const auto& [text, repeated] : c.Inputs)
            for (int times = repeated.empty() ? 1 : std::stoi(repeated); times > 0; --times)
                client.Send(text);
        if (c.Section != "o cliente espera")
            client.End();
        const std::string answer = client.Answer();
        std::size_t at = 0;
        for (const std::string& expected : c.Expected) {
            at = answer.find(expected, at);
            EXPECT_NE(at, std::string::npos) << c << "\n" << expected << "\nin:\n" << answer;
            at = at == std::string::npos ? 0 : at + expected.size();
        }
        if (c.Expected.empty()) {
            EXPECT_THAT(answer, IsEmpty()) << c;
        }
    }
    AwaitLoad([](const THttpLoad& load) { return load.Connections == 0; });
    EXPECT_EQ(server_->Load().HeldBytes, 0U);
    const std::lock_guard lock(mutex_);
    EXPECT_THAT(exchanges_, HasSubstr("POST /eco 200 5\n"));
    EXPECT_THAT(exchanges_, HasSubstr("- - 501 0\n")) << "no word of a client's is told";
    EXPECT_THAT(exchanges_, testing::Not(HasSubstr("segredo")));
}

TEST_F(RequestServer, TurnsAwayWhatGoesBeyondItsRunsAndConnections) {
    Begin();
    TTestClient first = Client();
    first.Send(kSlow);
    AwaitRuns(1);
    TTestClient second = Client();
    second.Send(kSlow);
    AwaitLoad([](const THttpLoad& load) { return load.Waiting == 1; });
    const std::string third = Ask(kSlow);
    EXPECT_THAT(third, StartsWith("HTTP/1.1 503 "));
    EXPECT_THAT(third, HasSubstr("Retry-After: 2\r\n"));
    EXPECT_THAT(Ask("GET /rapido?a HTTP/1.1\r\nHost: a\r\n\r\n"), HasSubstr("200 OK"))
        << "is never kept waiting";
    std::deque<TTestClient> idle;
    for (int i = 0; i < 8; ++i)
        idle.emplace_back(server_->Port());
    EXPECT_THAT(idle.back().Answer(), StartsWith("HTTP/1.1 503 "));
    released_ = true;
    EXPECT_THAT(first.Answer(), HasSubstr("terminou x"));
    EXPECT_THAT(second.Answer(), HasSubstr("terminou x"));
}

TEST_F(RequestServer, TurnsAwayBodiesBeyondWhatItHolds) {
    Begin();
    const std::string half =
        "POST /eco HTTP/1.1\r\nHost: a\r\nContent-Length: 1000\r\n\r\n" + std::string(900, 'x');
    TTestClient first = Client();
    first.Send(half);
    AwaitLoad([](const THttpLoad& load) { return load.HeldBytes == 900; });
    EXPECT_THAT(Client().Send(half).Answer(), StartsWith("HTTP/1.1 503 "));
    EXPECT_THAT(first.Send(std::string(100, 'x')).End().Answer(), StartsWith("HTTP/1.1 200 "));
}

TEST_F(RequestServer, EndsARequestWhoseTimeIsOverAndGoesOn) {
    THttpLimits limits = SmallLimits();
    limits.Run = 100ms;
    Begin(limits);
    EXPECT_THAT(Ask(kSlow), StartsWith("HTTP/1.1 503 "));
    EXPECT_EQ(server_->Load().Running, 1U) << "the work itself cannot be broken off";
    released_ = true;
    AwaitLoad([](const THttpLoad& load) { return load.Running == 0 && load.HeldBytes == 0; });
    EXPECT_THAT(Ask("POST /eco HTTP/1.1\r\nHost: a\r\nContent-Length: 1\r\n\r\nx"), HasSubstr("200 OK"));
}

TEST_F(RequestServer, FinishesWhatIsUnderWayWhenItStops) {
    Begin();
    TTestClient client = Client();
    client.Send(kSlow);
    AwaitRuns(1);
    TTestClient between = Client();
    between.Send("GET /rapido HTTP/1.1\r\nHost: a\r\n\r\n");
    TTestClient silent = Client();
    AwaitLoad([](const THttpLoad& load) { return load.Connections == 3; });
    server_->Stop();
    EXPECT_THAT(between.Answer(), StartsWith("HTTP/1.1 200 "))
        << "and closed, since nothing is under way there";
    EXPECT_THAT(silent.Answer(), IsEmpty());
    while (!server_->IsStopping())
        std::this_thread::sleep_for(1ms);
    EXPECT_FALSE(Client().IsConnected());
    released_ = true;
    EXPECT_THAT(client.Answer(), HasSubstr("terminou x"));
    thread_.join();
    EXPECT_TRUE(finished_);
}

TEST_F(RequestServer, StopsAfterItsTimeWhateverStillRuns) {
    THttpLimits limits = SmallLimits();
    limits.Stop = 100ms;
    Begin(limits);
    TTestClient client = Client();
    client.Send(kSlow);
    AwaitRuns(1);
    server_->Stop();
    EXPECT_THAT(client.Answer(), StartsWith("HTTP/1.1 503 "));
    thread_.join();
    EXPECT_FALSE(finished_);
    released_ = true;
}

TEST_F(RequestServer, TellsWhyAnAddressCannotBeUsed) {
    Begin();
    const auto reason = [](const std::string& address, std::uint16_t port) -> std::string {
        try {
            const TRequestServer server(address, port, SmallLimits(), {}, {});
            return server.IsLoopback() ? "dentro" : "fora";
        } catch (const EListenFailed& error) {
            return error.what();
        }
    };
    EXPECT_THAT(reason("127.0.0.1", server_->Port()), HasSubstr("a porta já está em uso"));
    EXPECT_THAT(reason("192.0.2.1", 0), HasSubstr("este computador não tem esse endereço"));
    EXPECT_THAT(reason("exemplo", 0), HasSubstr("\"exemplo\" não é um endereço IP"));
    EXPECT_EQ(reason("localhost", 0) + reason("0.0.0.0", 0), "dentrofora");
}

TEST(Multipart, GivesThePartsOrSaysWhatIsWrong) {
    for (const tests::TCase& c : tests::Cases("service/forms.casos")) {
        std::vector<std::string> found;
        const auto& [body, boundary] = c.Inputs.front();
        try {
            for (const TFormPart& part : ParseForm(body, boundary, 3))
                found.push_back(fmt::format("{} {} {}", part.Name,
                                            part.IsFile ? "\"" + part.FileName + "\"" : "=", part.Content));
        } catch (const EHttpRefusal& refusal) {
            found.push_back(fmt::format("{} {}", refusal.Status(), refusal.what()));
        }
        tests::ExpectLines(c, found);
    }
}

} // namespace
} // namespace conferix
