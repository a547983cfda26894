// Runs the rules about lots over small documents and writes down what they find.
#pragma once

#include "data/tuss_writer.h"
#include "model/documentos.h"
#include "rules/lote_validations.h"
#include "validation/solver.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace conferix::testes {

using TFill = std::function<void(TTussWriter&)>;

inline TDate Dia(int ano, unsigned mes, unsigned dia) {
    return TDate(std::chrono::year(ano), std::chrono::month(mes), std::chrono::day(dia));
}

/// The rules about the lot of a message, after their visit.
inline std::shared_ptr<TLoteGuiasValidation> Validado(const IMensagemTiss& mensagem, std::string_view versao,
                                                      const TFill& fill = {}) {
    auto regras = MakeValidation<TLoteGuiasValidation>(std::string(versao), TTussConnection::InMemory(fill));
    mensagem.Accept(*regras);
    return regras;
}

/// A finding as "erro: text -> correction"; successes are "ok: text".
inline std::string Descrito(const TXmlMessage& message) {
    static constexpr std::string_view kTipos[] = {"info", "aviso", "erro", "fatal", "ok"};
    std::string text =
        fmt::format("{}: {}", kTipos[static_cast<std::size_t>(message.MsgType())], message.Reason());
    for (const auto& solver : message.Solvers())
        text += " -> " + solver->Description();
    return text;
}

/// The content of a lot that holds guides, in the notation of Xml().
inline std::string Lote(std::string_view versao, std::string_view guias) {
    return versao < "3" ? fmt::format("guias(guiaFaturamento({}))", guias)
                        : fmt::format("guiasTISS({})", guias);
}

/// What the rules whose name ends with `regra` find in a lot of guides, written in the notation of Xml().
inline std::vector<std::string> Achados(std::string_view versao, std::string_view guias,
                                        std::string_view regra, const TFill& fill = {}) {
    const auto regras = Validado(*Mensagem(versao, Xml(Lote(versao, guias))), versao, fill);
    std::vector<std::string> achados;
    for (const auto& message : regras->ValidationMessages())
        if (message->Validation().Name.ends_with(regra))
            achados.push_back(Descrito(*message));
    return achados;
}

/// An SP/SADT guide of 3.x with number 7.
inline std::string SpSadt(std::string_view conteudo) {
    return fmt::format("guiaSP-SADT(cabecalhoGuia(numeroGuiaPrestador=7) {})", conteudo);
}

} // namespace conferix::testes
