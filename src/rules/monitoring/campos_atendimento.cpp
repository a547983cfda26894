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

void TTipoGuiaRule::Check(const TGuiaFields& guia) {
    if (!guia.TipoEventoAtencao.Present() || !guia.OrigemEventoAtencao.Present())
        return;
    const std::string_view kind = guia.TipoEventoAtencao.Text();
    const TXmlField& field = guia.*row_.Campo;
    if (field.Present()) {
        if (!IsOneOf(kind, row_.Allowed))
            AddError(guia, field,
                     fmt::format("{} só deverá ser informado quando o tipo da guia for igual a {} {}",
                                 row_.AllowedName, row_.Kinds, kOrigens));
        return;
    }
    const bool exempt = row_.ReembolsoExempt && guia.IsReembolso();
    if (IsOneOf(kind, row_.Demanded) && !exempt)
        AddError(guia, TXmlField(guia.Guia.Node()),
                 fmt::format("{} não informado. {} deverá ser informado quando o tipo da guia for {}{} {}",
                             row_.AbsentName, row_.DemandedName, row_.ShortDemand ? "" : "igual a ",
                             row_.Kinds, kOrigens));
}

} // namespace conferix
