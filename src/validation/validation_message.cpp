#include "validation/validation_message.h"

#include "validation/validation.h"
#include "xml/xml_node.h"

#include <string>

namespace conferix {

EValidationNotDefinedInMessageException::EValidationNotDefinedInMessageException(const std::string& className)
    : std::runtime_error("Validação não definida na mensagem do tipo " + className) {}

std::string GuideMark(const TXmlNode& guide) {
    return "@" + std::to_string(guide.ByteStart());
}

IValidationIdentity TValidationMessage::IdentityOf(const TValidation* validation, const char* className) {
    if (validation == nullptr || validation->Identity() == nullptr)
        throw EValidationNotDefinedInMessageException(className);
    return validation->Identity();
}

TValidationMessage::TValidationMessage(const TValidation* validation, TMessageType type, std::string reason,
                                       std::string srcText, std::int32_t line, std::int32_t linePos,
                                       std::int32_t filePos)
    : TXmlMessage(TMessageOrigin{IdentityOf(validation, "TValidationMessage"), {}, {}}, type,
                  std::move(reason), std::move(srcText), line, linePos, filePos) {}

const TValidationIdentity& TValidationMessage::Validation() const {
    if (Rule() == nullptr)
        throw EValidationNotDefinedInMessageException(ClassName());
    return *Rule();
}

TLoteGuiasValidationMessage::TLoteGuiasValidationMessage(const TValidation* validation, TMessageType type,
                                                         std::string numeroGuia, std::string reason,
                                                         std::string srcText, std::int32_t line,
                                                         std::int32_t linePos, std::int32_t filePos)
    : TValidationMessage({IdentityOf(validation, "TLoteGuiasValidationMessage"), std::move(numeroGuia), {}},
                         type, std::move(reason), std::move(srcText), line, linePos, filePos) {}

TLoteGuiasMonitoramentoValidationMessage::TLoteGuiasMonitoramentoValidationMessage(
    const TValidation* validation, TMessageType type, std::string campo, std::string numeroGuia,
    std::string reason, std::string srcText, std::int32_t line, std::int32_t linePos, std::int32_t filePos)
    : TValidationMessage(TMessageOrigin{IdentityOf(validation, "TLoteGuiasMonitoramentoValidationMessage"),
                                        std::move(numeroGuia), std::move(campo)},
                         type, std::move(reason), std::move(srcText), line, linePos, filePos) {}

} // namespace conferix
