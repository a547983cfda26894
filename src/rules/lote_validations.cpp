#include "rules/lote_validations.h"

#include "platform/format_settings.h"
#include "rules/guia_rules.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <vector>

namespace conferix {

namespace {

constexpr std::size_t kMaxGuias = 100;

// In the order of the enumeration.
constexpr std::array<std::string_view, kTiposGuia> kNomesTipoGuia = {
    "Consulta", "SP-SADT", "Resumo de Internação", "Honorários", "Odonto"};

std::shared_ptr<TValidationMessage> ErrorAt(const TValidation* rule, std::string reason, const TXmlNode* at) {
    if (at == nullptr)
        return TValidationMessage::CreateError(rule, std::move(reason));
    return TValidationMessage::CreateError(rule, std::move(reason), {}, at->Line(), at->LinePos(),
                                           at->FilePos());
}

} // namespace

void TLoteValidation::Visit(const IMensagemTiss& mensagem) {
    if (mensagem.TipoTransacao() == TEnumTipoTransacaoTiss::tmEnvioLoteGuias)
        mensagem.LoteGuias().Accept(*this);
    else
        ClearMessages();
}

void TLoteComGuiaValidation::Visit(const ILoteGuias& lote) {
    StartVisit();
    if (lote.QtdGuias() > 0)
        AddMessage(
            TValidationMessage::CreateSuccess(this, "O lote atende o limite mínimo exigido de 1 guia."));
    else
        AddMessage(ErrorAt(this,
                           "Como o tipo da transação foi definida como sendo \"ENVIO_LOTE_GUIAS\", é "
                           "necessário que o XML contenha um lote com pelo menos uma guia TISS. Porém, não "
                           "foram localizadas guias TISS no conteúdo do XML.",
                           lote.Node()));
}

void TLoteDeUmTipoValidation::Visit(const ILoteGuias& lote) {
    StartVisit();
    const std::vector<IGuiaTiss> guias = lote.Guias();
    if (guias.empty())
        return;
    std::array<std::size_t, kTiposGuia> counts{};
    for (const IGuiaTiss& guia : guias)
        ++counts[static_cast<std::size_t>(guia.TipoGuia())];
    std::vector<std::string> parts;
    for (std::size_t tipo = 0; tipo < kTiposGuia; ++tipo)
        if (counts[tipo] > 0)
            parts.push_back(fmt::format("{} de {}", counts[tipo], kNomesTipoGuia[tipo]));
    if (parts.size() % 2 == 1)
        AddMessage(TValidationMessage::CreateSuccess(this, "Todas as guias do lote são do mesmo tipo."));
    else
        AddMessage(ErrorAt(this,
                           fmt::format("Um lote só pode conter guias de um mesmo tipo. Porém, foram "
                                       "encontradas tipos diferentes de guias dentro do lote ({}).",
                                       fmt::join(parts, ", ")),
                           guias.front().Node()));
}

void TLoteAteCemGuiasValidation::Visit(const ILoteGuias& lote) {
    StartVisit();
    const std::vector<IGuiaTiss> guias = lote.Guias();
    if (guias.size() <= kMaxGuias)
        AddMessage(TValidationMessage::CreateSuccess(
            this, "O lote não excede o limite máximo permitido de 100 guias."));
    else
        AddMessage(ErrorAt(
            this,
            fmt::format("De acordo com o padrão TISS, um lote pode conter no máximo 100 guias. Porém, {} "
                        "guias foram encontradas no XML.",
                        TFormatSettings::Regional().Count(static_cast<std::int64_t>(guias.size()))),
            guias[kMaxGuias].Node()));
}

template<class Guia>
void TLoteGuiaTissValidation<Guia>::Visit(const ILoteGuias& lote) {
    const std::vector<Guia> guias = lote.GuiasTiss().Lista<Guia>();
    ClearMessages();
    if (guias.empty())
        return;
    MarkValidated();
    for (const auto& rule : Validations())
        for (const Guia& guia : guias) {
            guia.Accept(*rule);
            AddValidationMessages(rule->ValidationMessages());
        }
}

void TLoteGuiaConsultaValidation::CreateValidations() {
    TNamedValidation::CreateValidations();
    AddGuiaValidation<TGuiaConsultaProcedimentoValidation>();
}

void TLoteGuiaSpSadtValidation::CreateValidations() {
    TNamedValidation::CreateValidations();
    AddGuiaValidation<TGuiaSpSadtProcedimentosExecutadosValidation>();
    AddGuiaValidation<TGuiaSpSadtOutrasDespesasValidation>();
    AddGuiaValidation<TGuiaSpSadtSequencialItemValidation>();
    AddGuiaValidation<TGuiaSpSadtValorTotalValidation>();
}

void TLoteGuiaResumoInternacaoValidation::CreateValidations() {
    TNamedValidation::CreateValidations();
    AddGuiaValidation<TGuiaResumoInternacaoProcedimentosExecutadosValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoOutrasDespesasValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoSequencialItemValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoValorTotalValidation>();
}

void TLoteGuiaHonorariosValidation::CreateValidations() {
    TNamedValidation::CreateValidations();
    AddGuiaValidation<TGuiaHonorariosProcedimentosExecutadosValidation>();
    AddGuiaValidation<TGuiaHonorariosSequencialItemValidation>();
    AddGuiaValidation<TGuiaHonorariosTotalizadorHonorariosValidation>();
}

void TLoteGuiasValidation::CreateValidations() {
    TLoteValidation::CreateValidations();
    AddValidation<TLoteSemGuiasValidation>();
    AddValidation<TLoteComGuiasDeTiposDiferentesValidation>();
    AddValidation<TLoteComMaisDeCemGuiasValidation>();
    // One memory of the terminology's answers for the guides of all kinds.
    const std::shared_ptr<TTussManager> manager = OpenTussManager(tuss_);
    AddValidation<TLoteGuiaConsultaValidation>(versaoTiss_, manager);
    AddValidation<TLoteGuiaSpSadtValidation>(versaoTiss_, manager);
    AddValidation<TLoteGuiaResumoInternacaoValidation>(versaoTiss_, manager);
    AddValidation<TLoteGuiaHonorariosValidation>(versaoTiss_, manager);
    AddValidation<TLoteGuiaOdontoValidation>(versaoTiss_, manager);
}

void TLoteGuiasValidation::Visit(const ILoteGuias& lote) {
    StartVisit();
    VisitChildren(lote);
}

} // namespace conferix
