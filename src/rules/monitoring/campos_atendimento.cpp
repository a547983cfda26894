#include "rules/monitoring/campos_atendimento.h"

#include <fmt/format.h>

namespace conferix {

namespace {

constexpr std::string_view kOrigens =
    "e a origem da guia for igual a 1 (rede contratada, referenciada ou credenciada), 2 (rede própria - "
    "cooperados) ou 3 (rede própria - demais prestadores).";

bool IsOneOf(std::string_view kind, std::string_view kinds) {
    return kind.size() == 1 && kinds.find(kind) != std::string_view::npos;
}

} // namespace

void TCampoDeTiposDeGuia::operator()(TCampoValidation& campo, const TGuiaFields& guia) const {
    if (!guia.TipoEventoAtencao.Present() || !guia.OrigemEventoAtencao.Present())
        return;
    const std::string_view kind = guia.TipoEventoAtencao.Text();
    const TXmlField& field = guia.*Campo;
    if (field.Present()) {
        if (!IsOneOf(kind, Allowed))
            campo.Error(field.Node(),
                        fmt::format("{} só deverá ser informado quando o tipo da guia for igual a {} {}",
                                    AllowedName, Kinds, kOrigens));
        return;
    }
    const bool exempt = ReembolsoExempt && guia.IsReembolso();
    if (IsOneOf(kind, Demanded) && !exempt)
        campo.Error(guia.Guia.Node(),
                    fmt::format("{} não informado. {} deverá ser informado quando o tipo da guia for {}{} {}",
                                AbsentName, DemandedName, ShortDemand ? "" : "igual a ", Kinds, kOrigens));
}

} // namespace conferix
