// Checks of the fields 010 to 025: who attended, who was attended, and the guide's numbers.
#pragma once

#include "rules/monitoring/campo_validation.h"

#include <string_view>

namespace conferix {

/// 010: the version that the provider used is due unless the guide is a reimbursement.
void CheckVersaoPrestador(TCampoValidation& campo, const TGuiaFields& guia);
/// 014: check digits of the provider's CNPJ or CPF.
void CheckDocumentoExecutante(TCampoValidation& campo, const TGuiaFields& guia);
/// 015: the provider's municipality exists.
void CheckMunicipioExecutante(TCampoValidation& campo, const TGuiaFields& guia);
/// 016: check digits of the health card number.
void CheckCartaoNacionalSaude(TCampoValidation& campo, const TGuiaFields& guia);
/// 017: the sex is due without a card number.
void CheckSexo(TCampoValidation& campo, const TGuiaFields& guia);
/// 018: the day of birth is due without a card number, and not after the day of attendance.
void CheckDataNascimento(TCampoValidation& campo, const TGuiaFields& guia);
/// 019: the municipality of residence is due without a card number, and has to exist.
void CheckMunicipioResidencia(TCampoValidation& campo, const TGuiaFields& guia);

/// A number that is filled with zeros where the guide is a reimbursement.
struct TZerosNoReembolso {
    TXmlField TGuiaFields::*Numero;
    std::string_view NotZeros;

    void operator()(TCampoValidation& campo, const TGuiaFields& guia) const;
};

/// 025: identifies a reimbursement, and is filled with zeros where there is none.
void CheckIdentificacaoReembolso(TCampoValidation& campo, const TGuiaFields& guia);

} // namespace conferix
