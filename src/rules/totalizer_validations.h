// Rules that compare the totals that a guide declares with the sums of its items.
#pragma once

#include "rules/guia_validation.h"

#include <array>
#include <functional>
#include <vector>

namespace conferix {

/// Guides declare totals by category, and of fees, from this version on; older totals are not judged.
inline constexpr std::string_view kTotaisDesdeVersao = "3.00.00";

/// What a rule says of a declared total.
struct TTotalTexts {
    std::string_view Absent; ///< empty: nothing is said
    std::string_view Correct;
    std::string_view Wrong; ///< found amount, expected amount
};

/// Base of the totalizers.
class TTotalizadorValidation : public TGuiaTissValidation {
  public:
    using TGuiaTissValidation::TGuiaTissValidation;

  protected:
    /// Says nothing of a sum with an amount that is no number. `items`: adds the elements that were summed up
    /// to the list that it is given.
    void CheckTotal(const IGuiaTiss& guia, const TXmlField& total, double expected, const TTotalTexts& texts,
                    const std::function<void(std::vector<const TXmlNode*>&)>& items);
    bool DeclaresCategories() const { return IsVersionFrom(kTotaisDesdeVersao); }
};

/// The total of procedures; of a fees guide, the total of fees.
class TTotalizadorProcedimentosValidation : public TTotalizadorValidation {
  public:
    using TTotalizadorValidation::TTotalizadorValidation;
    using TTotalizadorValidation::Visit;
    void Visit(const IGuiaSpSadt& guia) override;
    void Visit(const IGuiaResumoInternacao& guia) override;
    void Visit(const IGuiaHonorarios& guia) override;

  private:
    template<class Guia>
    void CheckGuia(const Guia& guia, const TXmlField& total, const TTotalTexts& texts);
};

/// A category of expenses: where a guide declares its total, which items make it up, and what is said of it.
struct TCategoriaDespesa {
    TXmlField (TValorTotalGuia::*Total)() const;
    /// The kinds of expense that make it up, as the items write them. The code of two digits is that of 3.x
    /// and 4.x, those of one digit are 2.x's; all count in files of any version.
    std::array<std::string_view, 3> Codigos;
    TTotalTexts Texts;

    double Sum(const IOutrasDespesas& despesas) const;
    /// Adds the elements that are summed up.
    void AppendItems(const IOutrasDespesas& despesas, std::vector<const TXmlNode*>& nodes) const;
};
extern const TCategoriaDespesa kDiarias;
extern const TCategoriaDespesa kTaxasAlugueis;
extern const TCategoriaDespesa kMateriais;
extern const TCategoriaDespesa kMedicamentos;
extern const TCategoriaDespesa kOpme;
extern const TCategoriaDespesa kGasesMedicinais;

/// What the general total of a guide has to be: the procedures and all categories of expenses, each rounded
/// to cents.
double SomaGeral(const IProcedimentosExecutados& procedimentos, const IOutrasDespesas& despesas);

/// The total of one category of expenses.
class TTotalizadorCategoriaBase : public TTotalizadorValidation {
  public:
    using TTotalizadorValidation::TTotalizadorValidation;
    using TTotalizadorValidation::Visit;
    void Visit(const IGuiaSpSadt& guia) override;
    void Visit(const IGuiaResumoInternacao& guia) override;

  protected:
    virtual const TCategoriaDespesa& Categoria() const = 0;

  private:
    template<class Guia>
    void CheckGuia(const Guia& guia);
};

template<const TCategoriaDespesa& categoria>
class TTotalizadorCategoriaValidation : public TTotalizadorCategoriaBase {
  public:
    using TTotalizadorCategoriaBase::TTotalizadorCategoriaBase;

  protected:
    const TCategoriaDespesa& Categoria() const override { return categoria; }
};

using TTotalizadorDiariasValidation = TTotalizadorCategoriaValidation<kDiarias>;
using TTotalizadorTaxasAlugueisValidation = TTotalizadorCategoriaValidation<kTaxasAlugueis>;
using TTotalizadorMateriaisValidation = TTotalizadorCategoriaValidation<kMateriais>;
using TTotalizadorMedicamentosValidation = TTotalizadorCategoriaValidation<kMedicamentos>;
using TTotalizadorOPMEValidation = TTotalizadorCategoriaValidation<kOpme>;
using TTotalizadorGasesValidation = TTotalizadorCategoriaValidation<kGasesMedicinais>;

/// The general total: procedures and all categories of expenses.
class TTotalizadorGeralValidation : public TTotalizadorValidation {
  public:
    using TTotalizadorValidation::TTotalizadorValidation;
    using TTotalizadorValidation::Visit;
    void Visit(const IGuiaSpSadt& guia) override;
    void Visit(const IGuiaResumoInternacao& guia) override;

  private:
    template<class Guia>
    void CheckGuia(const Guia& guia);
};

} // namespace conferix
