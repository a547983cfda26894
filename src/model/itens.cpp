#include "model/itens.h"

#include "model/money.h"

namespace conferix {

double TProcedimentosExecutadosBase::TotalProcedimentos() const {
    double sum = 0;
    for (const TProcedimentoExecutado& procedimento : Procedimentos())
        sum += procedimento.ValorTotal().Number().value_or(0);
    return RoundMoney(sum);
}

double TOutrasDespesasBase::TotalDespesa(std::string_view codigoDespesa) const {
    double sum = 0;
    for (const TDespesa& despesa : Despesas())
        if (despesa.CodigoDespesa().Text() == codigoDespesa)
            sum += despesa.ValorTotal().Number().value_or(0);
    return RoundMoney(sum);
}

} // namespace conferix
