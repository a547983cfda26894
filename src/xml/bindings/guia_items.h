// The parts of a billing guide: procedures, expenses, declared totals.
#pragma once

#include "xml/bindings/lote_guias_names.h"
#include "xml/bindings/xml_binding.h"
#include "xml/bindings/xml_items.h"

namespace conferix {

/// One item that a guide bills. The names are those of the 3.x and 4.x standard, whatever the version of
/// the file calls the element.
class TItemGuia : public TXmlBinding {
  public:
    TItemGuia(TXmlNode* node, const TItemNames* names) : TXmlBinding(node), names_(names) {}

    TXmlField SequencialItem() const { return Field(names_->SequencialItem); }
    TXmlField DataExecucao() const { return Field(names_->DataExecucao); } ///< xs:date
    TXmlField CodigoTabela() const { return Field(names_->CodigoTabela); } ///< number of the TUSS table
    TXmlField CodigoProcedimento() const { return Field(names_->CodigoProcedimento); }
    TXmlField QuantidadeExecutada() const { return Field(names_->QuantidadeExecutada); }
    TXmlField ReducaoAcrescimo() const { return Field(names_->ReducaoAcrescimo); }
    TXmlField ValorUnitario() const { return Field(names_->ValorUnitario); } ///< in reais
    TXmlField ValorTotal() const { return Field(names_->ValorTotal); }       ///< in reais

  protected:
    const TItemNames& Names() const { return *names_; }

  private:
    const TItemNames* names_;
};

/// An executed procedure.
class TProcedimentoExecutado : public TItemGuia {
  public:
    using TItemGuia::TItemGuia;
};

/// An item of the annex of other expenses.
class TDespesa : public TItemGuia {
  public:
    using TItemGuia::TItemGuia;

    /// The kind of expense: "01" to "08", in 2.x "1" to "6".
    TXmlField CodigoDespesa() const { return Field(Names().CodigoDespesa); }
};

using TProcedimentos = TXmlItems<TProcedimentoExecutado, TItemNames>;
using TDespesas = TXmlItems<TDespesa, TItemNames>;

/// The totals that an SP/SADT guide or a hospitalisation summary declares, in reais.
class TValorTotalGuia : public TXmlBinding {
  public:
    TValorTotalGuia(TXmlNode* node, const TValorTotalNames* names) : TXmlBinding(node), names_(names) {}

    TXmlField ValorProcedimentos() const { return Field(names_->Procedimentos); }
    TXmlField ValorDiarias() const { return Field(names_->Diarias); }
    TXmlField ValorTaxasAlugueis() const { return Field(names_->TaxasAlugueis); }
    TXmlField ValorMateriais() const { return Field(names_->Materiais); }
    TXmlField ValorMedicamentos() const { return Field(names_->Medicamentos); }
    TXmlField ValorOPME() const { return Field(names_->Opme); }
    TXmlField ValorGasesMedicinais() const { return Field(names_->GasesMedicinais); }
    TXmlField ValorTotalGeral() const { return Field(names_->TotalGeral); }

  private:
    const TValorTotalNames* names_;
};

/// The one procedure of a consultation guide; bound to the guide's attendance data.
class TProcedimentoConsulta : public TXmlBinding {
  public:
    /// `valor` is the guide's declared total, absent in 2.x.
    TProcedimentoConsulta(TXmlNode* dadosAtendimento, TXmlField valor)
        : TXmlBinding(dadosAtendimento), valor_(valor) {}

    TXmlField DataAtendimento() const { return Field("dataAtendimento"); } ///< xs:date
    TXmlField CodigoTabela() const { return Field("procedimento/codigoTabela"); }
    TXmlField CodigoProcedimento() const { return Field("procedimento/codigoProcedimento"); }
    TXmlField ValorProcedimento() const { return valor_; } ///< in reais

  private:
    TXmlField valor_;
};

} // namespace conferix
