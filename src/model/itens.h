// The lists of items of a billing guide and their sums.
#pragma once

#include "model/arquivo_tiss_visitor.h"
#include "xml/bindings/guia_items.h"

#include <cstdint>
#include <string_view>

namespace conferix {

/// The executed procedures of a guide.
class TProcedimentosExecutadosBase : public TXmlBinding {
  public:
    TProcedimentosExecutadosBase(TXmlNode* container, const TItemListNames& names)
        : TXmlBinding(container), names_(&names) {}

    /// The items in document order.
    TProcedimentos Procedimentos() const { return {Node(), names_->Item, &names_->Values}; }
    /// The item at a 0-based index; one without node beyond the end. Walks the list.
    TProcedimentoExecutado GetProcedimento(std::int64_t index) const { return Procedimentos().Get(index); }
    std::int64_t Count() const { return Procedimentos().Count(); }
    /// Sum of the items' total values, rounded to cents once.
    double TotalProcedimentos() const;

  private:
    const TItemListNames* names_;
};

/// The annex of other expenses of a guide.
class TOutrasDespesasBase : public TXmlBinding {
  public:
    TOutrasDespesasBase(TXmlNode* container, const TItemListNames& names)
        : TXmlBinding(container), names_(&names) {}

    /// The items in document order.
    TDespesas Despesas() const { return {Node(), names_->Item, &names_->Values}; }
    /// The item at a 0-based index; one without node beyond the end. Walks the list.
    TDespesa GetDespesa(std::int64_t index) const { return Despesas().Get(index); }
    std::int64_t Count() const { return Despesas().Count(); }

    /// Sum of the total values of the items whose kind is exactly this code, rounded to cents.
    double TotalDespesa(std::string_view codigoDespesa) const;

    // Sums by category, each of the code of 3.x and 4.x and, where there is one, of the code of 2.x.
    double TotalDiarias() const { return TotalDespesa("05") + TotalDespesa("5"); }
    double TotalTaxasAlugueis() const { return TotalDespesa("07") + TotalDespesa("4"); }
    double TotalMateriais() const { return TotalDespesa("03") + TotalDespesa("3"); }
    double TotalMedicamentos() const { return TotalDespesa("02") + TotalDespesa("2"); }
    double TotalOPME() const { return TotalDespesa("08"); }
    double TotalGasesMedicinais() const { return TotalDespesa("01") + TotalDespesa("1"); }

  private:
    const TItemListNames* names_;
};

} // namespace conferix
