#include "rules/monitoring/campos_datas.h"

#include <fmt/format.h>

namespace conferix {

namespace {

constexpr std::string_view kInclusao = "1";

} // namespace

void TDataRule::Check(const TGuiaFields& guia) {
    const TDateField& date = guia.*row_.Data;
    if (!date.Value)
        return;
    if (std::chrono::local_days(*date.Value) >= Context()->Referencia)
        AddError(guia, date.Field, std::string(row_.NotBeforeReference));
    if (row_.NotEarlierThan == nullptr)
        return;
    const TDateField& other = guia.*row_.NotEarlierThan;
    if (other.Value && *date.Value < *other.Value)
        AddError(guia, date.Field, std::string(row_.TooEarly));
}

void TDataProcessamentoRule::Check(const TGuiaFields& guia) {
    TDataRule::Check(guia);
    const TDateField& date = guia.DataProcessamentoGuia;
    if (!date.Value || guia.TipoRegistro.Text() != kInclusao || !Context()->Competencia)
        return;
    const std::string month = fmt::format("{:04}{:02}", static_cast<int>(date.Value->year()),
                                          static_cast<unsigned>(date.Value->month()));
    if (month != *Context()->Competencia)
        AddError(guia, date.Field,
                 "Quando o indicador do tipo de registro for igual a 1 (inclusão), o mês e o ano da data de "
                 "processamento devem ser iguais ao mês e ao ano da competência dos dados.");
}

} // namespace conferix
