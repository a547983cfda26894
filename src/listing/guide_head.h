// What listings tell of a guide beside its items: its numbers, the beneficiary, its date, its professionals.
#pragma once

#include "model/guias.h"

#include <compare>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A professional as a guide names one. Texts live as long as the document.
struct TProfissional {
    std::string_view Nome = {};
    std::string_view Conselho = {}; ///< code of table 26; in 2.x its letters
    std::string_view Numero = {};   ///< in the council
    std::string_view Uf = {};       ///< IBGE code; in 2.x letters
    std::string_view Cbo = {};

    // NOLINTNEXTLINE(modernize-use-nullptr): its 0 is no pointer
    auto operator<=>(const TProfissional&) const = default;
    /// "MARIA, CRM 12345 SP, CBO 225125", of what there is.
    std::string Text() const;
};

/// What stands around the items of a guide; empty where the guide does not have it.
struct TGuiaHead {
    std::string_view NumeroOperadora = {};
    std::string_view Senha = {};
    std::string_view Carteira = {};
    std::string_view Beneficiario = {};    ///< name; none from 4.00.00 on
    std::string_view Data = {};            ///< day on which the guide was filled in or authorised, AAAA-MM-DD
    std::string_view DataAtendimento = {}; ///< day of the attendance, where it stands beside the items
    std::vector<TProfissional> Profissionais = {}; ///< who attended, where they stand beside the items
};

/// Reads what stands around the items, in one walk.
TGuiaHead ReadGuiaHead(const IGuiaTiss& guia);

/// The team of an item.
std::vector<TProfissional> ProfissionaisOf(const TXmlNode& item);

} // namespace conferix
