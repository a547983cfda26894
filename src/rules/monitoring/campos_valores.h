// Rules of the totals of a guide: fields 050 to 061 and 084.
#pragma once

#include "rules/monitoring/monitoramento_rule.h"

#include <functional>
#include <vector>

namespace conferix {

/// A total that must not be negative.
struct TTotalRow {
    TNumberField TGuiaFields::*Total;
    std::string_view Negative; ///< {} is the value
};

/// 051 to 058 and 061.
class TTotalNaoNegativoRule : public TCampoMonitoramentoValidation {
  public:
    TTotalNaoNegativoRule(TMonitoramentoContextPtr context, const TTotalRow& row)
        : TCampoMonitoramentoValidation(std::move(context)), row_(row) {}

  protected:
    void Check(const TGuiaFields& guia) override;

  private:
    const TTotalRow& row_;
};

inline constexpr TTotalRow kValorProcessado = {
    &TGuiaFields::ValorProcessado,
    "O valor total processado pela operadora deve ser igual ou maior que zero. Porém o valor {} foi "
    "encontrado."};
inline constexpr TTotalRow kValorProcedimentos = {
    &TGuiaFields::ValorTotalPagoProcedimentos,
    "O valor total pago de procedimentos deve ser igual ou maior que zero. Porém o valor {} foi encontrado."};
inline constexpr TTotalRow kValorDiarias = {
    &TGuiaFields::ValorTotalDiarias,
    "O valor total pago de diárias deve ser igual ou maior que zero. Porém o valor {} foi encontrado."};
inline constexpr TTotalRow kValorTaxas = {
    &TGuiaFields::ValorTotalTaxas,
    "O valor total pago de taxas e aluguéis deve ser igual ou maior que zero. Porém o valor {} foi "
    "encontrado."};
inline constexpr TTotalRow kValorMateriais = {
    &TGuiaFields::ValorTotalMateriais,
    "O valor total pago de materiais deve ser igual ou maior que zero. Porém o valor {} foi encontrado."};
inline constexpr TTotalRow kValorOPME = {
    &TGuiaFields::ValorTotalOPME,
    "O valor total pago de OPME deve ser igual ou maior que zero. Porém o valor {} foi encontrado."};
inline constexpr TTotalRow kValorMedicamentos = {
    &TGuiaFields::ValorTotalMedicamentos,
    "O valor total pago de medicamentos deve ser igual ou maior que zero. Porém o valor {} foi encontrado."};
inline constexpr TTotalRow kValorGlosa = {
    &TGuiaFields::ValorGlosaGuia,
    "O valor total de glosa deve ser igual ou maior que zero. Porém o valor {} foi encontrado."};
inline constexpr TTotalRow kValorTabelaPropria = {&TGuiaFields::ValorTotalTabelaPropria,
                                                  "O valor total pago em tabela própria da operadora deve "
                                                  "ser igual ou maior que zero. Porém o valor {} foi "
                                                  "encontrado."};

/// A total that equals the sum of one value of the items.
struct TSomaRow {
    TNumberField TGuiaFields::*Total;
    TNumberField TItemFields::*Parcela;
    std::string_view Different; ///< {} are the value found and the one expected
};

/// 050, 060 and 084, and part of 059.
class TSomaItensRule : public TCampoMonitoramentoValidation {
  public:
    TSomaItensRule(TMonitoramentoContextPtr context, const TSomaRow& row)
        : TCampoMonitoramentoValidation(std::move(context)), row_(row) {}

  protected:
    void Check(const TGuiaFields& guia) override;
    /// Adds an error, with its correction, to a total that differs from what is expected.
    /// `summands` adds the elements that were summed up to the list that it is given.
    using TSummands = std::function<void(std::vector<const TXmlNode*>&)>;
    void CheckTotal(const TGuiaFields& guia, const TNumberField& total, double expected,
                    std::string_view different, const TSummands& summands);

  private:
    const TSomaRow& row_;
};

inline constexpr TSomaRow kSomaInformado = {
    &TGuiaFields::ValorTotalInformado, &TItemFields::ValorInformado,
    "O valor total informado da guia deve ser igual à soma dos valores informados de procedimentos ou itens "
    "assistenciais. O valor {} foi encontrado, porém o esperado é {}."};
inline constexpr TSomaRow kSomaPago = {
    &TGuiaFields::ValorPagoGuia, &TItemFields::ValorPagoProc,
    "O valor total pago ao prestador deve ser igual à soma do campo Valor pago ao prestador executante ou "
    "reembolsado ao beneficiário (campo 073) dos procedimentos ou itens assistenciais do mesmo lançamento. O "
    "valor {} foi encontrado, porém o esperado é {}."};
inline constexpr TSomaRow kSomaFornecedores = {
    &TGuiaFields::ValorPagoFornecedores, &TItemFields::ValorPagoFornecedor,
    "O valor total pago diretamente aos fornecedores deve ser igual à soma do campo Valor pago diretamente "
    "ao "
    "fornecedor (campo 074) dos procedimentos ou itens assistenciais do mesmo lançamento. O valor {} foi "
    "encontrado, porém o esperado é {}."};
inline constexpr TSomaRow kSomaCoParticipacao = {
    &TGuiaFields::ValorTotalCoParticipacao, &TItemFields::ValorCoParticipacao,
    "O valor total de coparticipação deve ser igual à soma do valor de coparticipação (campo 085) dos "
    "procedimentos ou itens assistenciais do mesmo lançamento. O valor {} foi encontrado, porém o esperado é "
    "{}."};

/// 059: what was paid equals both the sum of the totals by kind and the sum of the items.
class TValorPagoGuiaRule : public TSomaItensRule {
  public:
    explicit TValorPagoGuiaRule(TMonitoramentoContextPtr context)
        : TSomaItensRule(std::move(context), kSomaPago) {}

  protected:
    void Check(const TGuiaFields& guia) override;
};

using TCampo050Validation = TNamedValidation<TRuleOfRow<TSomaItensRule, kSomaInformado>,
                                             "tiss.monitoramento.loteguias.guia.campo050", "Valor Informado">;
using TCampo051Validation =
    TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorProcessado>,
                     "tiss.monitoramento.loteguias.guia.campo051", "Valor Processado">;
using TCampo052Validation =
    TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorProcedimentos>,
                     "tiss.monitoramento.loteguias.guia.campo052", "Valor Total Pago de Procedimentos">;
using TCampo053Validation =
    TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorDiarias>,
                     "tiss.monitoramento.loteguias.guia.campo053", "Valor Total Pago de Diárias">;
using TCampo054Validation =
    TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorTaxas>,
                     "tiss.monitoramento.loteguias.guia.campo054", "Valor Total Pago de Taxas e Aluguéis">;
using TCampo055Validation =
    TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorMateriais>,
                     "tiss.monitoramento.loteguias.guia.campo055", "Valor Total Pago de Materiais">;
using TCampo056Validation =
    TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorOPME>,
                     "tiss.monitoramento.loteguias.guia.campo056", "Valor Total Pago de OPME">;
using TCampo057Validation =
    TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorMedicamentos>,
                     "tiss.monitoramento.loteguias.guia.campo057", "Valor Total Pago de Medicamentos">;
using TCampo058Validation =
    TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorGlosa>,
                     "tiss.monitoramento.loteguias.guia.campo058", "Valor Total de Glosa">;
using TCampo059Validation =
    TNamedValidation<TValorPagoGuiaRule, "tiss.monitoramento.loteguias.guia.campo059", "Valor Total Pago">;
using TCampo060Validation = TNamedValidation<TRuleOfRow<TSomaItensRule, kSomaFornecedores>,
                                             "tiss.monitoramento.loteguias.guia.campo060",
                                             "Valor Total Pago Diretamente aos Fornecedores">;
using TCampo061Validation = TNamedValidation<TRuleOfRow<TTotalNaoNegativoRule, kValorTabelaPropria>,
                                             "tiss.monitoramento.loteguias.guia.campo061",
                                             "Valor Total Pago em Tabela Própria da Operadora">;
using TCampo084Validation =
    TNamedValidation<TRuleOfRow<TSomaItensRule, kSomaCoParticipacao>,
                     "tiss.monitoramento.loteguias.guia.campo084", "Valor Total de Coparticipação">;

} // namespace conferix
