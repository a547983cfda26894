#pragma once

#include "rules/guia_validation.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

namespace conferix {

/// The sequence numbers of a guide's procedures and expenses do not repeat; from version 3.04.00 on.
class TSequencialItemValidation : public TGuiaTissValidation {
  public:
    using TGuiaTissValidation::TGuiaTissValidation;
    using TGuiaTissValidation::Visit;
    void Visit(const IGuiaSpSadt& guia) override;
    void Visit(const IGuiaResumoInternacao& guia) override;
    void Visit(const IGuiaHonorarios& guia) override;

  protected:
    /// Repeated numbers are one cause, whichever they are and wherever they were used first.
    std::shared_ptr<TValidationMessage> NewMessage(TMessageType type, std::string text,
                                                   TFindingPlace place) const override;

  private:
    /// The item that first used a number.
    using TItemByNumber = std::unordered_map<std::int64_t, const TXmlNode*>;

    void CheckGuia(const IGuiaTiss& guia, const TProcedimentos& procedimentos, const TDespesas* despesas);
    void AddRepeated(std::int64_t number, std::string_view user, const TXmlNode& first,
                     const TItemGuia& item);
};

} // namespace conferix
