#pragma once

#include <string>

namespace conferix {

/// A small schema of our own: a message with a version, guides that hold a number, and an epilogue.
inline constexpr const char* kSmallSchema = R"(<?xml version="1.0" encoding="UTF-8"?>
<schema xmlns="http://www.w3.org/2001/XMLSchema" xmlns:t="http://www.ans.gov.br/padroes/tiss/schemas"
        targetNamespace="http://www.ans.gov.br/padroes/tiss/schemas" elementFormDefault="qualified">
  <element name="mensagemTISS"><complexType><sequence>
    <element name="cabecalho"><complexType><sequence>
      <element name="identificacaoTransacao"><complexType><sequence>
        <element name="tipoTransacao" type="string"/></sequence></complexType></element>
      <element name="Padrao" type="string"/></sequence></complexType></element>
    <element name="prestadorParaOperadora" minOccurs="0"><complexType><sequence><element name="loteGuias"><complexType><sequence>
      <element name="numeroLote" type="integer"/>
      <element name="guiasTISS"><complexType><sequence>
        <element name="guiaConsulta" maxOccurs="100"><complexType><sequence>
          <element name="cabecalhoConsulta"><complexType><sequence>
            <element name="numeroGuiaPrestador" type="string"/></sequence></complexType></element>
          <element name="dataAtendimento" type="date"/>
        </sequence></complexType></element>
      </sequence></complexType></element>
    </sequence></complexType></element></sequence></complexType></element>
    <element name="epilogo"><complexType><sequence><element name="hash" type="string"/></sequence></complexType></element>
  </sequence></complexType></element>
</schema>)";

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
