// The guide of a monitoring file, with its groups and items. All versions that carry these elements name
// them alike; comments give the field numbers of the regulator's layout.
#pragma once

#include "xml/bindings/xml_binding.h"
#include "xml/bindings/xml_items.h"

namespace conferix {

/// A component of a package.
class TDetalhePacote : public TXmlBinding {
  public:
    using TXmlBinding::TXmlBinding;

    TXmlField CodigoTabela() const { return Field("codigoTabela"); }             ///< 077
    TXmlField CodigoProcedimento() const { return Field("codigoProcedimento"); } ///< 078
    TXmlField Quantidade() const { return Field("quantidade"); }                 ///< 079
    TXmlField UnidadeMedida() const { return Field("unidadeMedida"); }
};

/// A procedure or care item of a monitoring guide; values in reais.
class TProcedimentoMonitoramento : public TXmlBinding {
  public:
    using TXmlBinding::TXmlBinding;

    TXmlField CodigoTabela() const { return Field("identProcedimento/codigoTabela"); } ///< 064
    /// 065; stands in place of the code where items are sent grouped.
    TXmlField GrupoProcedimento() const { return Field("identProcedimento/Procedimento/grupoProcedimento"); }
    TXmlField CodigoProcedimento() const {
        return Field("identProcedimento/Procedimento/codigoProcedimento"); ///< 066
    }
    TXmlField CodDente() const { return Field("denteRegiao/codDente"); }
    TXmlField CodRegiao() const { return Field("denteRegiao/codRegiao"); }
    TXmlField DenteFace() const { return Field("denteFace"); }
    TXmlField QuantidadeInformada() const { return Field("quantidadeInformada"); } ///< 070
    TXmlField ValorInformado() const { return Field("valorInformado"); }           ///< 071
    TXmlField QuantidadePaga() const { return Field("quantidadePaga"); }           ///< 072
    TXmlField UnidadeMedida() const { return Field("unidadeMedida"); }
    TXmlField ValorPagoProc() const { return Field("valorPagoProc"); }             ///< 073
    TXmlField ValorPagoFornecedor() const { return Field("valorPagoFornecedor"); } ///< 074
    TXmlField CNPJFornecedor() const { return Field("CNPJFornecedor"); }           ///< 075
    TXmlField ValorCoParticipacao() const { return Field("valorCoParticipacao"); } ///< 085
    TXmlItems<TDetalhePacote> DetalhePacote() const { return {Node(), "detalhePacote"}; }
};

/// The provider that attended.
class TContratadoExecutanteMonitoramento : public TXmlBinding {
  public:
    using TXmlBinding::TXmlBinding;

    TXmlField CNES() const { return Field("CNES"); }
    TXmlField IdentificadorExecutante() const {
        return Field("identificadorExecutante");
    }                                                                              ///< "1" CNPJ, "2" CPF
    TXmlField CodigoCNPJ_CPF() const { return Field("codigoCNPJ_CPF"); }           ///< 014
    TXmlField MunicipioExecutante() const { return Field("municipioExecutante"); } ///< 015
};

/// The patient.
class TBeneficiarioMonitoramento : public TXmlBinding {
  public:
    using TXmlBinding::TXmlBinding;

    TXmlField NumeroCartaoNacionalSaude() const {
        return Field("identBeneficiario/numeroCartaoNacionalSaude"); ///< 016
    }
    /// Renamed from numeroCPFBeneficiario by one of the later versions.
    TXmlField CpfBeneficiario() const {
        const TXmlField current = Field("identBeneficiario/cpfBeneficiario");
        return current.Present() ? current : Field("identBeneficiario/numeroCPFBeneficiario");
    }
    TXmlField Sexo() const { return Field("identBeneficiario/sexo"); }                               ///< 017
    TXmlField DataNascimento() const { return Field("identBeneficiario/dataNascimento"); }           ///< 018
    TXmlField MunicipioResidencia() const { return Field("identBeneficiario/municipioResidencia"); } ///< 019
    TXmlField NumeroRegistroPlano() const { return Field("numeroRegistroPlano"); }
};

/// The totals of a monitoring guide, in reais.
class TValoresGuiaMonitoramento : public TXmlBinding {
  public:
    using TXmlBinding::TXmlBinding;

    TXmlField ValorTotalInformado() const { return Field("valorTotalInformado"); }                 ///< 050
    TXmlField ValorProcessado() const { return Field("valorProcessado"); }                         ///< 051
    TXmlField ValorTotalPagoProcedimentos() const { return Field("valorTotalPagoProcedimentos"); } ///< 052
    TXmlField ValorTotalDiarias() const { return Field("valorTotalDiarias"); }                     ///< 053
    TXmlField ValorTotalTaxas() const { return Field("valorTotalTaxas"); }                         ///< 054
    TXmlField ValorTotalMateriais() const { return Field("valorTotalMateriais"); }                 ///< 055
    TXmlField ValorTotalOPME() const { return Field("valorTotalOPME"); }                           ///< 056
    TXmlField ValorTotalMedicamentos() const { return Field("valorTotalMedicamentos"); }           ///< 057
    TXmlField ValorGlosaGuia() const { return Field("valorGlosaGuia"); }                           ///< 058
    TXmlField ValorPagoGuia() const { return Field("valorPagoGuia"); }                             ///< 059
    TXmlField ValorPagoFornecedores() const { return Field("valorPagoFornecedores"); }             ///< 060
    TXmlField ValorTotalTabelaPropria() const { return Field("valorTotalTabelaPropria"); }         ///< 061
    TXmlField ValorTotalCoParticipacao() const { return Field("valorTotalCoParticipacao"); }       ///< 084
};

/// One way in which the provider of a guide is paid.
class TFormaRemuneracao : public TXmlBinding {
  public:
    using TXmlBinding::TXmlBinding;

    TXmlField FormaRemuneracao() const { return Field("formaRemuneracao"); }
    TXmlField ValorRemuneracao() const { return Field("valorRemuneracao"); } ///< in reais
};

/// A guide as a health plan reports it to the regulator.
class TGuiaMonitoramentoBinding : public TXmlBinding {
  public:
    using TXmlBinding::TXmlBinding;

    /// "1" inclusion, "2" change, "3" exclusion.
    TXmlField TipoRegistro() const { return Field("tipoRegistro"); }
    TXmlField VersaoTISSPrestador() const { return Field("versaoTISSPrestador"); } ///< 010
    TXmlField FormaEnvio() const { return Field("formaEnvio"); }
    TContratadoExecutanteMonitoramento DadosContratadoExecutante() const {
        return TContratadoExecutanteMonitoramento(Find("dadosContratadoExecutante"));
    }
    TXmlField RegistroANSOperadoraIntermediaria() const { return Field("registroANSOperadoraIntermediaria"); }
    TXmlField TipoAtendimentoOperadoraIntermediaria() const {
        return Field("tipoAtendimentoOperadoraIntermediaria");
    }
    TBeneficiarioMonitoramento DadosBeneficiario() const {
        return TBeneficiarioMonitoramento(Find("dadosBeneficiario"));
    }
    /// The kind of guide: "1" consultation, "2" SP/SADT, "3" hospitalisation, "4" dental, "5" fees.
    TXmlField TipoEventoAtencao() const { return Field("tipoEventoAtencao"); }
    /// The origin of the guide; "4" is a reimbursement.
    TXmlField OrigemEventoAtencao() const { return Field("origemEventoAtencao"); }
    TXmlField NumeroGuiaPrestador() const { return Field("numeroGuia_prestador"); }      ///< 023
    TXmlField NumeroGuiaOperadora() const { return Field("numeroGuia_operadora"); }      ///< 024
    TXmlField IdentificacaoReembolso() const { return Field("identificacaoReembolso"); } ///< 025
    TXmlField IdentificacaoValorPreestabelecido() const { return Field("identificacaoValorPreestabelecido"); }
    TXmlField FormaRemuneracao() const { return Field("formaRemuneracao"); } ///< 1.02.00 only
    TXmlItems<TFormaRemuneracao> FormasRemuneracao() const { return {Node(), "formasRemuneracao"}; }
    TXmlField GuiaSolicitacaoInternacao() const { return Field("guiaSolicitacaoInternacao"); }
    TXmlField DataSolicitacao() const { return Field("dataSolicitacao"); }
    TXmlField NumeroGuiaSPSADTPrincipal() const { return Field("numeroGuiaSPSADTPrincipal"); }
    TXmlField DataAutorizacao() const { return Field("dataAutorizacao"); }
    TXmlField DataRealizacao() const { return Field("dataRealizacao"); }                 ///< 029
    TXmlField DataInicialFaturamento() const { return Field("dataInicialFaturamento"); } ///< 030
    TXmlField DataFimPeriodo() const { return Field("dataFimPeriodo"); }                 ///< 031
    TXmlField DataProtocoloCobranca() const { return Field("dataProtocoloCobranca"); }   ///< 032
    TXmlField DataPagamento() const { return Field("dataPagamento"); }                   ///< 033
    TXmlField DataProcessamentoGuia() const { return Field("dataProcessamentoGuia"); }   ///< 080
    TXmlField TipoConsulta() const { return Field("tipoConsulta"); }                     ///< 034
    TXmlField CboExecutante() const { return Field("cboExecutante"); }
    TXmlField IndicacaoRecemNato() const { return Field("indicacaoRecemNato"); }
    TXmlField IndicacaoAcidente() const { return Field("indicacaoAcidente"); }
    TXmlField CaraterAtendimento() const { return Field("caraterAtendimento"); } ///< 038
    TXmlField TipoInternacao() const { return Field("tipoInternacao"); }         ///< 039
    TXmlField RegimeInternacao() const { return Field("regimeInternacao"); }     ///< 040
    TXmlItems<TXmlField> DiagnosticosCID10() const { return {Find("diagnosticosCID10"), "diagnosticoCID"}; }
    TXmlField TipoAtendimento() const { return Field("tipoAtendimento"); } ///< 045
    TXmlField RegimeAtendimento() const { return Field("regimeAtendimento"); }
    TXmlField SaudeOcupacional() const { return Field("saudeOcupacional"); }
    TXmlField TipoFaturamento() const { return Field("tipoFaturamento"); } ///< 046
    TXmlField DiariasAcompanhante() const { return Field("diariasAcompanhante"); }
    TXmlField DiariasUTI() const { return Field("diariasUTI"); }
    TXmlField MotivoSaida() const { return Field("motivoSaida"); } ///< 049
    TValoresGuiaMonitoramento ValoresGuia() const { return TValoresGuiaMonitoramento(Find("valoresGuia")); }
    TXmlItems<TXmlField> DeclaracoesNascido() const { return {Node(), "declaracaoNascido"}; }
    TXmlItems<TXmlField> DeclaracoesObito() const { return {Node(), "declaracaoObito"}; }
    TXmlItems<TProcedimentoMonitoramento> Procedimentos() const { return {Node(), "procedimentos"}; }
};

} // namespace conferix
