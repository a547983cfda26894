// The lot of billing guides of a message.
#pragma once

#include "model/arquivo_tiss_visitor.h"
#include "model/guias.h"
#include "xml/bindings/lote_guias_names.h"
#include "xml/bindings/xml_binding.h"
#include "xml/name_likeness.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// The container of the guides of a lot. Each list is one walk, in document order.
class TGuiasTiss : public TXmlBinding {
  public:
    TGuiasTiss(TXmlNode* node, const TLoteGuiasNames& names) : TXmlBinding(node), names_(&names) {}

    std::vector<IGuiaConsulta> GuiasConsulta() const { return Lista<IGuiaConsulta>(); }
    std::vector<IGuiaSpSadt> GuiasSpSadt() const { return Lista<IGuiaSpSadt>(); }
    std::vector<IGuiaResumoInternacao> GuiasResumoInternacao() const {
        return Lista<IGuiaResumoInternacao>();
    }
    std::vector<IGuiaHonorarios> GuiasHonorarios() const { return Lista<IGuiaHonorarios>(); }
    std::vector<IGuiaOdonto> GuiasOdonto() const { return Lista<IGuiaOdonto>(); }

    /// The list of one kind of guide, chosen by its class.
    template<class Guia>
    std::vector<Guia> Lista() const {
        std::vector<Guia> lista;
        for (const TGuiaTissBase& guia : EmOrdemDoDocumento())
            if (guia.TipoGuia() == Guia::kTipoGuia)
                lista.emplace_back(guia);
        return lista;
    }

    /// The guides of all kinds as the document lists them.
    std::vector<TGuiaTissBase> EmOrdemDoDocumento() const;

  private:
    const TLoteGuiasNames* names_;
};

/// What a lot has beside the guides that are read of it, in document order.
struct TGuiasNaoLidas {
    std::vector<const TXmlNode*>
        Estranhas; ///< elements in the place of guides that the version does not have
    std::vector<const TXmlNode*> ForaDoLugar; ///< guides in a further container, or in a further lot

    /// A sentence for each of the two that there is. `lido`: what is not done with them, without
    /// its last vowel ("listad").
    std::vector<std::string> Textos(std::string_view lido) const;
};

/// A lot of billing guides. Bound to no element it is a lot without number and guides.
class TLoteGuiasBase : public TXmlBinding {
  public:
    TLoteGuiasBase(TXmlNode* node, const TLoteGuiasNames& names) : TXmlBinding(node), names_(&names) {}

    void Accept(IArquivoTissVisitor& visitor) const { visitor.Visit(*this); }
    TXmlField NumeroLote() const { return Field(names_->NumeroLote); }
    TGuiasTiss GuiasTiss() const {
        TXmlNode* container = HasNode() ? ChildMeant(*Node(), names_->GuiasTiss) : nullptr;
        return {container != nullptr ? container : Node(), *names_}; // guides may stand in the lot by mistake
    }

    /// Kind of the first guide of `Guias`. Raises ELoteGuiasNotFound when there is none.
    TEnumTipoGuia TipoGuia() const;
    /// All guides, by kind in the order of TEnumTipoGuia and within a kind in document order.
    std::vector<IGuiaTiss> Guias() const;
    std::int64_t QtdGuias() const;
    TGuiasNaoLidas GuiasNaoLidas() const;
    /// The guide whose element holds a place given as 1-based line and column in characters. One walk over
    /// the guides; who asks for many places uses TGuiaLocator.
    std::optional<IGuiaTiss> GuiaTissByPosition(std::int64_t line, std::int64_t linePos) const;
    /// Sum of the guides' declared totals in reais, not rounded.
    double ValorTotal() const;

  private:
    const TLoteGuiasNames* names_;
};

/// Finds the guide of a place or node by binary search. Speaks of the lot as it was when the locator was
/// made, and of the text that was parsed.
class TGuiaLocator {
  public:
    explicit TGuiaLocator(const ILoteGuias& lote);

    /// The guide that holds a 0-based byte offset of the document's text, or null.
    const IGuiaTiss* ByOffset(std::uint32_t offset) const;
    /// The guide that a node is or belongs to, or null.
    const IGuiaTiss* ByNode(const TXmlNode& node) const;

  private:
    std::vector<IGuiaTiss> guias_; ///< in document order
};

} // namespace conferix
