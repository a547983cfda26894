// Rules of the items of a guide and of the packages in them: fields 064 to 079 and 085.
#pragma once

#include "rules/monitoring/monitoramento_rule.h"

#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// A table and the code in it.
using TTableAndCode = std::pair<std::string_view, std::string_view>;

/// Finds the keys that repeat an earlier one; keeps its memory between the lists.
class TRepetitions {
  public:
    void Clear() { keys_.clear(); }
    void Add(const TTableAndCode& key) { keys_.push_back(key); }
    /// For each key, in the order of adding, whether an earlier one is equal; valid until the next call.
    const std::vector<bool>& Find();

  private:
    std::vector<TTableAndCode> keys_;
    std::vector<std::size_t> order_;
    std::vector<bool> repeated_;
};

/// 064: the table of an item is one of the domain of tables.
class TCodigoTabelaRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
};

/// 065: groups of items exist, have no own table, and come once a guide.
class TGrupoProcedimentoRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;

  private:
    TRepetitions repetitions_;
};

/// 066: codes exist, are sent as themselves, and come once a guide and table.
class TCodigoProcedimentoRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;

  private:
    TRepetitions repetitions_;
};

/// A number of each item with a lower bound.
struct TItemNumberRow {
    TNumberField TItemFields::*Number;
    bool MayBeZero;
    std::string_view TooSmall; ///< {} is the value
};

/// 070 to 074 and 085.
class TItemNumberRule : public TCampoMonitoramentoValidation {
  public:
    TItemNumberRule(TMonitoramentoContextPtr context, const TItemNumberRow& row)
        : TCampoMonitoramentoValidation(std::move(context)), row_(row) {}

  protected:
    void Check(const TGuiaFields& guia) override;

  private:
    const TItemNumberRow& row_;
};

inline constexpr TItemNumberRow kQuantidadeInformada = {
    &TItemFields::QuantidadeInformada, false,
    "O valor da quantidade informada de procedimentos deve ser maior que zero. Porém o valor {} foi "
    "encontrado."};
inline constexpr TItemNumberRow kItemValorInformado = {
    &TItemFields::ValorInformado, true,
    "O valor informado do procedimento deve ser maior ou igual a zero. Porém o valor {} foi encontrado."};
inline constexpr TItemNumberRow kQuantidadePaga = {
    &TItemFields::QuantidadePaga, true,
    "A quantidade paga de procedimentos deve ser maior ou igual a zero. Porém o valor {} foi encontrado."};
inline constexpr TItemNumberRow kItemValorPago = {
    &TItemFields::ValorPagoProc, true,
    "O valor pago do procedimento deve ser maior ou igual a zero. Porém o valor {} foi encontrado."};
inline constexpr TItemNumberRow kItemValorFornecedor = {
    &TItemFields::ValorPagoFornecedor, true,
    "O valor pago diretamente ao fornecedor deve ser maior ou igual a zero. Porém o valor {} foi "
    "encontrado."};
inline constexpr TItemNumberRow kItemCoParticipacao = {
    &TItemFields::ValorCoParticipacao, true,
    "O valor da coparticipação deve ser maior ou igual a zero. Porém o valor {} foi encontrado."};

/// 075: check digits of the supplier's CNPJ.
class TCnpjFornecedorRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
};

/// Base of the fields of a package: each of them tells of packages where none may be.
class TPacoteRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
    virtual void CheckPacote(const TGuiaFields& guia, const TItemFields& item) = 0;
};

/// 077: the table of a component.
class TPacoteTabelaRule : public TPacoteRule {
  public:
    using TPacoteRule::TPacoteRule;

  protected:
    void CheckPacote(const TGuiaFields& guia, const TItemFields& item) override;
};

/// 078: codes of components exist, are sent as themselves, and come once a package and table.
class TPacoteProcedimentoRule : public TPacoteRule {
  public:
    using TPacoteRule::TPacoteRule;

  protected:
    void CheckPacote(const TGuiaFields& guia, const TItemFields& item) override;

  private:
    TRepetitions repetitions_;
};

/// 079: the quantity of a component.
class TPacoteQuantidadeRule : public TPacoteRule {
  public:
    using TPacoteRule::TPacoteRule;

  protected:
    void CheckPacote(const TGuiaFields& guia, const TItemFields& item) override;
};

using TCampo064Validation = TNamedValidation<TCodigoTabelaRule, "tiss.monitoramento.loteguias.guia.campo064",
                                             "Código da Tabela de Referência">;
using TCampo065Validation =
    TNamedValidation<TGrupoProcedimentoRule, "tiss.monitoramento.loteguias.guia.campo065", "Código do Grupo">;
using TCampo066Validation =
    TNamedValidation<TCodigoProcedimentoRule, "tiss.monitoramento.loteguias.guia.campo066",
                     "Código do Procedimento">;
using TCampo070Validation =
    TNamedValidation<TRuleOfRow<TItemNumberRule, kQuantidadeInformada>,
                     "tiss.monitoramento.loteguias.guia.campo070", "Quantidade Informada">;
using TCampo071Validation = TNamedValidation<TRuleOfRow<TItemNumberRule, kItemValorInformado>,
                                             "tiss.monitoramento.loteguias.guia.campo071", "Valor Informado">;
using TCampo072Validation = TNamedValidation<TRuleOfRow<TItemNumberRule, kQuantidadePaga>,
                                             "tiss.monitoramento.loteguias.guia.campo072", "Quantidade Paga">;
using TCampo073Validation = TNamedValidation<TRuleOfRow<TItemNumberRule, kItemValorPago>,
                                             "tiss.monitoramento.loteguias.guia.campo073", "Valor Pago">;
using TCampo074Validation =
    TNamedValidation<TRuleOfRow<TItemNumberRule, kItemValorFornecedor>,
                     "tiss.monitoramento.loteguias.guia.campo074", "Valor Pago Diretamente ao Fornecedor">;
using TCampo075Validation =
    TNamedValidation<TCnpjFornecedorRule, "tiss.monitoramento.loteguias.guia.campo075", "CNPJ do Fornecedor">;
using TCampo085Validation =
    TNamedValidation<TRuleOfRow<TItemNumberRule, kItemCoParticipacao>,
                     "tiss.monitoramento.loteguias.guia.campo085", "Valor Coparticipação">;
using TCampo077Validation =
    TNamedValidation<TPacoteTabelaRule, "tiss.monitoramento.loteguias.guia.campo077", "Código da Tabela">;
using TCampo078Validation =
    TNamedValidation<TPacoteProcedimentoRule, "tiss.monitoramento.loteguias.guia.campo078",
                     "Código do Procedimento">;
using TCampo079Validation =
    TNamedValidation<TPacoteQuantidadeRule, "tiss.monitoramento.loteguias.guia.campo079", "Quantidade Paga">;

} // namespace conferix
