// What the versions of the standard call the elements of a lot of guides.
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace conferix {

// Each member is a local name or a path of local names ("procedimento/codigo"); an empty one says that the
// version, or the kind of guide, has no such element.

/// Values of a procedure or expense item, below the item.
struct TItemNames {
    std::string_view SequencialItem = {};
    std::string_view DataExecucao = {};
    std::string_view CodigoTabela = {};
    std::string_view CodigoProcedimento = {};
    std::string_view CodigoDespesa = {}; ///< the kind of an expense
    std::string_view QuantidadeExecutada = {};
    std::string_view ReducaoAcrescimo = {};
    std::string_view ValorUnitario = {};
    std::string_view ValorTotal = {};
};

/// A list of items below a guide.
struct TItemListNames {
    std::string_view Container = {}; ///< empty when the items stand directly in the guide
    std::string_view Item = {};
    TItemNames Values = {};
};

/// The declared totals of a guide by category, below the guide.
struct TValorTotalNames {
    std::string_view Grupo = {};
    std::string_view Procedimentos = {};
    std::string_view Diarias = {};
    std::string_view TaxasAlugueis = {};
    std::string_view Materiais = {};
    std::string_view Medicamentos = {};
    std::string_view Opme = {};
    std::string_view GasesMedicinais = {};
    std::string_view TotalGeral = {};
};

/// One element that is a guide.
struct TGuiaNames {
    std::string_view Elemento = {};
    std::string_view NumeroGuia = {};
    std::string_view ValorTotalGuia = {}; ///< the total that the guide declares
    TItemListNames Procedimentos = {};
    TItemListNames Despesas = {};
    TValorTotalNames ValorTotal = {};
};

/// A lot of guides.
struct TLoteGuiasNames {
    std::string_view NumeroLote = {};
    std::string_view GuiasTiss = {};               ///< the container of the guides, below the lot
    std::span<const std::string_view> Grupos = {}; ///< elements between container and guides; none: directly
    /// Elements by kind of guide: consultation, SP/SADT, hospitalisation summary, fees, dental.
    std::array<std::span<const TGuiaNames>, 5> Guias = {};
};

extern const TLoteGuiasNames kLoteGuiasV2;    ///< 2.x, with the guides of a resubmission
extern const TLoteGuiasNames kLoteGuiasV3_00; ///< 3.00.x
extern const TLoteGuiasNames kLoteGuiasV3_01; ///< 3.01.00, whose neighbours name the fees guide differently
extern const TLoteGuiasNames kLoteGuiasV3_02; ///< 3.02.00 and later, 4.x

} // namespace conferix
