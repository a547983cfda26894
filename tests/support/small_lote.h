#pragma once

#include "support/test_files.h"

#include <string>

namespace conferix {

/// A small schema of our own: a message with a version, guides that hold a number, and an epilogue.
inline const std::string kSmallSchema =
    ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "tests/support/small.xsd");

inline std::string Guia(const std::string& numero, const std::string& data) {
    return "<ans:guiaConsulta><ans:cabecalhoConsulta><ans:numeroGuiaPrestador>" + numero +
           "</ans:numeroGuiaPrestador></ans:cabecalhoConsulta>\n" + data + "</ans:guiaConsulta>\n";
}

inline std::string Lote(const std::string& guias, const std::string& transacao = "ENVIO_LOTE_GUIAS") {
    return "<ans:mensagemTISS xmlns:ans=\"http://www.ans.gov.br/padroes/tiss/schemas\">"
           "<ans:cabecalho><ans:identificacaoTransacao><ans:tipoTransacao>" +
           transacao +
           "</ans:tipoTransacao></ans:identificacaoTransacao><ans:Padrao>4.01.00</ans:Padrao></ans:cabecalho>"
           "<ans:prestadorParaOperadora><ans:loteGuias><ans:numeroLote>1</ans:numeroLote><ans:guiasTISS>\n" +
           guias +
           "</ans:guiasTISS></ans:loteGuias></ans:prestadorParaOperadora>"
           "<ans:epilogo><ans:hash>0</ans:hash></ans:epilogo></ans:mensagemTISS>";
}

} // namespace conferix
