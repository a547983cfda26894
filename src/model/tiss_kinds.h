// The kinds of TISS files: what each is recognised by and how its schemas are named.
#pragma once

#include "model/tiss_enums.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// One kind of TISS file.
struct TTissKind {
    TEnumTipoArquivoTiss Tipo;
    std::string_view Name;         ///< identifier of the kind, as "taMensagemTISS"
    std::string_view RootElement;  ///< local name of the document element
    std::string_view Transaction;  ///< tipoTransacao that the header has to name; empty for any
    std::string_view SchemaPrefix; ///< of the main schema's file name, up to the version
    std::string_view Label;        ///< one word for lists
    std::string_view Title;        ///< for the heading of a report
};

/// One row a kind, in the order in which a document is tried.
inline constexpr std::array<TTissKind, 3> kTissKinds = {
    {{TEnumTipoArquivoTiss::taMensagemTISS, "taMensagemTISS", "mensagemTISS", "", "tissV", "mensagem",
      "Mensagem TISS"},
     {TEnumTipoArquivoTiss::taMonitoramento, "taMonitoramento", "mensagemEnvioANS", "MONITORAMENTO",
      "tissMonitoramentoV", "monitoramento", "Monitoramento TISS"},
     {TEnumTipoArquivoTiss::taMonitoramentoQualidade, "taMonitoramentoQualidade", "mensagemEnvioANS",
      "QUALIDADE", "tissMonitoramentoQualidadeV", "qualidade", "Monitoramento TISS"}}};

/// The row of a kind.
const TTissKind& KindOf(TEnumTipoArquivoTiss tipo);

/// "tissV3_05_00.xsd" of a billing message and "3.05.00".
std::string SchemaFileName(TEnumTipoArquivoTiss tipo, std::string_view versao);

/// What the name of a main schema's file says.
struct TSchemaFileName {
    const TTissKind* Kind = nullptr;
    std::string Versao; ///< as "3.05.00"
};

/// Takes the name of a main schema's file apart; nothing for other names.
std::optional<TSchemaFileName> ParseSchemaFileName(std::string_view fileName);

} // namespace conferix
