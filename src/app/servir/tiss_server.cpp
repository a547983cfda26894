#include "app/servir/tiss_server.h"

#include "app/schema_import.h"
#include "app/servir/service_page.h"
#include "platform/platform.h"
#include "report/message_json.h"

#include <fmt/format.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/ostream_sink.h>

#include <chrono>
#include <exception>
#include <utility>

namespace conferix {

namespace {

using TMilliseconds = std::chrono::duration<double, std::milli>;

constexpr std::string_view kLiveness = "/saude";
constexpr std::string_view kReadiness = "/saude/pronta";
constexpr std::string_view kMetrics = "/metricas";

TServiceAnswer StateAnswer(unsigned status, const TJson& json) {
    return {status, "application/json", JsonText(json, -1) + '\n'};
}

/// What orchestrators ask every few seconds, as long as it is well.
bool IsRoutine(const THttpExchange& exchange) {
    return exchange.Status == 200 &&
           (exchange.Route == kLiveness || exchange.Route == kReadiness || exchange.Route == kMetrics);
}

} // namespace

/// The lines that a service writes of itself.
class TTissServer::TLog {
  public:
    explicit TLog(std::ostream& out)
        : logger_("servico", std::make_shared<spdlog::sinks::ostream_sink_mt>(out, true)) {
        logger_.set_error_handler([](const std::string&) {});
        logger_.set_pattern("%Y-%m-%d %H:%M:%S [%n] %v");
    }
    void Write(const std::string& text) { logger_.info(text); }

  private:
    spdlog::logger logger_;
};

TTissServer::TTissServer(const TTissServerOptions& options, TServiceEngine engine, std::ostream& log)
    : engine_(std::move(engine)), bodyBytes_(options.Limits.BodyBytes), metrics_(options.Version),
      log_(std::make_unique<TLog>(log)) {
    for (std::size_t i = 0; i < options.Limits.Runs; ++i)
        terminologies_.push_back(engine_.NewTerminology());
    server_ =
        std::make_unique<TRequestServer>(options.Address, options.Port, options.Limits, Routes(), Observer());
}

TTissServer::~TTissServer() = default;

std::vector<THttpRoute> TTissServer::Routes() {
    const auto work = [this](auto answer) {
        return [this, answer](THttpRequest& request, std::size_t worker) {
            const bool fromPage = IsFromBrowserForm(request);
            try {
                return answer(request, engine_, terminologies_[worker], metrics_);
            } catch (const EHttpRefusal& refusal) {
                if (!fromPage)
                    throw;
                return RefusalPage(refusal.Status(), refusal.what());
            }
        };
    };
    return {{"GET", "/", false,
             [page = ServicePage(bodyBytes_)](const THttpRequest&, std::size_t) { return page; }},
            {"POST", "/validar", true, work(&AnswerValidar)},
            {"POST", "/corrigir", true, work(&AnswerCorrigir)},
            {"POST", "/imprimir", true, work(&AnswerImprimir)},
            {"GET", "/regras", false,
             [this](const THttpRequest& request, std::size_t) { return AnswerRegras(request, engine_); }},
            {"GET", std::string(kLiveness), false,
             [this](const THttpRequest&, std::size_t) {
                 return StateAnswer(200, {{"estado", "vivo"}, {"problemas", Problems()}});
             }},
            {"GET", std::string(kReadiness), false,
             [this](const THttpRequest&, std::size_t) { return AnswerReadiness(); }},
            {"GET", std::string(kMetrics), false, [this](const THttpRequest&, std::size_t) {
                 return TServiceAnswer{200, "text/plain; version=0.0.4; charset=utf-8",
                                       metrics_.Text(server_->Load())};
             }}};
}

THttpObserver TTissServer::Observer() {
    return {[this](const THttpExchange& exchange) {
                metrics_.Count(exchange);
                if (!IsRoutine(exchange))
                    log_->Write(fmt::format("{} {} {} {:.1f} ms, {} bytes recebidos, {} enviados",
                                            exchange.Method, exchange.Route, exchange.Status,
                                            TMilliseconds(exchange.Duration).count(), exchange.BytesIn,
                                            exchange.BytesOut));
            },
            [this](const THttpLoad& load) {
                log_->Write(
                    fmt::format("parando; em andamento: {}, em espera: {}", load.Running, load.Waiting));
            }};
}

TServiceAnswer TTissServer::AnswerReadiness() const {
    if (server_->IsStopping())
        return StateAnswer(503, {{"estado", "parando"}});
    if (const std::string obstacle = Obstacle(); !obstacle.empty())
        return StateAnswer(503, {{"estado", "falha"}, {"erro", obstacle}});
    return StateAnswer(200, {{"estado", "pronto"}});
}

/// What keeps every file from being judged; empty for nothing.
std::string TTissServer::Obstacle() const {
    try {
        static_cast<void>(engine_.LoadConfig());
        if (engine_.Schemas.FileNames().empty())
            return fmt::format("Não há schemas XSD na pasta \"{}\".", PathText(engine_.Schemas.Folder()));
        static_cast<void>(engine_.NewTerminology().CreateConnection());
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

std::vector<std::string> TTissServer::Problems() const {
    std::vector<std::string> problems;
    if (std::string obstacle = Obstacle(); !obstacle.empty())
        problems.push_back(std::move(obstacle));
    try {
        for (std::string& fault : UnusableSchemas(engine_.Schemas))
            problems.push_back(std::move(fault));
    } catch (const EFileNotRead&) { // Obstacle() says so
        return problems;
    }
    return problems;
}

} // namespace conferix
