// What the field rules read of one guide of a monitoring file.
#pragma once

#include "model/monitoramento.h"
#include "platform/iso_date.h"

#include <optional>
#include <string_view>
#include <vector>

namespace conferix {

/// An amount in reais, or a quantity: its element, and its value unless it is absent or no number.
struct TNumberField {
    TXmlField Field;
    std::optional<double> Value;
};

/// A day: its element, and its value unless it is absent or no date.
struct TDateField {
    TXmlField Field;
    std::optional<TDate> Value;
};

/// The fields of one item of a guide.
struct TItemFields {
    TProcedimentoMonitoramento Item;
    TXmlField CodigoTabela;           ///< 064
    TXmlField GrupoProcedimento;      ///< 065
    TXmlField CodigoProcedimento;     ///< 066
    TNumberField QuantidadeInformada; ///< 070
    TNumberField ValorInformado;      ///< 071
    TNumberField QuantidadePaga;      ///< 072
    TNumberField ValorPagoProc;       ///< 073
    TNumberField ValorPagoFornecedor; ///< 074
    TXmlField CNPJFornecedor;         ///< 075
    TNumberField ValorCoParticipacao; ///< 085
    bool HasPackage = false;          ///< has components, which Item lists
};

/// The fields of one guide, as TGuiaReader reads them for some fifty rules. The document has to outlive it,
/// and what it holds speaks of the document as it was read.
struct TGuiaFields {
    /// Whether the guide is a reimbursement to the beneficiary.
    bool IsReembolso() const { return OrigemEventoAtencao.Text() == "4"; }
    /// Sum of one number of all items; what is absent or no number adds nothing.
    double SumOfItens(TNumberField TItemFields::*number) const;

    TGuiaMonitoramento Guia;
    TXmlField TipoRegistro;
    TXmlField TipoEventoAtencao;   ///< kind of guide
    TXmlField OrigemEventoAtencao; ///< origin of the guide
    TXmlField VersaoTISSPrestador; ///< 010

    TXmlField IdentificadorExecutante;
    TXmlField CodigoCNPJ_CPF;      ///< 014
    TXmlField MunicipioExecutante; ///< 015

    TBeneficiarioMonitoramento Beneficiario;
    TXmlField NumeroCartaoNacionalSaude; ///< 016
    TXmlField Sexo;                      ///< 017
    TDateField DataNascimento;           ///< 018
    TXmlField MunicipioResidencia;       ///< 019

    TXmlField NumeroGuiaPrestador;     ///< 023
    TXmlField NumeroGuiaOperadora;     ///< 024
    TXmlField IdentificacaoReembolso;  ///< 025
    TDateField DataRealizacao;         ///< 029
    TDateField DataInicialFaturamento; ///< 030
    TDateField DataFimPeriodo;         ///< 031
    TDateField DataProtocoloCobranca;  ///< 032
    TDateField DataPagamento;          ///< 033
    TDateField DataProcessamentoGuia;  ///< 080
    TXmlField TipoConsulta;            ///< 034
    TXmlField CaraterAtendimento;      ///< 038
    TXmlField TipoInternacao;          ///< 039
    TXmlField RegimeInternacao;        ///< 040
    TXmlField TipoAtendimento;         ///< 045
    TXmlField TipoFaturamento;         ///< 046
    TXmlField MotivoSaida;             ///< 049

    TNumberField ValorTotalInformado;         ///< 050
    TNumberField ValorProcessado;             ///< 051
    TNumberField ValorTotalPagoProcedimentos; ///< 052
    TNumberField ValorTotalDiarias;           ///< 053
    TNumberField ValorTotalTaxas;             ///< 054
    TNumberField ValorTotalMateriais;         ///< 055
    TNumberField ValorTotalOPME;              ///< 056
    TNumberField ValorTotalMedicamentos;      ///< 057
    TNumberField ValorGlosaGuia;              ///< 058
    TNumberField ValorPagoGuia;               ///< 059
    TNumberField ValorPagoFornecedores;       ///< 060
    TNumberField ValorTotalTabelaPropria;     ///< 061
    TNumberField ValorTotalCoParticipacao;    ///< 084

    std::vector<TItemFields> Itens; ///< in document order
};

} // namespace conferix
