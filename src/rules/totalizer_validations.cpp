#include "rules/totalizer_validations.h"

#include "model/money.h"
#include "platform/format_settings.h"

#include <fmt/format.h>

#include <algorithm>

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

// These sums are the rules' own: the fees and rentals of 2.x have a second code here.
constexpr TCategoriaDespesa kDiarias = {
    &TValorTotalGuia::ValorDiarias,
    {"05", "5"},
    {"Não há valor total de diárias informado na guia.",
     "O valor total de diárias informado na guia está correto.",
     "O valor total de diárias deve ser igual a soma do valor das despesas com diárias. O valor {} foi "
     "encontrado, porém o esperado é {}."}};
constexpr TCategoriaDespesa kTaxasAlugueis = {
    &TValorTotalGuia::ValorTaxasAlugueis,
    {"07", "4", "6"},
    {"Não há valor total de taxas/aluguéis informado na guia.",
     "O valor total de taxas/aluguéis informado na guia está correto.",
     "O valor total de taxas/aluguéis deve ser igual a soma do valor das despesas com taxas/aluguéis. O "
     "valor {} foi encontrado, porém o esperado é {}."}};
constexpr TCategoriaDespesa kMateriais = {
    &TValorTotalGuia::ValorMateriais,
    {"03", "3"},
    {"Não há valor total de materiais informado na guia.",
     "O valor total de materiais informado na guia está correto.",
     "O valor total de materiais deve ser igual a soma do valor das despesas com materiais. O valor {} foi "
     "encontrado, porém o esperado é {}."}};
constexpr TCategoriaDespesa kMedicamentos = {
    &TValorTotalGuia::ValorMedicamentos,
    {"02", "2"},
    {"Não há valor total de medicamentos informado na guia.",
     "O valor total de medicamentos informado na guia está correto.",
     "O valor total de medicamentos deve ser igual a soma do valor das despesas com medicamentos. O valor {} "
     "foi encontrado, porém o esperado é {}."}};
constexpr TCategoriaDespesa kOpme = {
    &TValorTotalGuia::ValorOPME,
    {"08"},
    {"Não há valor total de OPME informado na guia.", "O valor total de OPME informado na guia está correto.",
     "O valor total de OPME deve ser igual a soma do valor das despesas com OPME. O valor {} foi encontrado, "
     "porém o esperado é {}."}};
constexpr TCategoriaDespesa kGasesMedicinais = {
    &TValorTotalGuia::ValorGasesMedicinais,
    {"01", "1"},
    {"Não há valor total de gases medicinais informado na guia.",
     "O valor total de gases medicinais informado na guia está correto.",
     "O valor total de gases medicinais deve ser igual a soma do valor das despesas com gases medicinais. O "
     "valor {} foi encontrado, porém o esperado é {}."}};

namespace {

constexpr const TCategoriaDespesa* kCategorias[] = {&kDiarias, &kGasesMedicinais, &kMateriais, &kMedicamentos,
                                                    &kOpme,    &kTaxasAlugueis};

} // namespace

double SomaGeral(const IProcedimentosExecutados& procedimentos, const IOutrasDespesas& despesas) {
    double sum = procedimentos.TotalProcedimentos();
    for (const TCategoriaDespesa* categoria : kCategorias)
        sum += categoria->Sum(despesas);
    return sum;
}

double TCategoriaDespesa::Sum(const IOutrasDespesas& despesas) const {
    double sum = 0;
    for (const std::string_view codigo : Codigos)
        if (!codigo.empty())
            sum += despesas.TotalDespesa(codigo);
    return sum;
}

void TCategoriaDespesa::AppendItems(const IOutrasDespesas& despesas,
                                    std::vector<const TXmlNode*>& nodes) const {
    for (const TDespesa& despesa : despesas.Despesas())
        if (const std::string_view codigo = despesa.CodigoDespesa().Text();
            !codigo.empty() && std::ranges::find(Codigos, codigo) != Codigos.end())
            if (const TXmlField total = despesa.ValorTotal(); total.Present())
                nodes.push_back(total.Node());
}

namespace {

bool AreNumbers(const std::vector<const TXmlNode*>& amounts) {
    return std::ranges::all_of(
        amounts, [](const TXmlNode* amount) { return ParseDecimal(ValueOf(amount)).has_value(); });
}

void AppendItems(const IProcedimentosExecutados& procedimentos, std::vector<const TXmlNode*>& nodes) {
    for (const TProcedimentoExecutado& procedimento : procedimentos.Procedimentos())
        if (const TXmlField total = procedimento.ValorTotal(); total.Present())
            nodes.push_back(total.Node());
}

} // namespace

void TTotalizadorValidation::CheckTotal(const IGuiaTiss& guia, const TXmlField& total, double expected,
                                        const TTotalTexts& texts,
                                        const std::function<void(std::vector<const TXmlNode*>&)>& items) {
    const std::optional<double> found = total.Number();
    if (!found) {
        if (!texts.Absent.empty())
            Success(nullptr, texts.Absent);
        return;
    }
    TComputation computation{guia.Node(), {}};
    items(computation.Operands);
    if (!AreNumbers(computation.Operands)) // the schema rule tells; nobody knows the sum
        return;
    if (SameMoney(*found, expected)) {
        Success(total.Node(), texts.Correct);
    } else {
        CorrectableError(*total.Node(),
                         fmt::format(fmt::runtime(texts.Wrong), MoneyText(*found), MoneyText(expected)),
                         MoneyText(expected), std::move(computation));
    }
}

template<class Guia>
void TTotalizadorProcedimentosValidation::CheckGuia(const Guia& guia, const TXmlField& total,
                                                    const TTotalTexts& texts) {
    const IProcedimentosExecutados procedimentos = guia.ProcedimentosExecutados();
    CheckTotal(guia, total, procedimentos.TotalProcedimentos(), texts,
               [&](std::vector<const TXmlNode*>& nodes) { AppendItems(procedimentos, nodes); });
}

void TTotalizadorProcedimentosValidation::Visit(const IGuiaSpSadt& guia) {
    StartGuia(guia);
    CheckGuia(guia, guia.ValorTotal().ValorProcedimentos(), kProcedimentos);
}

void TTotalizadorProcedimentosValidation::Visit(const IGuiaResumoInternacao& guia) {
    StartGuia(guia);
    CheckGuia(guia, guia.ValorTotal().ValorProcedimentos(), kProcedimentos);
}

void TTotalizadorProcedimentosValidation::Visit(const IGuiaHonorarios& guia) {
    StartGuia(guia);
    if (DeclaresCategories())
        CheckGuia(guia, guia.ValorTotalHonorarios(), kHonorarios);
}

template<class Guia>
void TTotalizadorCategoriaBase::CheckGuia(const Guia& guia) {
    StartGuia(guia);
    if (!DeclaresCategories())
        return;
    const TCategoriaDespesa& categoria = Categoria();
    const IOutrasDespesas despesas = guia.OutrasDespesas();
    CheckTotal(guia, (guia.ValorTotal().*categoria.Total)(), categoria.Sum(despesas), categoria.Texts,
               [&](std::vector<const TXmlNode*>& nodes) { categoria.AppendItems(despesas, nodes); });
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
    const IProcedimentosExecutados procedimentos = guia.ProcedimentosExecutados();
    const IOutrasDespesas despesas = guia.OutrasDespesas();
    CheckTotal(guia, guia.ValorTotal().ValorTotalGeral(), SomaGeral(procedimentos, despesas), kGeral,
               [&](std::vector<const TXmlNode*>& nodes) {
                   AppendItems(procedimentos, nodes);
                   for (const TCategoriaDespesa* categoria : kCategorias)
                       categoria->AppendItems(despesas, nodes);
               });
}

void TTotalizadorGeralValidation::Visit(const IGuiaSpSadt& guia) {
    CheckGuia(guia);
}

void TTotalizadorGeralValidation::Visit(const IGuiaResumoInternacao& guia) {
    CheckGuia(guia);
}

} // namespace conferix
