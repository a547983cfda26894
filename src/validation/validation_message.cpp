#include "validation/validation_message.h"

#include "validation/validation.h"
#include "xml/cut_text.h"

namespace conferix {

namespace {

/// Adds a bracketed part to a prefix, with a blank between the parts; an empty value adds nothing.
void AppendPart(std::string& prefix, const char* label, const std::string& value) {
    if (value.empty())
        return;
    if (!prefix.empty())
        prefix += ' ';
    prefix += std::string("[") + label + ": " + CutText(value) + "]";
}

} // namespace

EValidationNotDefinedInMessageException::EValidationNotDefinedInMessageException(const std::string& className)
    : std::runtime_error("Validação não definida na mensagem do tipo " + className) {}

IValidationIdentity TValidationMessage::IdentityOf(const TValidation* validation, const char* className) {
    if (validation == nullptr)
        throw EValidationNotDefinedInMessageException(className);
    return validation->Identity();
}

TValidationMessage::TValidationMessage(IValidationIdentity identity, TMessageType type, std::string reason,
                                       std::string srcText, std::int32_t line, std::int32_t linePos,
                                       std::int32_t filePos)
    : TXmlMessage(type, std::move(reason), std::move(srcText), line, linePos, filePos),
      identity_(std::move(identity)) {}

TValidationMessage::TValidationMessage(const TValidation* validation, TMessageType type, std::string reason,
                                       std::string srcText, std::int32_t line, std::int32_t linePos,
                                       std::int32_t filePos)
    : TValidationMessage(IdentityOf(validation, "TValidationMessage"), type, std::move(reason),
                         std::move(srcText), line, linePos, filePos) {}

const TValidationIdentity& TValidationMessage::Validation() const {
    if (identity_ == nullptr)
        throw EValidationNotDefinedInMessageException(ClassName());
    return *identity_;
}

TLoteGuiasValidationMessage::TLoteGuiasValidationMessage(const TValidation* validation, TMessageType type,
                                                         std::string numeroGuia, std::string reason,
                                                         std::string srcText, std::int32_t line,
                                                         std::int32_t linePos, std::int32_t filePos)
    : TValidationMessage(IdentityOf(validation, "TLoteGuiasValidationMessage"), type, std::move(reason),
                         std::move(srcText), line, linePos, filePos),
      numeroGuia_(std::move(numeroGuia)) {}

std::string TLoteGuiasValidationMessage::Prefix() const {
    std::string prefix = TValidationMessage::Prefix();
    AppendPart(prefix, "Guia", numeroGuia_);
    return prefix;
}

TLoteGuiasMonitoramentoValidationMessage::TLoteGuiasMonitoramentoValidationMessage(
    const TValidation* validation, TMessageType type, std::string campo, std::string numeroGuia,
    std::string reason, std::string srcText, std::int32_t line, std::int32_t linePos, std::int32_t filePos)
    : TValidationMessage(IdentityOf(validation, "TLoteGuiasMonitoramentoValidationMessage"), type,
                         std::move(reason), std::move(srcText), line, linePos, filePos),
      campo_(std::move(campo)), numeroGuia_(std::move(numeroGuia)) {}

std::string TLoteGuiasMonitoramentoValidationMessage::Prefix() const {
    std::string prefix = TValidationMessage::Prefix();
    AppendPart(prefix, "Guia", numeroGuia_);
    AppendPart(prefix, "Campo", campo_);
    return prefix;
}

// One shorthand a severity for each kind of message.
#define CONFERIX_SHORTHAND(Class, Name, Type)                                                                \
    std::shared_ptr<Class> Class::Name(const TValidation* validation, std::string reason,                    \
                                       std::string srcText, std::int32_t line, std::int32_t linePos,         \
                                       std::int32_t filePos) {                                               \
        return std::make_shared<Class>(validation, TMessageType::Type, std::move(reason),                    \
                                       std::move(srcText), line, linePos, filePos);                          \
    }
#define CONFERIX_GUIDE_SHORTHAND(Class, Name, Type)                                                          \
    std::shared_ptr<Class> Class::Name(const TValidation* validation, std::string numeroGuia,                \
                                       std::string reason, std::string srcText, std::int32_t line,           \
                                       std::int32_t linePos, std::int32_t filePos) {                         \
        return std::make_shared<Class>(validation, TMessageType::Type, std::move(numeroGuia),                \
                                       std::move(reason), std::move(srcText), line, linePos, filePos);       \
    }
#define CONFERIX_FIELD_SHORTHAND(Class, Name, Type)                                                          \
    std::shared_ptr<Class> Class::Name(const TValidation* validation, std::string campo,                     \
                                       std::string numeroGuia, std::string reason, std::string srcText,      \
                                       std::int32_t line, std::int32_t linePos, std::int32_t filePos) {      \
        return std::make_shared<Class>(validation, TMessageType::Type, std::move(campo),                     \
                                       std::move(numeroGuia), std::move(reason), std::move(srcText), line,   \
                                       linePos, filePos);                                                    \
    }

CONFERIX_SHORTHAND(TValidationMessage, CreateSuccess, mtSuccess)
CONFERIX_SHORTHAND(TValidationMessage, CreateInfo, mtInformation)
CONFERIX_SHORTHAND(TValidationMessage, CreateWarn, mtWarning)
CONFERIX_SHORTHAND(TValidationMessage, CreateError, mtError)
CONFERIX_GUIDE_SHORTHAND(TLoteGuiasValidationMessage, CreateSuccess, mtSuccess)
CONFERIX_GUIDE_SHORTHAND(TLoteGuiasValidationMessage, CreateInfo, mtInformation)
CONFERIX_GUIDE_SHORTHAND(TLoteGuiasValidationMessage, CreateWarn, mtWarning)
CONFERIX_GUIDE_SHORTHAND(TLoteGuiasValidationMessage, CreateError, mtError)
CONFERIX_FIELD_SHORTHAND(TLoteGuiasMonitoramentoValidationMessage, CreateInfo, mtInformation)
CONFERIX_FIELD_SHORTHAND(TLoteGuiasMonitoramentoValidationMessage, CreateWarn, mtWarning)
CONFERIX_FIELD_SHORTHAND(TLoteGuiasMonitoramentoValidationMessage, CreateError, mtError)

#undef CONFERIX_SHORTHAND
#undef CONFERIX_GUIDE_SHORTHAND
#undef CONFERIX_FIELD_SHORTHAND

} // namespace conferix
