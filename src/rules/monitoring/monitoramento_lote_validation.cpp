#include "rules/monitoring/monitoramento_lote_validation.h"

#include "platform/format_settings.h"
#include "rules/monitoring/campos_atendimento.h"
#include "rules/monitoring/campos_datas.h"
#include "rules/monitoring/campos_identificacao.h"
#include "rules/monitoring/campos_itens.h"
#include "rules/monitoring/campos_valores.h"
#include "rules/tuss_validation.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>

namespace conferix {

namespace {

constexpr std::int64_t kMaxGuias = 10000;

/// Lets the rules of a context share the fields of a guide while the guide is visited.
class TCurrentGuia {
  public:
    TCurrentGuia(TMonitoramentoContext& context, const TGuiaFields& fields) : context_(context) {
        context_.Current = &fields;
    }
    ~TCurrentGuia() { context_.Current = nullptr; }
    TCurrentGuia(const TCurrentGuia&) = delete;
    TCurrentGuia& operator=(const TCurrentGuia&) = delete;

  private:
    TMonitoramentoContext& context_;
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

TMonitoramentoContextPtr NewMonitoramentoContext(const std::shared_ptr<const IArquivoTiss>& arquivo,
                                                 const std::shared_ptr<ITussConnection>& tuss) {
    auto context = std::make_shared<TMonitoramentoContext>();
    context->Tuss = OpenTussManager(tuss);
    std::optional<TDate> registered;
    if (arquivo != nullptr)
        context->VersaoTiss = arquivo->Versao();
    if (const auto monitoramento = std::dynamic_pointer_cast<const IMonitoramento>(arquivo)) {
        const TLoteMonitoramento lote = monitoramento->Lote();
        registered = ParseXsDate(lote.DataRegistroTransacao().Text());
        if (lote.CompetenciaLote().Present())
            context->Competencia = lote.CompetenciaLote().Text();
    }
    context->Referencia = registered ? std::chrono::local_days(*registered) : LocalNow();
    return context;
}

void TLoteComMaisDeDezMilGuiasRule::Visit(const IMonitoramento& monitoramento) {
    StartVisit();
    const std::int64_t count = monitoramento.Lote().QtdGuias();
    if (count <= kMaxGuias) {
        AddMessage(TValidationMessage::CreateSuccess(
            this, "O lote não excede o limite máximo permitido de 10.000 guias."));
        return;
    }
    const TXmlField first(monitoramento.Lote().GuiasMonitoramento().Get(kMaxGuias).Node());
    AddMessage(TValidationMessage::CreateError(
        this,
        fmt::format(
            "De acordo com o padrão TISS, um lote de monitoramento pode conter no máximo 10.000 guias. "
            "Porém, {} guias foram encontradas no XML.",
            TFormatSettings::Regional().Count(count)),
        {}, first.Line(), first.LinePos(), first.FilePos()));
}

void TGuiaMonitoramentoRule::CreateValidations() {
    TValidation::CreateValidations();
    AddRules<TCampo010Validation, TPrestadorExecutanteValidation, TDadosBeneficiarioValidation,
             TCampo023Validation, TCampo024Validation, TCampo025Validation, TCampo029Validation,
             TCampo030Validation, TCampo031Validation, TCampo032Validation, TCampo033Validation,
             TCampo080Validation, TCampo034Validation, TCampo038Validation, TCampo039Validation,
             TCampo040Validation, TCampo045Validation, TCampo046Validation, TCampo049Validation,
             TValoresDaGuiaValidation, TProcedimentosValidation>();
}

void TGuiaMonitoramentoRule::VisitGuia(const IGuiaMonitoramento& guia) {
    fields_.Read(guia);
    const TCurrentGuia current(*Context(), fields_);
    VisitChildren(guia);
}

void TGuiaMonitoramentoRule::Visit(const IMonitoramento& monitoramento) {
    StartVisit();
    for (const TGuiaMonitoramento& guia : monitoramento.Lote().GuiasMonitoramento())
        VisitGuia(guia);
}

void TGuiaMonitoramentoRule::Visit(const IGuiaMonitoramento& guia) {
    StartVisit();
    VisitGuia(guia);
}

void TGrupoCamposRule::Visit(const IGuiaMonitoramento& guia) {
    StartVisit();
    VisitChildren(guia);
}

void TPrestadorExecutanteGroup::CreateValidations() {
    TValidation::CreateValidations();
    AddRules<TCampo014Validation, TCampo015Validation>();
}

void TDadosBeneficiarioGroup::CreateValidations() {
    TValidation::CreateValidations();
    AddRules<TCampo016Validation, TCampo017Validation, TCampo018Validation, TCampo019Validation>();
}

void TValoresDaGuiaGroup::CreateValidations() {
    TValidation::CreateValidations();
    AddRules<TCampo050Validation, TCampo051Validation, TCampo052Validation, TCampo053Validation,
             TCampo054Validation, TCampo055Validation, TCampo056Validation, TCampo057Validation,
             TCampo058Validation, TCampo059Validation, TCampo060Validation, TCampo061Validation,
             TCampo084Validation>();
}

void TProcedimentosGroup::CreateValidations() {
    TValidation::CreateValidations();
    AddRules<TCampo064Validation, TCampo065Validation, TCampo066Validation, TCampo070Validation,
             TCampo071Validation, TCampo072Validation, TCampo073Validation, TCampo074Validation,
             TCampo075Validation, TCampo085Validation, TDetalhePacoteValidation>();
}

void TDetalhePacoteGroup::CreateValidations() {
    TValidation::CreateValidations();
    AddRules<TCampo077Validation, TCampo078Validation, TCampo079Validation>();
}

void TMonitoramentoLoteValidation::CreateValidations() {
    TValidation::CreateValidations();
    AddValidation<TLoteComMaisDeDezMilGuiasValidation>();
    AddValidation<TGuiaMonitoramentoValidation>(NewMonitoramentoContext(arquivo_, tuss_));
}

void TMonitoramentoLoteValidation::Visit(const IMonitoramento& monitoramento) {
    StartVisit();
    VisitChildren(monitoramento);
}

} // namespace conferix
