// Roots of the files exchanged with the regulator, and the guides of a monitoring file.
#pragma once

#include "model/arquivo_tiss.h"
#include "model/arquivo_tiss_visitor.h"
#include "xml/bindings/guia_monitoramento_binding.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace conferix {

/// One guide of a monitoring file.
class TGuiaMonitoramento : public TGuiaMonitoramentoBinding {
  public:
    using TGuiaMonitoramentoBinding::TGuiaMonitoramentoBinding;

    void Accept(IArquivoTissVisitor& visitor) const { visitor.Visit(*this); }
    /// What the user finds the guide by: the first of the provider's number, the health plan's number and
    /// the identification of a reimbursement that is present and not all zeros; else the provider's number.
    std::string_view Identificacao() const;
};

/// Header and guides of a monitoring file; bound to the root of the file.
class TLoteMonitoramento : public TXmlBinding {
  public:
    using TXmlBinding::TXmlBinding;

    TXmlField NumeroLote() const { return Field("cabecalho/identificacaoTransacao/numeroLote"); }
    /// Year and month that the lot speaks of, as "202301".
    TXmlField CompetenciaLote() const { return Field("cabecalho/identificacaoTransacao/competenciaLote"); }
    /// Day on which the file was made, xs:date.
    TXmlField DataRegistroTransacao() const {
        return Field("cabecalho/identificacaoTransacao/dataRegistroTransacao");
    }
    /// Whether the file declares that there is nothing to report.
    bool SemMovimento() const { return Find("Mensagem/operadoraParaANS/semMovimentoInclusao") != nullptr; }
    /// The guides in document order.
    TXmlItems<TGuiaMonitoramento> GuiasMonitoramento() const {
        return {Find("Mensagem/operadoraParaANS"), "guiaMonitoramento"};
    }
    std::int64_t QtdGuias() const { return GuiasMonitoramento().Count(); }
};

/// A monitoring file (mensagemEnvioANS, transaction MONITORAMENTO).
class TMonitoramento : public TArquivoTissBase {
  public:
    static constexpr TEnumTipoArquivoTiss kTipoArquivo = TEnumTipoArquivoTiss::taMonitoramento;

    void Accept(IArquivoTissVisitor& visitor) const override;
    TLoteMonitoramento Lote() const { return TLoteMonitoramento(Node()); }

  protected:
    using TArquivoTissBase::TArquivoTissBase;
};

/// A monitoring-quality file (mensagemEnvioANS, transaction QUALIDADE). No version of the standard that the
/// program supports serves it, so that the factory never makes one.
class TMonitoramentoQualidade : public TArquivoTissBase {
  public:
    static constexpr TEnumTipoArquivoTiss kTipoArquivo = TEnumTipoArquivoTiss::taMonitoramentoQualidade;

    /// Binds to a document of this kind.
    static std::shared_ptr<TMonitoramentoQualidade> Create(std::shared_ptr<TXmlDocument> document);

    std::string_view GetNamespace() const override { return "ans"; }
    /// The version that the header names; empty when absent.
    std::string_view Versao() const override { return Field("cabecalho/versaoPadrao").Text(); }
    void Accept(IArquivoTissVisitor& visitor) const override;

  private:
    using TArquivoTissBase::TArquivoTissBase;
};

} // namespace conferix
