#include "rules/sequencial_validation.h"

#include <fmt/format.h>

#include <utility>

namespace conferix {

namespace {

constexpr std::string_view kProcedimento = "O procedimento localizado";
constexpr std::string_view kDespesa = "A despesa localizada";
/// Of all findings of the rule.
constexpr std::uint64_t kRepeated = 1;

} // namespace

void TSequencialItemValidation::Visit(const IGuiaSpSadt& guia) {
    const TDespesas despesas = guia.OutrasDespesas().Despesas();
    CheckGuia(guia, guia.ProcedimentosExecutados().Procedimentos(), &despesas);
}

void TSequencialItemValidation::Visit(const IGuiaResumoInternacao& guia) {
    const TDespesas despesas = guia.OutrasDespesas().Despesas();
    CheckGuia(guia, guia.ProcedimentosExecutados().Procedimentos(), &despesas);
}

void TSequencialItemValidation::Visit(const IGuiaHonorarios& guia) {
    CheckGuia(guia, guia.ProcedimentosExecutados().Procedimentos(), nullptr);
}

void TSequencialItemValidation::CheckGuia(const IGuiaTiss& guia, const TProcedimentos& procedimentos,
                                          const TDespesas* despesas) {
    StartGuia(guia);
    if (!IsVersionFrom("3.04.00"))
        return;
    TItemByNumber byProcedimento;
    for (const TProcedimentoExecutado& item : procedimentos) {
        const std::optional<std::int64_t> number = item.SequencialItem().Integer();
        if (!number)
            continue;
        const auto [first, isNew] = byProcedimento.try_emplace(*number, item.Node());
        if (!isNew)
            AddRepeated(*number, kProcedimento, *first->second, item);
    }
    if (despesas != nullptr) {
        TItemByNumber byDespesa;
        for (const TDespesa& item : *despesas) {
            const std::optional<std::int64_t> number = item.SequencialItem().Integer();
            if (!number)
                continue;
            if (const auto user = byProcedimento.find(*number); user != byProcedimento.end()) {
                AddRepeated(*number, kProcedimento, *user->second, item);
                continue;
            }
            const auto [first, isNew] = byDespesa.try_emplace(*number, item.Node());
            if (!isNew)
                AddRepeated(*number, kDespesa, *first->second, item);
        }
    }
    if (FoundNothing())
        Success(nullptr,
                "O sequencial de referência dos procedimentos ou itens assistenciais estão de acordo com o "
                "componente organizacional.");
}

std::shared_ptr<TValidationMessage> TSequencialItemValidation::NewMessage(TMessageType type, std::string text,
                                                                          TFindingPlace place) const {
    auto message = TGuiaTissValidation::NewMessage(type, std::move(text), std::move(place));
    message->SetGroupKey(kRepeated);
    return message;
}

void TSequencialItemValidation::AddRepeated(std::int64_t number, std::string_view user, const TXmlNode& first,
                                            const TItemGuia& item) {
    Error(
        item.Node(),
        fmt::format("O sequencial de número {} está repetido. {} na linha {} já o está utilizando.\r\n"
                    "Em uma mesma guia, o sequencial de referência do procedimento ou item assistencial não "
                    "pode se repetir, inclusive considerando os itens assistenciais do Anexo de Outras "
                    "Despesas.",
                    number, user, first.Line()));
}

} // namespace conferix
