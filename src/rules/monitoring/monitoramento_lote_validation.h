// The rules of a monitoring lot: its limit, its guides, and the groups of their fields.
#pragma once

#include "data/tuss_connection.h"
#include "rules/monitoring/monitoramento_rule.h"

namespace conferix {

/// The standard's limit of 10,000 guides a lot.
class TLoteComMaisDeDezMilGuiasRule : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const IMonitoramento& monitoramento) override;
    bool Required() const override { return true; }
};

/// All field rules of a guide; visited with a file, it goes through the guides.
class TGuiaMonitoramentoRule : public TGuiaMonitoramentoBaseValidation {
  public:
    using TGuiaMonitoramentoBaseValidation::TGuiaMonitoramentoBaseValidation;
    void CreateValidations() override;
    using TValidation::Visit;
    void Visit(const IMonitoramento& monitoramento) override;
    void Visit(const IGuiaMonitoramento& guia) override;
    bool Required() const override { return true; }

  private:
    void VisitGuia(const IGuiaMonitoramento& guia);

    TGuiaFields fields_;
};

/// A group of field rules; has no finding of its own.
class TGrupoCamposRule : public TGuiaMonitoramentoBaseValidation {
  public:
    using TGuiaMonitoramentoBaseValidation::TGuiaMonitoramentoBaseValidation;
    using TValidation::Visit;
    void Visit(const IGuiaMonitoramento& guia) override;
};

class TPrestadorExecutanteGroup : public TGrupoCamposRule {
  public:
    using TGrupoCamposRule::TGrupoCamposRule;
    void CreateValidations() override;
};

class TDadosBeneficiarioGroup : public TGrupoCamposRule {
  public:
    using TGrupoCamposRule::TGrupoCamposRule;
    void CreateValidations() override;
};

class TValoresDaGuiaGroup : public TGrupoCamposRule {
  public:
    using TGrupoCamposRule::TGrupoCamposRule;
    void CreateValidations() override;
};

class TProcedimentosGroup : public TGrupoCamposRule {
  public:
    using TGrupoCamposRule::TGrupoCamposRule;
    void CreateValidations() override;
};

class TDetalhePacoteGroup : public TGrupoCamposRule {
  public:
    using TGrupoCamposRule::TGrupoCamposRule;
    void CreateValidations() override;
};

using TLoteComMaisDeDezMilGuiasValidation =
    TNamedValidation<TLoteComMaisDeDezMilGuiasRule, "tiss.monitoramento.loteguias.lotecommaisdedezmilguias",
                     "Lote Com Mais de 10.000 Guias">;
using TGuiaMonitoramentoValidation =
    TNamedValidation<TGuiaMonitoramentoRule, "tiss.monitoramento.loteguias.guia", "Guia de Monitoramento">;
using TPrestadorExecutanteValidation =
    TNamedValidation<TPrestadorExecutanteGroup, "tiss.monitoramento.loteguias.guia.prestador",
                     "Prestador Executante">;
using TDadosBeneficiarioValidation =
    TNamedValidation<TDadosBeneficiarioGroup, "tiss.monitoramento.loteguias.guia.beneficiario",
                     "Dados do Beneficiário">;
using TValoresDaGuiaValidation =
    TNamedValidation<TValoresDaGuiaGroup, "tiss.monitoramento.loteguias.guia.valores", "Valores da Guia">;
using TProcedimentosValidation =
    TNamedValidation<TProcedimentosGroup, "tiss.monitoramento.loteguias.guia.procedimentos",
                     "Procedimentos e Itens Assistenciais">;
using TDetalhePacoteValidation =
    TNamedValidation<TDetalhePacoteGroup, "tiss.monitoramento.loteguias.guia.procedimentos.detalhepacote",
                     "Pacote">;

/// All rules of the guides of a monitoring file.
class TMonitoramentoLoteValidation : public TValidation {
  public:
    /// `arquivo`: the file that will be visited, whose header has what the rules of a guide compare with;
    /// null, like `tuss`, where nothing is visited.
    TMonitoramentoLoteValidation(std::shared_ptr<const IArquivoTiss> arquivo,
                                 std::shared_ptr<ITussConnection> tuss)
        : arquivo_(std::move(arquivo)), tuss_(std::move(tuss)) {}
    void CreateValidations() override;
    using TValidation::Visit;
    void Visit(const IMonitoramento& monitoramento) override;
    bool Required() const override { return true; }
    std::string_view Name() const override { return "tiss.monitoramento.loteguias"; }
    std::string_view Description() const override { return "Lote de Monitoramento"; }

  private:
    std::shared_ptr<const IArquivoTiss> arquivo_;
    std::shared_ptr<ITussConnection> tuss_;
};

/// What the rules of a file share. `arquivo` and `tuss` may be null.
TMonitoramentoContextPtr NewMonitoramentoContext(const std::shared_ptr<const IArquivoTiss>& arquivo,
                                                 const std::shared_ptr<ITussConnection>& tuss);

} // namespace conferix
