// Rules of the fields 010 to 025: who attended, who was attended, and the guide's numbers.
#pragma once

#include "rules/monitoring/monitoramento_rule.h"

namespace conferix {

/// 010: the version that the provider used is due unless the guide is a reimbursement.
class TVersaoPrestadorRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
};

/// 014: check digits of the provider's CNPJ or CPF.
class TDocumentoExecutanteRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
};

/// A municipality code has to exist.
struct TMunicipioRow {
    TXmlField TGuiaFields::*Municipio;
    std::string_view Invalid;
};

/// 015, and part of 019.
class TMunicipioRule : public TCampoMonitoramentoValidation {
  public:
    TMunicipioRule(TMonitoramentoContextPtr context, const TMunicipioRow& row)
        : TCampoMonitoramentoValidation(std::move(context)), row_(row) {}

  protected:
    void Check(const TGuiaFields& guia) override;

  private:
    const TMunicipioRow& row_;
};

inline constexpr TMunicipioRow kMunicipioExecutante = {
    &TGuiaFields::MunicipioExecutante,
    "O código IBGE do município de localização do prestador executante está inválido."};
inline constexpr TMunicipioRow kMunicipioResidencia = {
    &TGuiaFields::MunicipioResidencia,
    "O código IBGE do município de residência do beneficiário está inválido."};

/// 016: check digits of the health card number.
class TCartaoNacionalSaudeRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
};

/// 017: the sex is due without a card number.
class TSexoRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
};

/// 018: the day of birth is due without a card number, and not after the day of attendance.
class TDataNascimentoRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
};

/// 019: the municipality of residence is due without a card number, and has to exist.
class TMunicipioResidenciaRule : public TMunicipioRule {
  public:
    explicit TMunicipioResidenciaRule(TMonitoramentoContextPtr context)
        : TMunicipioRule(std::move(context), kMunicipioResidencia) {}

  protected:
    void Check(const TGuiaFields& guia) override;
};

/// A number that is filled with zeros where the guide is a reimbursement.
struct TNumeroGuiaRow {
    TXmlField TGuiaFields::*Numero;
    std::string_view NotZeros;
};

/// 023 and 024.
class TNumeroGuiaRule : public TCampoMonitoramentoValidation {
  public:
    TNumeroGuiaRule(TMonitoramentoContextPtr context, const TNumeroGuiaRow& row)
        : TCampoMonitoramentoValidation(std::move(context)), row_(row) {}

  protected:
    void Check(const TGuiaFields& guia) override;

  private:
    const TNumeroGuiaRow& row_;
};

inline constexpr TNumeroGuiaRow kNumeroGuiaPrestador = {
    &TGuiaFields::NumeroGuiaPrestador,
    "Quando a origem da guia for igual a 4 (reembolso), o campo número da guia no prestador deve ser "
    "preenchido com \"00000000000000000000\" (20 zeros)."};
inline constexpr TNumeroGuiaRow kNumeroGuiaOperadora = {
    &TGuiaFields::NumeroGuiaOperadora,
    "Quando a origem da guia for igual a 4 (reembolso), o campo número da guia na operadora deve ser "
    "preenchido com \"00000000000000000000\" (20 zeros)."};

/// 025: identifies a reimbursement, and is filled with zeros where there is none.
class TIdentificacaoReembolsoRule : public TCampoMonitoramentoValidation {
  public:
    using TCampoMonitoramentoValidation::TCampoMonitoramentoValidation;

  protected:
    void Check(const TGuiaFields& guia) override;
};

using TCampo010Validation =
    TNamedValidation<TVersaoPrestadorRule, "tiss.monitoramento.loteguias.guia.campo010",
                     "Versão TISS Utilizada pelo Prestador">;
using TCampo014Validation =
    TNamedValidation<TDocumentoExecutanteRule, "tiss.monitoramento.loteguias.guia.campo014", "CNPJ/CPF">;
using TCampo015Validation =
    TNamedValidation<TRuleOfRow<TMunicipioRule, kMunicipioExecutante>,
                     "tiss.monitoramento.loteguias.guia.campo015", "Código IBGE do Município de Localização">;
using TCampo016Validation =
    TNamedValidation<TCartaoNacionalSaudeRule, "tiss.monitoramento.loteguias.guia.campo016",
                     "Número do Cartão Nacional de Saúde">;
using TCampo017Validation = TNamedValidation<TSexoRule, "tiss.monitoramento.loteguias.guia.campo017", "Sexo">;
using TCampo018Validation =
    TNamedValidation<TDataNascimentoRule, "tiss.monitoramento.loteguias.guia.campo018", "Data de Nascimento">;
using TCampo019Validation =
    TNamedValidation<TMunicipioResidenciaRule, "tiss.monitoramento.loteguias.guia.campo019",
                     "Município de Residência">;
using TCampo023Validation =
    TNamedValidation<TRuleOfRow<TNumeroGuiaRule, kNumeroGuiaPrestador>,
                     "tiss.monitoramento.loteguias.guia.campo023", "Número da Guia no Prestador">;
using TCampo024Validation =
    TNamedValidation<TRuleOfRow<TNumeroGuiaRule, kNumeroGuiaOperadora>,
                     "tiss.monitoramento.loteguias.guia.campo024", "Número da Guia na Operadora">;
using TCampo025Validation =
    TNamedValidation<TIdentificacaoReembolsoRule, "tiss.monitoramento.loteguias.guia.campo025",
                     "Identificação do Reembolso">;

} // namespace conferix
