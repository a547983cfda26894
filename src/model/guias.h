// The five kinds of billing guide.
#pragma once

#include "model/arquivo_tiss_visitor.h"
#include "model/itens.h"
#include "model/tiss_enums.h"
#include "xml/bindings/guia_items.h"

#include <cassert>
#include <string_view>

namespace conferix {

/// A billing guide of any kind: a value of two pointers, cheap to copy. What only some kinds have is open
/// in the classes of those kinds.
class TGuiaTissBase : public TXmlBinding {
  public:
    TGuiaTissBase(TXmlNode* node, TEnumTipoGuia tipo, const TGuiaNames& names)
        : TXmlBinding(node), names_(&names), tipo_(tipo) {}

    /// Calls the visitor's overload for this kind of guide.
    void Accept(IArquivoTissVisitor& visitor) const;
    TEnumTipoGuia TipoGuia() const { return tipo_; }
    /// The provider's number of the guide (numeroGuiaPrestador); empty when absent.
    std::string_view NumeroGuia() const { return Field(names_->NumeroGuia).Text(); }
    /// The number by which people know the guide: the provider's, else the first number of a guide below the
    /// element, as where its header is misnamed; empty when there is none.
    std::string_view NumeroMostrado() const;
    /// The total that the guide declares, in reais; 0 when absent or no number.
    double ValorTotalGuia() const { return CampoValorTotalGuia().Number().value_or(0); }
    /// The element of that total; absent in the consultation guides of 2.x.
    TXmlField CampoValorTotalGuia() const { return Field(names_->ValorTotalGuia); }

  protected:
    TProcedimentoConsulta Procedimento() const { return {Find("dadosAtendimento"), CampoValorTotalGuia()}; }
    TProcedimentosExecutadosBase ProcedimentosExecutados() const {
        return {Container(names_->Procedimentos), names_->Procedimentos};
    }
    TOutrasDespesasBase OutrasDespesas() const { return {Container(names_->Despesas), names_->Despesas}; }
    TValorTotalGuia ValorTotal() const { return {Find(names_->ValorTotal.Grupo), &names_->ValorTotal}; }

  private:
    TXmlNode* Container(const TItemListNames& list) const {
        return list.Item.empty() ? nullptr : Find(list.Container);
    }

    const TGuiaNames* names_;
    TEnumTipoGuia tipo_;
};

/// A guide whose kind is known.
template<TEnumTipoGuia Tipo>
class TGuiaTissOf : public TGuiaTissBase {
  public:
    static constexpr TEnumTipoGuia kTipoGuia = Tipo;

    /// The guide must be of this kind.
    explicit TGuiaTissOf(const TGuiaTissBase& guia) : TGuiaTissBase(guia) { assert(guia.TipoGuia() == Tipo); }
};

/// Consultation guide.
class TGuiaConsulta : public TGuiaTissOf<TEnumTipoGuia::tgConsulta> {
  public:
    using TGuiaTissBase::Procedimento;
    using TGuiaTissOf::TGuiaTissOf;
};

/// SP/SADT guide: diagnostic and therapeutic services.
class TGuiaSpSadt : public TGuiaTissOf<TEnumTipoGuia::tgSPSADT> {
  public:
    using TGuiaTissBase::OutrasDespesas;
    using TGuiaTissBase::ProcedimentosExecutados;
    using TGuiaTissBase::ValorTotal;
    using TGuiaTissOf::TGuiaTissOf;
};

/// Hospitalisation summary.
class TGuiaResumoInternacao : public TGuiaTissOf<TEnumTipoGuia::tgResumoInternacao> {
  public:
    using TGuiaTissBase::OutrasDespesas;
    using TGuiaTissBase::ProcedimentosExecutados;
    using TGuiaTissBase::ValorTotal;
    using TGuiaTissOf::TGuiaTissOf;
};

/// Fees guide.
class TGuiaHonorarios : public TGuiaTissOf<TEnumTipoGuia::tgHonorarios> {
  public:
    using TGuiaTissBase::ProcedimentosExecutados;
    using TGuiaTissOf::TGuiaTissOf;

    TXmlField ValorTotalHonorarios() const { return CampoValorTotalGuia(); }
};

/// Dental guide; expenses in 2.x only.
class TGuiaOdonto : public TGuiaTissOf<TEnumTipoGuia::tgOdonto> {
  public:
    using TGuiaTissBase::OutrasDespesas;
    using TGuiaTissBase::ProcedimentosExecutados;
    using TGuiaTissOf::TGuiaTissOf;
};

} // namespace conferix
