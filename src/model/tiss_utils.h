// Single values of a document's header, without loading the file.
#pragma once

#include "xml/xml_document.h"

#include <string>
#include <string_view>

namespace conferix {

/// Readers of single values, found by local name wherever they stand, the first in document order. Each
/// answers an empty text when the element is absent; the texts live as long as the document.
class TTissUtils {
  public:
    TTissUtils() = delete;

    /// The version, looked for at its place in the headers of both roots.
    static std::string_view VersaoTiss2(const TXmlDocument& document);
    /// The version: the first element whose name ends with "Padrao".
    static std::string_view VersaoTiss(const TXmlDocument& document);
    static std::string_view TipoTransacao(const TXmlDocument& document);
    static std::string_view SequencialTransacao(const TXmlDocument& document);
    static std::string_view DataRegistroTransacao(const TXmlDocument& document);
    static std::string_view HoraRegistroTransacao(const TXmlDocument& document);
    /// The health plan's registration with the regulator.
    static std::string_view RegistroANS(const TXmlDocument& document);
    static std::string_view IdentificacaoPrestadorCnpj(const TXmlDocument& document);
    static std::string_view IdentificacaoPrestadorCpf(const TXmlDocument& document);
    static std::string_view IdentificacaoPrestadorCodigoNaOperadora(const TXmlDocument& document);
    /// The name of the contracted provider of the first lot of guides, the first in document order: in a fees
    /// guide of 2.x that is the place of the services (contratado), which stands before who rendered them.
    /// Who only requested the services (dadosSolicitante) is not it.
    static std::string_view NomeContratado(const TXmlDocument& document);
    /// What stands for the name where a lot has none, as from 4.00.00 on: "código 123", "CNPJ ..." or "CPF
    /// ..." of the same provider, else of the header's; empty when there is none.
    static std::string CodigoContratado(const TXmlDocument& document);
};

} // namespace conferix
