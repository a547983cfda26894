// Documents for the tests of the model.
#pragma once

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "support/support.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace conferix::tests {

/// Turns a short notation into elements: "a(b=1 c(d=2))" is <a><b>1</b><c><d>2</d></c></a>.
inline std::string Xml(std::string_view notation) {
    std::string xml;
    std::string name;
    std::vector<std::string> open;
    for (std::size_t i = 0; i < notation.size(); ++i) {
        const char c = notation[i];
        if (c == '(') {
            xml += "<" + name + ">";
            open.push_back(name);
            name.clear();
        } else if (c == ')') {
            xml += "</" + open.back() + ">";
            open.pop_back();
        } else if (c == '=') {
            const std::size_t end = std::min(notation.find_first_of(" )", i), notation.size());
            xml += fmt::format("<{0}>{1}</{0}>", name, notation.substr(i + 1, end - i - 1));
            name.clear();
            i = end - 1;
        } else if (c != ' ') {
            name += c;
        }
    }
    return xml;
}

/// A billing message whose lot (its children, number included) is given.
inline std::string LotText(std::string_view version, std::string_view lot) {
    return fmt::format(
        "<ans:mensagemTISS xmlns:ans=\"http://www.ans.gov.br/padroes/tiss/schemas\">"
        "<ans:cabecalho><ans:identificacaoTransacao><ans:tipoTransacao>ENVIO_LOTE_GUIAS"
        "</ans:tipoTransacao></ans:identificacaoTransacao><ans:Padrao>{}</ans:Padrao>"
        "</ans:cabecalho><ans:prestadorParaOperadora><ans:loteGuias xmlns=\"http://www.ans.gov.br/"
        "padroes/tiss/schemas\">{}</ans:loteGuias></ans:prestadorParaOperadora>"
        "<ans:epilogo><ans:hash>abc</ans:hash></ans:epilogo></ans:mensagemTISS>",
        version, lot);
}

/// A monitoring file; `identification` goes into the header, `content` into operadoraParaANS.
inline std::string MonitoringText(std::string_view version, std::string_view identification,
                                  std::string_view content) {
    return fmt::format("<mensagemEnvioANS><cabecalho><identificacaoTransacao><tipoTransacao>MONITORAMENTO"
                       "</tipoTransacao>{}</identificacaoTransacao><registroANS>123456</registroANS>"
                       "<versaoPadrao>{}</versaoPadrao></cabecalho><Mensagem><operadoraParaANS>{}"
                       "</operadoraParaANS></Mensagem><epilogo><hash>def</hash></epilogo></mensagemEnvioANS>",
                       identification, version, content);
}

inline std::shared_ptr<IMensagemTiss> LoadedMessage(std::string_view version, std::string_view lot) {
    return std::dynamic_pointer_cast<IMensagemTiss>(LoadTiss(LotText(version, lot)));
}

inline std::shared_ptr<IMonitoramento> LoadedMonitoring(std::string_view identification,
                                                        std::string_view content) {
    return std::dynamic_pointer_cast<IMonitoramento>(
        LoadTiss(MonitoringText("1.06.00", identification, content)));
}

} // namespace conferix::tests
