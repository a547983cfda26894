#include "rules/monitoring/campos_identificacao.h"

#include "rules/documents/documents_validation.h"

#include <fmt/format.h>

namespace conferix {

namespace {

constexpr std::string_view kZeros = "00000000000000000000";
/// The version from which a beneficiary without a card number has to be described.
constexpr std::string_view kDescribedFrom = "3.00.00";

bool IsDueWithoutCard(const TMonitoramentoContext& context, const TGuiaFields& guia) {
    return context.VersaoTiss >= kDescribedFrom && !guia.NumeroCartaoNacionalSaude.Present();
}

/// The place of what is absent of the beneficiary.
TXmlField BeneficiarioPlace(const TGuiaFields& guia) {
    return TXmlField(guia.Beneficiario.HasNode() ? guia.Beneficiario.Node() : guia.Guia.Node());
}

} // namespace

void TVersaoPrestadorRule::Check(const TGuiaFields& guia) {
    if (guia.OrigemEventoAtencao.Present() && !guia.IsReembolso() && !guia.VersaoTISSPrestador.Present())
        AddError(
            guia, TXmlField(guia.Guia.Node()),
            "A versão TISS utilizada pelo prestador não foi informada, conforme tabela de domínio nº 69. ");
}

void TDocumentoExecutanteRule::Check(const TGuiaFields& guia) {
    if (!guia.CodigoCNPJ_CPF.Present())
        return;
    const std::string_view kind = guia.IdentificadorExecutante.Text();
    const std::string_view number = guia.CodigoCNPJ_CPF.Text();
    std::string_view invalid;
    if (kind == "1" && !TDocumentsValidation::IsValidCnpj(number))
        invalid = "CNPJ";
    else if (kind == "2" && !TDocumentsValidation::IsValidCpf(number))
        invalid = "CPF";
    if (!invalid.empty())
        AddError(guia, guia.CodigoCNPJ_CPF,
                 fmt::format("O {} informado do prestador executante está inválido.", invalid));
}

void TMunicipioRule::Check(const TGuiaFields& guia) {
    const TXmlField& municipio = guia.*row_.Municipio;
    if (municipio.Present() && CanConsultCities() && !Context()->Manager().HasCity(municipio.Text()))
        AddError(guia, municipio, std::string(row_.Invalid));
}

void TCartaoNacionalSaudeRule::Check(const TGuiaFields& guia) {
    const TXmlField& card = guia.NumeroCartaoNacionalSaude;
    if (card.Present() && !TDocumentsValidation::IsValidCNS(card.Text()))
        AddError(guia, card,
                 fmt::format("O número do cartão nacional de saúde \"{}\" está inválido.", card.Shown()));
}

void TSexoRule::Check(const TGuiaFields& guia) {
    if (IsDueWithoutCard(*Context(), guia) && !guia.Sexo.Present())
        AddError(guia, BeneficiarioPlace(guia),
                 "Caso o cartão nacional de saúde não seja informado, é necessário informar o sexo do "
                 "beneficiário.");
}

void TDataNascimentoRule::Check(const TGuiaFields& guia) {
    const TDateField& birth = guia.DataNascimento;
    if (IsDueWithoutCard(*Context(), guia) && !birth.Field.Present())
        AddError(guia, BeneficiarioPlace(guia),
                 "Caso o cartão nacional de saúde não seja informado, é necessário informar a data de "
                 "nascimento do beneficiário.");
    if (birth.Value && guia.DataRealizacao.Value && *birth.Value > *guia.DataRealizacao.Value)
        AddError(guia, birth.Field,
                 "A data de nascimento do beneficiário deve ser menor ou igual à data de realização do "
                 "procedimento.");
}

void TMunicipioResidenciaRule::Check(const TGuiaFields& guia) {
    if (IsDueWithoutCard(*Context(), guia) && !guia.MunicipioResidencia.Present())
        AddError(guia, BeneficiarioPlace(guia),
                 "Caso o cartão nacional de saúde não seja informado, é necessário informar o município de "
                 "residência do beneficiário.");
    TMunicipioRule::Check(guia);
}

namespace {

/// What the text of a number is decided by.
TComputation DecidedByOrigin(const TGuiaFields& guia) {
    return {.Scope = nullptr, .Operands = {guia.OrigemEventoAtencao.Node()}, .Amount = false};
}

} // namespace

void TNumeroGuiaRule::Check(const TGuiaFields& guia) {
    const TXmlField& number = guia.*row_.Numero;
    if (guia.IsReembolso() && number.Present() && number.Text() != kZeros)
        AddError(guia, number, std::string(row_.NotZeros), std::string(kZeros), DecidedByOrigin(guia));
}

void TIdentificacaoReembolsoRule::Check(const TGuiaFields& guia) {
    const TXmlField& number = guia.IdentificacaoReembolso;
    if (!guia.OrigemEventoAtencao.Present() || !number.Present())
        return;
    const bool reimbursement = guia.IsReembolso();
    const bool zeros = number.Text() == kZeros;
    if (!reimbursement && !zeros)
        AddError(
            guia, number,
            "Quando a origem da conta for igual a 1 (Rede contratada, referenciada ou credenciada), 2 "
            "(Rede própria - cooperados) ou 3 (Rede própria - demais prestadores), o campo identificação "
            "do reembolso deve ser preenchido com \"00000000000000000000\" (20 zeros).",
            std::string(kZeros), DecidedByOrigin(guia));
    if (reimbursement && zeros)
        AddError(
            guia, number,
            "Quando a origem da conta for igual a 4 (Reembolso), o campo identificação do reembolso deve "
            "ser diferente de \"00000000000000000000\" (20 zeros).");
}

} // namespace conferix
