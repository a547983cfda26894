#include "rules/monitoring/lote_monitoramento_validation.h"

#include "platform/format_settings.h"
#include "rules/monitoring/guia_reader.h"
#include "rules/tuss_validation.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>

namespace conferix {

namespace {

constexpr std::int64_t kMaxGuias = 10000;

/// Lets the rules of a run share the fields of a guide while the guide is visited.
class TCurrentGuia {
  public:
    TCurrentGuia(TRunContext& run, const TGuiaFields& fields) : run_(run) { run_.Guia = &fields; }
    ~TCurrentGuia() { run_.Guia = nullptr; }
    TCurrentGuia(const TCurrentGuia&) = delete;
    TCurrentGuia& operator=(const TCurrentGuia&) = delete;

  private:
    TRunContext& run_;
};

/// The user's date and time now.
std::chrono::local_seconds LocalNow() {
    const std::tm now = fmt::localtime(std::time(nullptr));
    const TDate date(std::chrono::year(now.tm_year + 1900),
                     std::chrono::month(static_cast<unsigned>(now.tm_mon + 1)),
                     std::chrono::day(static_cast<unsigned>(now.tm_mday)));
    return std::chrono::local_days(date) + std::chrono::hours(now.tm_hour) +
           std::chrono::minutes(now.tm_min) + std::chrono::seconds(now.tm_sec);
}

} // namespace

void TLoteAteDezMilGuias::Visit(const IMonitoramento& monitoramento) {
    StartVisit();
    const std::int64_t count = monitoramento.Lote().QtdGuias();
    if (count <= kMaxGuias)
        Success(nullptr, "O lote não excede o limite máximo permitido de 10.000 guias.");
    else
        Error(
            monitoramento.Lote().GuiasMonitoramento().Get(kMaxGuias).Node(),
            fmt::format("De acordo com o padrão TISS, um lote de monitoramento pode conter no máximo 10.000 "
                        "guias. Porém, {} guias foram encontradas no XML.",
                        TFormatSettings::Regional().Count(count)));
}

void TGuiaDoLoteValidation::Visit(const IMonitoramento& monitoramento) {
    StartVisit();
    TGuiaReader reader;
    TGuiaFields fields;
    for (const TGuiaMonitoramento& guia : monitoramento.Lote().GuiasMonitoramento()) {
        reader.Read(guia, fields);
        const TCurrentGuia current(Run(), fields);
        VisitChildren(guia);
    }
}

void TLoteMonitoramentoValidation::Visit(const IMonitoramento& monitoramento) {
    StartVisit();
    const TLoteMonitoramento lote = monitoramento.Lote();
    const std::optional<TDate> registered = ParseXsDate(lote.DataRegistroTransacao().Text());
    Run().Referencia = registered ? std::chrono::local_days(*registered) : LocalNow();
    Run().Competencia.reset();
    if (lote.CompetenciaLote().Present())
        Run().Competencia = lote.CompetenciaLote().Text();
    VisitChildren(monitoramento);
}

} // namespace conferix
