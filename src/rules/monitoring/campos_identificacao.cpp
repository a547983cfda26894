#include "rules/monitoring/campos_identificacao.h"

#include "rules/documents/documents_validation.h"

#include <fmt/format.h>

namespace conferix {

namespace {

constexpr std::string_view kZeros = "00000000000000000000";
/// The version from which a beneficiary without a card number has to be described.
constexpr std::string_view kDescribedFrom = "3.00.00";

bool IsDueWithoutCard(const TCampoValidation& campo, const TGuiaFields& guia) {
    return campo.IsVersionFrom(kDescribedFrom) && !guia.NumeroCartaoNacionalSaude.Present();
}

/// The place of what is absent of the beneficiary.
const TXmlNode* BeneficiarioPlace(const TGuiaFields& guia) {
    return guia.Beneficiario.HasNode() ? guia.Beneficiario.Node() : guia.Guia.Node();
}

void CheckMunicipio(TCampoValidation& campo, const TXmlField& municipio, std::string_view invalid) {
    if (municipio.Present() && campo.CanConsultCities() && !campo.Manager().HasCity(municipio.Text()))
        campo.Error(municipio.Node(), std::string(invalid));
}

} // namespace

void CheckVersaoPrestador(TCampoValidation& campo, const TGuiaFields& guia) {
    if (guia.OrigemEventoAtencao.Present() && !guia.IsReembolso() && !guia.VersaoTISSPrestador.Present())
        campo.Error(
            guia.Guia.Node(),
            "A versão TISS utilizada pelo prestador não foi informada, conforme tabela de domínio nº 69. ");
}

void CheckDocumentoExecutante(TCampoValidation& campo, const TGuiaFields& guia) {
    if (!guia.CodigoCNPJ_CPF.Present())
        return;
    const std::string_view kind = guia.IdentificadorExecutante.Text();
    const std::string_view number = guia.CodigoCNPJ_CPF.Text();
    const bool cnpj = kind == "1";
    if (!cnpj && kind != "2")
        return;
    const auto isValid = cnpj ? TDocumentsValidation::IsValidCnpj : TDocumentsValidation::IsValidCpf;
    if (!isValid(number))
        campo.DocumentError(
            guia.CodigoCNPJ_CPF,
            fmt::format("O {} informado do prestador executante está inválido.", cnpj ? "CNPJ" : "CPF"),
            isValid, cnpj ? kCnpjDigits : kCpfDigits);
}

void CheckMunicipioExecutante(TCampoValidation& campo, const TGuiaFields& guia) {
    CheckMunicipio(campo, guia.MunicipioExecutante,
                   "O código IBGE do município de localização do prestador executante está inválido.");
}

void CheckCartaoNacionalSaude(TCampoValidation& campo, const TGuiaFields& guia) {
    const TXmlField& card = guia.NumeroCartaoNacionalSaude;
    if (card.Present() && !TDocumentsValidation::IsValidCNS(card.Text()))
        campo.DocumentError(
            card, fmt::format("O número do cartão nacional de saúde \"{}\" está inválido.", card.Shown()),
            TDocumentsValidation::IsValidCNS, kCnsDigits);
}

void CheckSexo(TCampoValidation& campo, const TGuiaFields& guia) {
    if (IsDueWithoutCard(campo, guia) && !guia.Sexo.Present())
        campo.Error(BeneficiarioPlace(guia),
                    "Caso o cartão nacional de saúde não seja informado, é necessário informar o sexo do "
                    "beneficiário.");
}

void CheckDataNascimento(TCampoValidation& campo, const TGuiaFields& guia) {
    const TDateField& birth = guia.DataNascimento;
    if (IsDueWithoutCard(campo, guia) && !birth.Field.Present())
        campo.Error(BeneficiarioPlace(guia),
                    "Caso o cartão nacional de saúde não seja informado, é necessário informar a data de "
                    "nascimento do beneficiário.");
    if (birth.Value && guia.DataRealizacao.Value && *birth.Value > *guia.DataRealizacao.Value)
        campo.Error(birth.Field.Node(),
                    "A data de nascimento do beneficiário deve ser menor ou igual à data de realização do "
                    "procedimento.");
}

void CheckMunicipioResidencia(TCampoValidation& campo, const TGuiaFields& guia) {
    if (IsDueWithoutCard(campo, guia) && !guia.MunicipioResidencia.Present())
        campo.Error(
            BeneficiarioPlace(guia),
            "Caso o cartão nacional de saúde não seja informado, é necessário informar o município de "
            "residência do beneficiário.");
    CheckMunicipio(campo, guia.MunicipioResidencia,
                   "O código IBGE do município de residência do beneficiário está inválido.");
}

namespace {

/// What the text of a number is decided by.
TComputation DecidedByOrigin(const TGuiaFields& guia) {
    return {.Scope = nullptr, .Operands = {guia.OrigemEventoAtencao.Node()}, .Amount = false};
}

} // namespace

void TZerosNoReembolso::operator()(TCampoValidation& campo, const TGuiaFields& guia) const {
    const TXmlField& number = guia.*Numero;
    if (guia.IsReembolso() && number.Present() && number.Text() != kZeros)
        campo.CorrectableError(*number.Node(), std::string(NotZeros), std::string(kZeros),
                               DecidedByOrigin(guia));
}

void CheckIdentificacaoReembolso(TCampoValidation& campo, const TGuiaFields& guia) {
    const TXmlField& number = guia.IdentificacaoReembolso;
    if (!guia.OrigemEventoAtencao.Present() || !number.Present())
        return;
    const bool reimbursement = guia.IsReembolso();
    const bool zeros = number.Text() == kZeros;
    if (!reimbursement && !zeros)
        campo.CorrectableError(
            *number.Node(),
            "Quando a origem da conta for igual a 1 (Rede contratada, referenciada ou credenciada), 2 "
            "(Rede própria - cooperados) ou 3 (Rede própria - demais prestadores), o campo identificação "
            "do reembolso deve ser preenchido com \"00000000000000000000\" (20 zeros).",
            std::string(kZeros), DecidedByOrigin(guia));
    if (reimbursement && zeros)
        campo.Error(
            number.Node(),
            "Quando a origem da conta for igual a 4 (Reembolso), o campo identificação do reembolso deve "
            "ser diferente de \"00000000000000000000\" (20 zeros).");
}

} // namespace conferix
