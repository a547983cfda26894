// Rules about each procedure and each expense of a guide.
#pragma once

#include "rules/guia_validation.h"

namespace conferix {

/// What the rules say of one kind of item; "{}" stands for the found text, then for the expected amount.
struct TItemTexts {
    std::string_view SemItens;
    std::string_view CodigoValido;
    std::string_view CodigoInvalido; ///< the terminology's verdict follows
    std::string_view QuantidadeValida;
    std::string_view QuantidadeInvalida; ///< found text
    std::string_view FatorValido;
    std::string_view FatorInvalido; ///< found text
    std::string_view ValorUnitarioValido;
    std::string_view ValorUnitarioNegativo; ///< found text
    std::string_view ValorUnitarioDecimais; ///< found text, expected amount
    std::string_view ValorTotalValido;
    std::string_view ValorTotalNegativo; ///< found text
    std::string_view ValorTotalComFator; ///< found text, expected amount
    std::string_view ValorTotalSemFator; ///< found text, expected amount
};
extern const TItemTexts kProcedimentoTexts;
extern const TItemTexts kDespesaTexts;

/// A rule that judges the items of a guide one by one, in document order.
class TItensValidation : public TGuiaTissValidation {
  public:
    TItensValidation(TRunContextPtr run, const TItemTexts& texts)
        : TGuiaTissValidation(std::move(run)), texts_(texts) {}

  protected:
    const TItemTexts& Texts() const { return texts_; }
    /// Judges one item; where a value that the rule needs is missing, says nothing.
    virtual void CheckItem(const TItemGuia& item) = 0;

    template<class Items>
    void CheckItens(const IGuiaTiss& guia, const Items& itens) {
        StartGuia(guia);
        if (itens.empty())
            Success(nullptr, texts_.SemItens);
        for (const TItemGuia& item : itens)
            CheckItem(item);
    }

  private:
    const TItemTexts& texts_;
};

/// A check of items, applied to the executed procedures.
template<class Check>
class TProcedimentosDaGuia : public Check {
  public:
    explicit TProcedimentosDaGuia(TRunContextPtr run) : Check(std::move(run), kProcedimentoTexts) {}
    using Check::Visit;
    void Visit(const IGuiaSpSadt& guia) override { CheckProcedimentos(guia); }
    void Visit(const IGuiaResumoInternacao& guia) override { CheckProcedimentos(guia); }
    void Visit(const IGuiaHonorarios& guia) override { CheckProcedimentos(guia); }

  private:
    template<class Guia>
    void CheckProcedimentos(const Guia& guia) {
        this->CheckItens(guia, guia.ProcedimentosExecutados().Procedimentos());
    }
};

/// A check of items, applied to the annex of other expenses.
template<class Check>
class TDespesasDaGuia : public Check {
  public:
    explicit TDespesasDaGuia(TRunContextPtr run) : Check(std::move(run), kDespesaTexts) {}
    using Check::Visit;
    void Visit(const IGuiaSpSadt& guia) override { CheckDespesas(guia); }
    void Visit(const IGuiaResumoInternacao& guia) override { CheckDespesas(guia); }

  private:
    template<class Guia>
    void CheckDespesas(const Guia& guia) {
        this->CheckItens(guia, guia.OutrasDespesas().Despesas());
    }
};

/// The code of an item exists in its TUSS table (18, 19, 20 or 22) and was in force on the day of execution.
class TItensCodigoValidation : public TItensValidation {
  public:
    using TItensValidation::TItensValidation;

  protected:
    void CheckItem(const TItemGuia& item) override;
    void CheckCodigo(const TXmlField& data, const TXmlField& tabela, const TXmlField& codigo);
};

/// The quantity is above zero.
class TItensQuantidadeValidation : public TItensValidation {
  public:
    using TItensValidation::TItensValidation;

  protected:
    void CheckItem(const TItemGuia& item) override;
};

/// The reduction or addition factor is above zero.
class TItensFatorReducaoAcrescimoValidation : public TItensValidation {
  public:
    using TItensValidation::TItensValidation;

  protected:
    void CheckItem(const TItemGuia& item) override;
};

/// The unit value is not negative and has whole cents.
class TItensValorUnitarioValidation : public TItensValidation {
  public:
    using TItensValidation::TItensValidation;

  protected:
    void CheckItem(const TItemGuia& item) override;
};

/// The total value is not negative and is quantity times unit value, times the factor where there is one.
class TItensValorTotalValidation : public TItensValidation {
  public:
    using TItensValidation::TItensValidation;

  protected:
    void CheckItem(const TItemGuia& item) override;
};

using TProcedimentosQuantidadeValidation = TProcedimentosDaGuia<TItensQuantidadeValidation>;
using TProcedimentosFatorReducaoAcrescimoValidation =
    TProcedimentosDaGuia<TItensFatorReducaoAcrescimoValidation>;
using TProcedimentosValorUnitarioValidation = TProcedimentosDaGuia<TItensValorUnitarioValidation>;
using TDespesasCodigoValidation = TDespesasDaGuia<TItensCodigoValidation>;
using TDespesasQuantidadeValidation = TDespesasDaGuia<TItensQuantidadeValidation>;
using TDespesasFatorReducaoAcrescimoValidation = TDespesasDaGuia<TItensFatorReducaoAcrescimoValidation>;
using TDespesasValorUnitarioValidation = TDespesasDaGuia<TItensValorUnitarioValidation>;
using TDespesasValorTotalValidation = TDespesasDaGuia<TItensValorTotalValidation>;

/// The codes of procedures; also of the one procedure of a consultation guide.
class TProcedimentosCodigoValidation : public TProcedimentosDaGuia<TItensCodigoValidation> {
  public:
    using TProcedimentosDaGuia::TProcedimentosDaGuia;
    using TProcedimentosDaGuia::Visit;
    void Visit(const IGuiaConsulta& guia) override;
};

/// The total values of procedures; of a consultation guide, that the value of its procedure is not negative
/// and has whole cents.
class TProcedimentosValorTotalValidation : public TProcedimentosDaGuia<TItensValorTotalValidation> {
  public:
    using TProcedimentosDaGuia::TProcedimentosDaGuia;
    using TProcedimentosDaGuia::Visit;
    void Visit(const IGuiaConsulta& guia) override;
};

} // namespace conferix
