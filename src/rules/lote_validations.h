// Rules about a lot of guides, and the tree of the rules about its guides.
#pragma once

#include "model/mensagem_tiss.h"
#include "rules/guia_validation.h"

#include <memory>
#include <string>

namespace conferix {

/// A rule about the lot of a message that sends one; stays silent about other messages.
class TLoteValidation : public TValidation {
  public:
    bool Required() const override { return true; }
    using TValidation::Visit;
    void Visit(const IMensagemTiss& mensagem) override;
};

/// The lot holds a guide.
class TLoteComGuiaValidation : public TLoteValidation {
  public:
    using TLoteValidation::Visit;
    void Visit(const ILoteGuias& lote) override;
};
using TLoteSemGuiasValidation =
    TNamedValidation<TLoteComGuiaValidation, "tiss.mensagem.loteguias.lotesemguias", "Lote Sem Guias">;

/// The guides are of one kind. Judged by parity: an odd number of kinds passes.
class TLoteDeUmTipoValidation : public TLoteValidation {
  public:
    using TLoteValidation::Visit;
    void Visit(const ILoteGuias& lote) override;
};
using TLoteComGuiasDeTiposDiferentesValidation =
    TNamedValidation<TLoteDeUmTipoValidation, "tiss.mensagem.loteguias.lotecomguiasdetiposdiferentes",
                     "Lote com Guias de Tipos Diferentes">;

/// The lot holds at most 100 guides.
class TLoteAteCemGuiasValidation : public TLoteValidation {
  public:
    using TLoteValidation::Visit;
    void Visit(const ILoteGuias& lote) override;
};
using TLoteComMaisDeCemGuiasValidation =
    TNamedValidation<TLoteAteCemGuiasValidation, "tiss.mensagem.loteguias.lotecommaisdecemguias",
                     "Lote Com Mais de 100 Guias">;

/// Hands the guides of one kind to the rules about them: rule by rule, to each the guides in lot order.
template<class Guia>
class TLoteGuiaTissValidation : public TGuiaTissValidation {
  public:
    using TGuiaTissValidation::TGuiaTissValidation;
    using TGuiaTissValidation::Visit;
    void Visit(const ILoteGuias& lote) override;
};

class TLoteGuiaConsultaValidation
    : public TNamedValidation<TLoteGuiaTissValidation<IGuiaConsulta>, "tiss.mensagem.loteguias.consulta",
                              "Guia de Consulta"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

class TLoteGuiaSpSadtValidation
    : public TNamedValidation<TLoteGuiaTissValidation<IGuiaSpSadt>, "tiss.mensagem.loteguias.spsadt",
                              "Guia de SP/SADT"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

class TLoteGuiaResumoInternacaoValidation
    : public TNamedValidation<TLoteGuiaTissValidation<IGuiaResumoInternacao>,
                              "tiss.mensagem.loteguias.internacao", "Guia de Resumo de Internação"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

class TLoteGuiaHonorariosValidation
    : public TNamedValidation<TLoteGuiaTissValidation<IGuiaHonorarios>, "tiss.mensagem.loteguias.honorarios",
                              "Guia de Honorários"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

/// No rule judges dental guides.
using TLoteGuiaOdontoValidation = TNamedValidation<TLoteGuiaTissValidation<IGuiaOdonto>,
                                                   "tiss.mensagem.loteguias.odonto", "Guia de Odontologia">;

/// All rules about the lot of a message.
class TLoteGuiasValidation : public TLoteValidation {
  public:
    /// `versaoTiss`: version of the file; `tuss`: terminology, may be null where no code is judged.
    TLoteGuiasValidation(std::string versaoTiss, std::shared_ptr<const ITussConnection> tuss)
        : versaoTiss_(std::move(versaoTiss)), tuss_(std::move(tuss)) {}
    std::string_view Name() const override { return "tiss.mensagem.loteguias"; }
    std::string_view Description() const override { return "Lote de Guias"; }
    void CreateValidations() override;
    using TLoteValidation::Visit;
    void Visit(const ILoteGuias& lote) override;

  private:
    std::string versaoTiss_;
    std::shared_ptr<const ITussConnection> tuss_;
};

} // namespace conferix
