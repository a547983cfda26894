// Runs the rules of a lot over small documents and writes down what they find.
#pragma once

#include "model/documents.h"
#include "validation/solver.h"
#include "validator/all_rules.h"

#include <memory>
#include <string>
#include <string_view>

namespace conferix::tests {

inline TDate Dia(int ano, unsigned mes, unsigned dia) {
    return TDate(std::chrono::year(ano), std::chrono::month(mes), std::chrono::day(dia));
}

/// A message whose lot holds guides, written in the notation of Xml().
inline std::string LoteComGuias(std::string_view versao, std::string_view guias) {
    return LotText(versao, Xml(versao < "3" ? fmt::format("guias(guiaFaturamento({}))", guias)
                                            : fmt::format("guiasTISS({})", guias)));
}

/// The rule of that name and those below it, after their visit; `versao` empty: that of the file.
inline std::shared_ptr<TValidation> Julgado(std::string_view nome, const IArquivoTiss& arquivo,
                                            const std::shared_ptr<const ITussConnection>& tuss,
                                            std::string_view versao = {}) {
    const auto run = NewRunContext(std::string(versao.empty() ? arquivo.Versao() : versao), {}, tuss);
    auto regras = AllRules().MakeValidation(std::string(nome), run);
    arquivo.Accept(*regras);
    return regras;
}

/// What they find.
inline TValidationMessages Mensagens(std::string_view nome, const IArquivoTiss& arquivo,
                                     const std::shared_ptr<const ITussConnection>& tuss,
                                     std::string_view versao = {}) {
    return Julgado(nome, arquivo, tuss, versao)->ValidationMessages();
}

/// A finding as "erro: text -> correction", or "023 text -> correction" where it names a field.
inline std::string Descrito(const TXmlMessage& message) {
    static constexpr std::string_view kTipos[] = {"info:", "aviso:", "erro:", "fatal:", "ok:"};
    std::string text = message.Campo().empty()
                           ? std::string(kTipos[static_cast<std::size_t>(message.MsgType())])
                           : message.Campo();
    text += " " + message.Reason();
    for (const auto& solver : message.Solvers())
        text += " -> " + solver->Description();
    return text;
}

} // namespace conferix::tests
