#include "rules/totalizer_validations.h"

#include "model/money.h"

#include <fmt/format.h>

namespace conferix {

namespace {

constexpr TTotalTexts kProcedimentos = {
    "Não há valor total de procedimentos informado na guia.",
    "O valor total de procedimentos informado na guia está correto.",
    "O valor total de procedimentos deve ser igual a soma do valor dos procedimentos da guia. O valor {} foi "
    "encontrado, porém o esperado é {}."};
constexpr TTotalTexts kHonorarios = {
    "Não há valor total de honorários informado na guia.",
    "O valor total de honorários informado na guia está correto.",
    "O valor total de honorários deve ser igual a soma do valor dos procedimentos da guia. O valor {} foi "
    "encontrado, porém o esperado é {}."};
constexpr TTotalTexts kGeral = {
    {},
    "O valor total geral informado na guia está correto.",
    "O valor total geral deve ser igual a soma do valor dos procedimentos/despesas. O valor {} foi "
    "encontrado, porém o esperado é {}."};

} // namespace

// A category is billed under the two-digit code of 3.x and 4.x and the one-digit code of 2.x, in files of any
// version. These sums are the rules' own: the fees and rentals of 2.x have a second code here.
constexpr TCategoriaDespesa kDiarias = {
    &TValorTotalGuia::ValorDiarias,
    [](const IOutrasDespesas& despesas) { return despesas.TotalDespesa("05") + despesas.TotalDespesa("5"); },
    {"Não há valor total de diárias informado na guia.",
     "O valor total de diárias informado na guia está correto.",
     "O valor total de diárias deve ser igual a soma do valor das despesas com diárias. O valor {} foi "
     "encontrado, porém o esperado é {}."}};
constexpr TCategoriaDespesa kTaxasAlugueis = {
    &TValorTotalGuia::ValorTaxasAlugueis,
    [](const IOutrasDespesas& despesas) {
        return despesas.TotalDespesa("07") + despesas.TotalDespesa("4") + despesas.TotalDespesa("6");
    },
    {"Não há valor total de taxas/aluguéis informado na guia.",
     "O valor total de taxas/aluguéis informado na guia está correto.",
     "O valor total de taxas/aluguéis deve ser igual a soma do valor das despesas com taxas/aluguéis. O "
     "valor {} foi encontrado, porém o esperado é {}."}};
constexpr TCategoriaDespesa kMateriais = {
    &TValorTotalGuia::ValorMateriais,
    [](const IOutrasDespesas& despesas) { return despesas.TotalDespesa("03") + despesas.TotalDespesa("3"); },
    {"Não há valor total de materiais informado na guia.",
     "O valor total de materiais informado na guia está correto.",
     "O valor total de materiais deve ser igual a soma do valor das despesas com materiais. O valor {} foi "
     "encontrado, porém o esperado é {}."}};
constexpr TCategoriaDespesa kMedicamentos = {
    &TValorTotalGuia::ValorMedicamentos,
    [](const IOutrasDespesas& despesas) { return despesas.TotalDespesa("02") + despesas.TotalDespesa("2"); },
    {"Não há valor total de medicamentos informado na guia.",
     "O valor total de medicamentos informado na guia está correto.",
     "O valor total de medicamentos deve ser igual a soma do valor das despesas com medicamentos. O valor {} "
     "foi encontrado, porém o esperado é {}."}};
constexpr TCategoriaDespesa kOpme = {
    &TValorTotalGuia::ValorOPME,
    [](const IOutrasDespesas& despesas) { return despesas.TotalDespesa("08"); },
    {"Não há valor total de OPME informado na guia.", "O valor total de OPME informado na guia está correto.",
     "O valor total de OPME deve ser igual a soma do valor das despesas com OPME. O valor {} foi encontrado, "
     "porém o esperado é {}."}};
constexpr TCategoriaDespesa kGasesMedicinais = {
    &TValorTotalGuia::ValorGasesMedicinais,
    [](const IOutrasDespesas& despesas) { return despesas.TotalDespesa("01") + despesas.TotalDespesa("1"); },
    {"Não há valor total de gases medicinais informado na guia.",
     "O valor total de gases medicinais informado na guia está correto.",
     "O valor total de gases medicinais deve ser igual a soma do valor das despesas com gases medicinais. O "
     "valor {} foi encontrado, porém o esperado é {}."}};

void TTotalizadorValidation::CheckTotal(const TXmlField& total, double expected, const TTotalTexts& texts) {
    const std::optional<double> found = total.Number();
    if (!found) {
        if (!texts.Absent.empty())
            AddSuccess(texts.Absent);
    } else if (SameMoney(*found, expected)) {
        AddSuccess(texts.Correct, total.Node());
    } else {
        AddCorrectableError(fmt::format(fmt::runtime(texts.Wrong), MoneyText(*found), MoneyText(expected)),
                            *total.Node(), expected);
    }
}

void TTotalizadorProcedimentosValidation::Visit(const IGuiaSpSadt& guia) {
    StartGuia(guia);
    CheckTotal(guia.ValorTotal().ValorProcedimentos(), guia.ProcedimentosExecutados().TotalProcedimentos(),
               kProcedimentos);
}

void TTotalizadorProcedimentosValidation::Visit(const IGuiaResumoInternacao& guia) {
    StartGuia(guia);
    CheckTotal(guia.ValorTotal().ValorProcedimentos(), guia.ProcedimentosExecutados().TotalProcedimentos(),
               kProcedimentos);
}

void TTotalizadorProcedimentosValidation::Visit(const IGuiaHonorarios& guia) {
    StartGuia(guia);
    if (DeclaresCategories())
        CheckTotal(guia.ValorTotalHonorarios(), guia.ProcedimentosExecutados().TotalProcedimentos(),
                   kHonorarios);
}

template<class Guia>
void TTotalizadorCategoriaBase::CheckGuia(const Guia& guia) {
    StartGuia(guia);
    if (DeclaresCategories())
        CheckTotal((guia.ValorTotal().*Categoria().Total)(), Categoria().Sum(guia.OutrasDespesas()),
                   Categoria().Texts);
}

void TTotalizadorCategoriaBase::Visit(const IGuiaSpSadt& guia) {
    CheckGuia(guia);
}

void TTotalizadorCategoriaBase::Visit(const IGuiaResumoInternacao& guia) {
    CheckGuia(guia);
}

template<class Guia>
void TTotalizadorGeralValidation::CheckGuia(const Guia& guia) {
    StartGuia(guia);
    if (!DeclaresCategories())
        return;
    const IOutrasDespesas despesas = guia.OutrasDespesas();
    double expected = guia.ProcedimentosExecutados().TotalProcedimentos();
    for (const TCategoriaDespesa* categoria :
         {&kDiarias, &kGasesMedicinais, &kMateriais, &kMedicamentos, &kOpme, &kTaxasAlugueis})
        expected += categoria->Sum(despesas);
    CheckTotal(guia.ValorTotal().ValorTotalGeral(), expected, kGeral);
}

void TTotalizadorGeralValidation::Visit(const IGuiaSpSadt& guia) {
    CheckGuia(guia);
}

void TTotalizadorGeralValidation::Visit(const IGuiaResumoInternacao& guia) {
    CheckGuia(guia);
}

} // namespace conferix
