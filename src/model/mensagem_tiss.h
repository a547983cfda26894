// Root of a billing message.
#pragma once

#include "model/arquivo_tiss.h"
#include "model/lote_guias.h"

namespace conferix {

/// A message between provider and health plan (mensagemTISS).
class TMensagemTiss : public TArquivoTissBase {
  public:
    static constexpr TEnumTipoArquivoTiss kTipoArquivo = TEnumTipoArquivoTiss::taMensagemTISS;

    void Accept(IArquivoTissVisitor& visitor) const override;
    /// The lot of guides; one without element when the message carries none.
    TLoteGuiasBase LoteGuias() const;

  protected:
    using TArquivoTissBase::TArquivoTissBase;
    virtual const TLoteGuiasNames& Names() const = 0;
};

/// The message of the versions that name the elements of a lot alike.
template<const TLoteGuiasNames& LoteNames>
class TMensagemTissOf : public TMensagemTiss {
  protected:
    using TMensagemTiss::TMensagemTiss;
    const TLoteGuiasNames& Names() const override { return LoteNames; }
};

} // namespace conferix
