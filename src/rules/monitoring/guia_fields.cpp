#include "rules/monitoring/guia_fields.h"

namespace conferix {

double TGuiaFields::SumOfItens(TNumberField TItemFields::*number) const {
    long double sum = 0;
    for (const TItemFields& item : Itens)
        sum += (item.*number).Value.value_or(0);
    return static_cast<double>(sum);
}

} // namespace conferix
