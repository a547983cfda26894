#include "service/service_metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace conferix {

namespace {

constexpr std::array kBounds = {0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1.0, 2.5, 5.0, 10.0, 30.0, 60.0};

void Head(std::string& text, std::string_view name, std::string_view type, std::string_view help) {
    fmt::format_to(std::back_inserter(text), "# HELP conferix_{0} {2}\n# TYPE conferix_{0} {1}\n", name, type,
                   help);
}

template<class Number>
void Single(std::string& text, std::string_view name, std::string_view type, std::string_view help,
            Number value) {
    Head(text, name, type, help);
    fmt::format_to(std::back_inserter(text), "conferix_{} {}\n", name, value);
}

} // namespace

void TServiceMetrics::Count(const THttpExchange& exchange) {
    const double seconds = std::chrono::duration<double>(exchange.Duration).count();
    const std::lock_guard lock(mutex_);
    ++requests_[{exchange.Route, exchange.Status}];
    received_ += exchange.BytesIn;
    sent_ += exchange.BytesOut;
    TDurations& durations = durations_[exchange.Route];
    durations.Buckets.resize(kBounds.size() + 1);
    const auto bound = std::ranges::lower_bound(kBounds, seconds);
    ++durations.Buckets[static_cast<std::size_t>(bound - kBounds.begin())];
    ++durations.Count;
    durations.Sum += seconds;
}

void TServiceMetrics::CountVerdict(const std::string& verdict) {
    const std::lock_guard lock(mutex_);
    ++verdicts_[verdict];
}

void TServiceMetrics::CountCorrections(std::size_t corrections) {
    const std::lock_guard lock(mutex_);
    corrections_ += corrections;
}

std::string TServiceMetrics::Text(const THttpLoad& load) const {
    const std::lock_guard lock(mutex_);
    std::string text;
    const auto out = std::back_inserter(text);
    Head(text, "info", "gauge", "Versão do programa.");
    fmt::format_to(out, "conferix_info{{versao=\"{}\"}} 1\n", version_);
    Head(text, "requisicoes_total", "counter", "Requisições respondidas, por rota e status.");
    for (const auto& [key, count] : requests_)
        fmt::format_to(out, "conferix_requisicoes_total{{rota=\"{}\",status=\"{}\"}} {}\n", key.first,
                       key.second, count);
    Head(text, "arquivos_total", "counter", "Arquivos verificados, por veredito.");
    for (const auto& [verdict, count] : verdicts_)
        fmt::format_to(out, "conferix_arquivos_total{{veredito=\"{}\"}} {}\n", verdict, count);
    Single(text, "correcoes_total", "counter", "Correções aplicadas.", corrections_);
    Head(text, "duracao_segundos", "histogram",
         "Do primeiro byte da requisição ao último da resposta, por rota.");
    for (const auto& [route, durations] : durations_) {
        std::uint64_t count = 0;
        for (std::size_t i = 0; i < kBounds.size(); ++i)
            fmt::format_to(out, "conferix_duracao_segundos_bucket{{rota=\"{}\",le=\"{}\"}} {}\n", route,
                           kBounds[i], count += durations.Buckets[i]);
        fmt::format_to(out,
                       "conferix_duracao_segundos_bucket{{rota=\"{0}\",le=\"+Inf\"}} {1}\n"
                       "conferix_duracao_segundos_sum{{rota=\"{0}\"}} {2}\n"
                       "conferix_duracao_segundos_count{{rota=\"{0}\"}} {1}\n",
                       route, durations.Count, durations.Sum);
    }
    Single(text, "recebidos_bytes_total", "counter", "Bytes dos corpos recebidos.", received_);
    Single(text, "enviados_bytes_total", "counter", "Bytes dos corpos enviados.", sent_);
    Single(text, "conexoes", "gauge", "Conexões abertas.", load.Connections);
    Single(text, "execucoes_em_andamento", "gauge", "Requisições em execução.", load.Running);
    Single(text, "execucoes_em_espera", "gauge", "Requisições que esperam a vez.", load.Waiting);
    Single(text, "corpos_bytes", "gauge", "Bytes de corpos em memória.", load.HeldBytes);
    return text;
}

} // namespace conferix
