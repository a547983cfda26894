#include "rules/lote_validations.h"

#include "platform/format_settings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <vector>

namespace conferix {

namespace {

constexpr std::size_t kMaxGuias = 100;

// In the order of the enumeration.
constexpr std::array<std::string_view, kTiposGuia> kNomesTipoGuia = {
    "Consulta", "SP-SADT", "Resumo de Internação", "Honorários", "Odonto"};

} // namespace

void TLoteValidation::Visit(const IMensagemTiss& mensagem) {
    if (mensagem.TipoTransacao() == TEnumTipoTransacaoTiss::tmEnvioLoteGuias)
        mensagem.LoteGuias().Accept(*this);
    else
        ClearMessages();
}

void TLoteComGuia::Visit(const ILoteGuias& lote) {
    StartVisit();
    if (lote.QtdGuias() > 0)
        Success(nullptr, "O lote atende o limite mínimo exigido de 1 guia.");
    else
        Error(lote.Node(),
              "Como o tipo da transação foi definida como sendo \"ENVIO_LOTE_GUIAS\", é necessário "
              "que o XML contenha um lote com pelo menos uma guia TISS. Porém, não foram "
              "localizadas guias TISS no conteúdo do XML.");
}

void TLoteDeUmTipo::Visit(const ILoteGuias& lote) {
    StartVisit();
    const std::vector<IGuiaTiss> guias = lote.Guias();
    if (guias.empty())
        return;
    std::array<std::size_t, kTiposGuia> counts{};
    for (const IGuiaTiss& guia : guias)
        ++counts[static_cast<std::size_t>(guia.TipoGuia())];
    std::vector<std::string> parts;
    for (std::size_t tipo = 0; tipo < kTiposGuia; ++tipo)
        if (counts[tipo] > 0)
            parts.push_back(fmt::format("{} de {}", counts[tipo], kNomesTipoGuia[tipo]));
    if (parts.size() % 2 == 1)
        Success(nullptr, "Todas as guias do lote são do mesmo tipo.");
    else
        Error(guias.front().Node(),
              fmt::format("Um lote só pode conter guias de um mesmo tipo. Porém, foram encontradas tipos "
                          "diferentes de guias dentro do lote ({}).",
                          fmt::join(parts, ", ")));
}

void TLoteAteCemGuias::Visit(const ILoteGuias& lote) {
    StartVisit();
    const std::vector<IGuiaTiss> guias = lote.Guias();
    if (guias.size() <= kMaxGuias)
        Success(nullptr, "O lote não excede o limite máximo permitido de 100 guias.");
    else
        Error(guias[kMaxGuias].Node(),
              fmt::format(
                  "De acordo com o padrão TISS, um lote pode conter no máximo 100 guias. Porém, {} guias "
                  "foram encontradas no XML.",
                  TFormatSettings::Regional().Count(static_cast<std::int64_t>(guias.size()))));
}

} // namespace conferix
