#include "listing/lot_guides.h"

#include "data/plain_text.h"
#include "listing/cells.h"
#include "model/money.h"
#include "rules/totalizer_validations.h"

#include <algorithm>
#include <array>
#include <utility>

namespace conferix {

namespace {

constexpr std::array<std::string_view, kTiposGuia> kTitles = {"Consulta", "SP/SADT", "Resumo de internação",
                                                              "Honorários", "Odontologia"};

/// The description stands beside the code, whatever the version calls either.
std::string_view DescricaoBeside(const TXmlField& codigo) {
    if (!codigo.Present())
        return {};
    const TXmlNode& beside = *codigo.Node()->Parent();
    const TXmlNode* descricao = beside.Child("descricaoProcedimento");
    return ValueOf(descricao != nullptr ? descricao : beside.Child("descricao"));
}

/// What the items of a dental guide add up to.
struct TSomaOdonto {
    std::optional<double> Declared; ///< by the guide
    TDecimalSum AsTold;
    TDecimalSum Counted; ///< each as often as its quantity says
    bool Known = true;   ///< each value can be read

    explicit TSomaOdonto(const IGuiaTiss& guia) : Declared(Addable(guia.CampoValorTotalGuia().Number())) {
        for (const TProcedimentoExecutado& item : ItensOf(guia).Procedimentos.Procedimentos()) {
            const double value = Addable(item.ValorUnitario().Number()).value_or(0);
            Known = Known && !IsIlegivel(item.ValorUnitario());
            AsTold.Add(value);
            Counted.Add(value * Addable(item.QuantidadeExecutada().Number()).value_or(1));
        }
    }
    /// The standard does not say whether an item tells the value of one or of all that it counts: what gives
    /// the declared total holds.
    bool Counts() const {
        return Declared && !SameMoney(*Declared, AsTold.Value()) && SameMoney(*Declared, Counted.Value());
    }
    std::optional<double> Value() const {
        if (!Known)
            return std::nullopt;
        return Counts() ? Counted.Value() : AsTold.Value();
    }
};

/// `known`: whether the totals of its items are.
std::optional<double> CalculadoOf(const IGuiaTiss& guia, std::string_view versao, bool known) {
    if (versao < kTotaisDesdeVersao && guia.TipoGuia() != TEnumTipoGuia::tgHonorarios)
        return std::nullopt; // what more enters into the total stands apart from the items
    if (guia.TipoGuia() == TEnumTipoGuia::tgOdonto)
        return TSomaOdonto(guia).Value();
    if (guia.TipoGuia() == TEnumTipoGuia::tgConsulta || !known)
        return std::nullopt;
    const TItensDaGuia itens = ItensOf(guia);
    return guia.TipoGuia() == TEnumTipoGuia::tgHonorarios ? itens.Procedimentos.TotalProcedimentos()
                                                          : SomaGeral(itens.Procedimentos, itens.Despesas);
}

/// Counts the items of a guide, and the numbers in it that are none, and finds the first day among them.
/// Answers whether the sum of the items' totals can be told.
bool ReadItens(TGuiaListada& listed, std::string_view versao) {
    std::string_view first;
    bool known = true;
    // Whether a field says nothing; what cannot be read is counted.
    const auto isUntold = [&](const TXmlField& field) {
        if (Addable(field.Number()))
            return false;
        const bool illegible = IsIlegivel(field);
        listed.Ilegiveis += illegible ? 1 : 0;
        return !illegible;
    };
    const auto isTotalUntold = [&](const TItemGuia& item) {
        ++listed.Itens;
        if (const std::string_view data = item.DataExecucao().Text();
            !data.empty() && (first.empty() || data < first))
            first = data;
        isUntold(item.QuantidadeExecutada());
        const TXmlField total = item.ValorTotal();
        known = known && CanBeSummed(total, versao);
        return isUntold(total);
    };
    const TItensDaGuia itens = ItensOf(listed.Guia);
    const bool dental = listed.Guia.TipoGuia() == TEnumTipoGuia::tgOdonto;
    for (const TProcedimentoExecutado& procedimento : itens.Procedimentos.Procedimentos()) {
        const bool total = isTotalUntold(procedimento);
        const bool unit = isUntold(procedimento.ValorUnitario());
        listed.ItensSemTotal += (dental ? unit : total) ? 1 : 0;
    }
    for (const TDespesa& despesa : itens.Despesas.Despesas())
        listed.ItensSemTotal += isTotalUntold(despesa) ? 1 : 0;
    if (listed.Guia.TipoGuia() == TEnumTipoGuia::tgConsulta)
        listed.Itens = 1;
    listed.Data = !listed.Head.DataAtendimento.empty() ? listed.Head.DataAtendimento
                  : !first.empty()                     ? first
                                                       : listed.Head.Data;
    return known;
}

/// How many of the totals that a guide declares are no numbers.
std::size_t CountIlegiveisDeclared(const IGuiaTiss& guia) {
    std::size_t count = IsIlegivel(guia.CampoValorTotalGuia()) ? 1 : 0;
    if (const std::optional<TValorTotalGuia> totais = TotaisOf(guia)) {
        count += IsIlegivel(totais->ValorProcedimentos()) ? 1 : 0;
        for (const TCategoriaDespesa* categoria :
             {&kDiarias, &kTaxasAlugueis, &kMateriais, &kMedicamentos, &kOpme, &kGasesMedicinais})
            count += IsIlegivel(((*totais).*(categoria->Total))()) ? 1 : 0;
    }
    return count;
}

/// Consultations tell their value from the same version on from which totals are judged.
bool HasTotal(TEnumTipoGuia tipo, std::string_view versao) {
    return tipo != TEnumTipoGuia::tgConsulta || versao >= kTotaisDesdeVersao;
}

void Sort(std::vector<TGuiaListada>& guias, TListingOrder order) {
    switch (order) {
    case TListingOrder::Arquivo:
        break;
    case TListingOrder::Guia:
        std::ranges::stable_sort(guias, [](const TGuiaListada& a, const TGuiaListada& b) {
            return IsNumeroBefore(a.Guia.NumeroMostrado(), b.Guia.NumeroMostrado());
        });
        break;
    case TListingOrder::Beneficiario: // where names are missing, as from 4.00.00 on, the cards stand for them
        std::ranges::stable_sort(guias, {}, [](const TGuiaListada& guia) {
            return std::pair(PlainText(guia.Head.Beneficiario), guia.Head.Carteira);
        });
        break;
    case TListingOrder::Data:
        std::ranges::stable_sort(guias, {}, &TGuiaListada::Data);
        break;
    case TListingOrder::Valor:
        std::ranges::stable_sort(guias, std::ranges::greater(),
                                 [](const TGuiaListada& guia) { return guia.Informado.value_or(0); });
        break;
    }
}

} // namespace

TItensDaGuia ItensOf(const IGuiaTiss& guia) {
    static constexpr TItemListNames kNone = {};
    const auto withDespesas = [](const auto& of) {
        return TItensDaGuia{of.ProcedimentosExecutados(), of.OutrasDespesas()};
    };
    switch (guia.TipoGuia()) {
    case TEnumTipoGuia::tgSPSADT:
        return withDespesas(IGuiaSpSadt(guia));
    case TEnumTipoGuia::tgResumoInternacao:
        return withDespesas(IGuiaResumoInternacao(guia));
    case TEnumTipoGuia::tgOdonto:
        return withDespesas(IGuiaOdonto(guia));
    case TEnumTipoGuia::tgHonorarios:
        return {IGuiaHonorarios(guia).ProcedimentosExecutados(), {nullptr, kNone}};
    case TEnumTipoGuia::tgConsulta:
        break;
    }
    return {{nullptr, kNone}, {nullptr, kNone}};
}

std::optional<TValorTotalGuia> TotaisOf(const IGuiaTiss& guia) {
    switch (guia.TipoGuia()) {
    case TEnumTipoGuia::tgSPSADT:
        return IGuiaSpSadt(guia).ValorTotal();
    case TEnumTipoGuia::tgResumoInternacao:
        return IGuiaResumoInternacao(guia).ValorTotal();
    default:
        return std::nullopt;
    }
}

bool CanBeSummed(const TXmlField& total, std::string_view versao) {
    return Addable(total.Number()) || (versao >= kTotaisDesdeVersao && !total.Present());
}

std::vector<TProcedimentoListado> ProcedimentosOf(const IGuiaTiss& guia) {
    std::vector<TProcedimentoListado> listed;
    if (guia.TipoGuia() == TEnumTipoGuia::tgConsulta) {
        const TProcedimentoConsulta consulta = IGuiaConsulta(guia).Procedimento();
        const std::optional<double> valor = consulta.ValorProcedimento().Number();
        listed.push_back({consulta.Node(), consulta.CodigoTabela().Text(),
                          consulta.CodigoProcedimento().Text(),
                          DescricaoBeside(consulta.CodigoProcedimento()), consulta.DataAtendimento().Text(),
                          1, Addable(valor), Addable(valor)});
        return listed;
    }
    const bool dental = guia.TipoGuia() == TEnumTipoGuia::tgOdonto;
    const bool counts = dental && TSomaOdonto(guia).Counts();
    for (const TProcedimentoExecutado& item : ItensOf(guia).Procedimentos.Procedimentos()) {
        const std::optional<double> unit = item.ValorUnitario().Number();
        const std::optional<double> quantity = Addable(item.QuantidadeExecutada().Number());
        std::optional<double> total = item.ValorTotal().Number();
        if (dental)
            total = unit && counts ? std::optional(*unit * quantity.value_or(1)) : unit;
        listed.push_back({item.Node(), item.CodigoTabela().Text(), item.CodigoProcedimento().Text(),
                          DescricaoBeside(item.CodigoProcedimento()), item.DataExecucao().Text(), quantity,
                          Addable(unit), Addable(total)});
    }
    return listed;
}

std::vector<TGuiaListada> GuiasOf(const ILoteGuias& lote, std::string_view versao, TListingOrder order) {
    std::vector<TGuiaListada> guias;
    for (const IGuiaTiss& guia : lote.GuiasTiss().EmOrdemDoDocumento()) {
        TGuiaListada& listed = guias.emplace_back(TGuiaListada{guia, ReadGuiaHead(guia)});
        const bool known = ReadItens(listed, versao);
        const TXmlField total = guia.CampoValorTotalGuia();
        listed.Informado = Addable(total.Number());
        listed.SemTotal = total.Text().empty() && HasTotal(guia.TipoGuia(), versao);
        listed.Calculado = Addable(CalculadoOf(guia, versao, known));
        listed.Ilegiveis += CountIlegiveisDeclared(guia);
    }
    Sort(guias, order);
    return guias;
}

bool IsNumeroBefore(std::string_view a, std::string_view b) {
    const auto digits = [](std::string_view text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    };
    if (!digits(a) || !digits(b))
        return a < b;
    a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
    b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

std::string_view TipoGuiaTitle(TEnumTipoGuia tipo) {
    return kTitles.at(static_cast<std::size_t>(tipo));
}

} // namespace conferix
