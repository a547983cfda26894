#include "rules/monitoring/campos_datas.h"

#include <fmt/format.h>

namespace conferix {

namespace {

constexpr std::string_view kInclusao = "1";

} // namespace

void TDataAnterior::operator()(TCampoValidation& campo, const TGuiaFields& guia) const {
    const TDateField& date = guia.*Data;
    if (!date.Value)
        return;
    if (std::chrono::local_days(*date.Value) >= campo.Run().Referencia)
        campo.Error(date.Field.Node(), std::string(NotBeforeReference));
    if (NotEarlierThan == nullptr)
        return;
    const TDateField& other = guia.*NotEarlierThan;
    if (other.Value && *date.Value < *other.Value)
        campo.Error(date.Field.Node(), std::string(TooEarly));
}

void CheckDataProcessamento(TCampoValidation& campo, const TGuiaFields& guia) {
    static constexpr TDataAnterior kAnterior = {
        &TGuiaFields::DataProcessamentoGuia,
        "A data do processamento da guia deve ser anterior à data atual."};
    kAnterior(campo, guia);
    const TDateField& date = guia.DataProcessamentoGuia;
    if (!date.Value || guia.TipoRegistro.Text() != kInclusao || !campo.Run().Competencia)
        return;
    const std::string month = fmt::format("{:04}{:02}", static_cast<int>(date.Value->year()),
                                          static_cast<unsigned>(date.Value->month()));
    if (month != *campo.Run().Competencia)
        campo.Error(
            date.Field.Node(),
            "Quando o indicador do tipo de registro for igual a 1 (inclusão), o mês e o ano da data de "
            "processamento devem ser iguais ao mês e ao ano da competência dos dados.");
}

} // namespace conferix
