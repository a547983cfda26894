// The guides of a lot as listings tell of them.
#pragma once

#include "listing/guide_head.h"
#include "listing/listing.h"
#include "model/lote_guias.h"

#include <optional>
#include <string_view>
#include <vector>

namespace conferix {

/// What a guide bills; lists of a kind that the guide does not have are empty.
struct TItensDaGuia {
    IProcedimentosExecutados Procedimentos;
    IOutrasDespesas Despesas;
};
TItensDaGuia ItensOf(const IGuiaTiss& guia);

/// The totals that a guide declares by category; none for the kinds of guide that declare only one.
std::optional<TValorTotalGuia> TotaisOf(const IGuiaTiss& guia);
/// Whether a sum may be told that the total of an item enters into. From 3.00.00 on an item without that
/// element adds nothing, as the rules have it; one that says nothing there, or what is no number, leaves the
/// sum unknown. In 2.x, where items need not tell their totals, each has to.
bool CanBeSummed(const TXmlField& total, std::string_view versao);

/// A procedure that a guide bills.
struct TProcedimentoListado {
    const TXmlNode* Node; ///< the item; of a consultation the attendance
    std::string_view Tabela;
    std::string_view Codigo;
    std::string_view Descricao;
    std::string_view Data;
    std::optional<double> Quantidade;
    std::optional<double> ValorUnitario;
    /// Total of the item; of the dental items, which have none, their value, times what they count where
    /// that gives the total that the guide declares.
    std::optional<double> ValorTotal;
};
/// The procedures of a guide of any kind, in the order of the file.
std::vector<TProcedimentoListado> ProcedimentosOf(const IGuiaTiss& guia);

/// A guide with what most listings say of it.
struct TGuiaListada {
    IGuiaTiss Guia;
    TGuiaHead Head = {};
    std::string_view Data = {}; ///< of the attendance: the first item's, else the guide's; AAAA-MM-DD
    std::size_t Itens = 0;      ///< procedures and expenses
    std::optional<double> Informado = {}; ///< the total that it declares
    /// The sum of its items, by the rule that judges that total from 3.00.00 on, of a dental guide of its
    /// procedures; nothing where no such total is known, or where the amount of an item is not.
    std::optional<double> Calculado = {};
    /// Amounts and quantities that are no numbers, or too large to be added up, its totals among them.
    std::size_t Ilegiveis = 0;
    std::size_t ItensSemTotal = 0;
    bool SemTotal = false; ///< does not say the total that a guide of its kind has to say
};
/// The guides of a lot in the order asked for. `versao`: of the file.
std::vector<TGuiaListada> GuiasOf(const ILoteGuias& lote, std::string_view versao, TListingOrder order);

/// Whether a number of a guide comes before another: as numbers where both are, else as texts.
bool IsNumeroBefore(std::string_view a, std::string_view b);
/// What a kind of guide is called.
std::string_view TipoGuiaTitle(TEnumTipoGuia tipo);

} // namespace conferix
