#pragma once

#include "validation/identity.h"
#include "xml/xml_message.h"

#include <stdexcept>

namespace conferix {

class TValidation;

/// A validation message was made, or asked, without the rule that it needs.
class EValidationNotDefinedInMessageException : public std::runtime_error {
  public:
    explicit EValidationNotDefinedInMessageException(const std::string& className);
};

/// A finding of a rule. Its identity outlives the rule.
class TValidationMessage : public TXmlMessage {
  public:
    /// Raises EValidationNotDefinedInMessageException without a rule.
    TValidationMessage(const TValidation* validation, TMessageType type, std::string reason,
                       std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
                       std::int32_t filePos = 0);

    static std::shared_ptr<TValidationMessage> CreateSuccess(const TValidation* validation,
                                                             std::string reason, std::string srcText = {},
                                                             std::int32_t line = 0, std::int32_t linePos = 0,
                                                             std::int32_t filePos = 0);
    static std::shared_ptr<TValidationMessage> CreateInfo(const TValidation* validation, std::string reason,
                                                          std::string srcText = {}, std::int32_t line = 0,
                                                          std::int32_t linePos = 0, std::int32_t filePos = 0);
    static std::shared_ptr<TValidationMessage> CreateWarn(const TValidation* validation, std::string reason,
                                                          std::string srcText = {}, std::int32_t line = 0,
                                                          std::int32_t linePos = 0, std::int32_t filePos = 0);
    static std::shared_ptr<TValidationMessage> CreateError(const TValidation* validation, std::string reason,
                                                           std::string srcText = {}, std::int32_t line = 0,
                                                           std::int32_t linePos = 0,
                                                           std::int32_t filePos = 0);

    /// The rule that produced the message; raises EValidationNotDefinedInMessageException when there is none.
    const TValidationIdentity& Validation() const;
    bool HasValidation() const { return identity_ != nullptr; }

  protected:
    /// For messages about the validation itself, which no rule produces.
    TValidationMessage(IValidationIdentity identity, TMessageType type, std::string reason,
                       std::string srcText, std::int32_t line, std::int32_t linePos, std::int32_t filePos);
    static IValidationIdentity IdentityOf(const TValidation* validation, const char* className);
    virtual const char* ClassName() const { return "TValidationMessage"; }

  private:
    IValidationIdentity identity_;
};

/// A finding about a guide of a lot.
class TLoteGuiasValidationMessage : public TValidationMessage {
  public:
    TLoteGuiasValidationMessage(const TValidation* validation, TMessageType type, std::string numeroGuia,
                                std::string reason, std::string srcText = {}, std::int32_t line = 0,
                                std::int32_t linePos = 0, std::int32_t filePos = 0);

    static std::shared_ptr<TLoteGuiasValidationMessage>
    CreateSuccess(const TValidation* validation, std::string numeroGuia, std::string reason,
                  std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
                  std::int32_t filePos = 0);
    static std::shared_ptr<TLoteGuiasValidationMessage>
    CreateInfo(const TValidation* validation, std::string numeroGuia, std::string reason,
               std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
               std::int32_t filePos = 0);
    static std::shared_ptr<TLoteGuiasValidationMessage>
    CreateWarn(const TValidation* validation, std::string numeroGuia, std::string reason,
               std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
               std::int32_t filePos = 0);
    static std::shared_ptr<TLoteGuiasValidationMessage>
    CreateError(const TValidation* validation, std::string numeroGuia, std::string reason,
                std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
                std::int32_t filePos = 0);

    const std::string& NumeroGuia() const { return numeroGuia_; }

  protected:
    std::string Prefix() const override;
    const char* ClassName() const override { return "TLoteGuiasValidationMessage"; }

  private:
    std::string numeroGuia_;
};

/// A finding about a guide and a field of a monitoring file.
class TLoteGuiasMonitoramentoValidationMessage : public TValidationMessage {
  public:
    /// `campo`: the field number in the regulator's layout, three digits.
    TLoteGuiasMonitoramentoValidationMessage(const TValidation* validation, TMessageType type,
                                             std::string campo, std::string numeroGuia, std::string reason,
                                             std::string srcText = {}, std::int32_t line = 0,
                                             std::int32_t linePos = 0, std::int32_t filePos = 0);

    static std::shared_ptr<TLoteGuiasMonitoramentoValidationMessage>
    CreateInfo(const TValidation* validation, std::string campo, std::string numeroGuia, std::string reason,
               std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
               std::int32_t filePos = 0);
    static std::shared_ptr<TLoteGuiasMonitoramentoValidationMessage>
    CreateWarn(const TValidation* validation, std::string campo, std::string numeroGuia, std::string reason,
               std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
               std::int32_t filePos = 0);
    static std::shared_ptr<TLoteGuiasMonitoramentoValidationMessage>
    CreateError(const TValidation* validation, std::string campo, std::string numeroGuia, std::string reason,
                std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
                std::int32_t filePos = 0);

    const std::string& NumeroGuia() const { return numeroGuia_; }
    const std::string& Campo() const { return campo_; }

  protected:
    std::string Prefix() const override;
    const char* ClassName() const override { return "TLoteGuiasMonitoramentoValidationMessage"; }

  private:
    std::string campo_;
    std::string numeroGuia_;
};

/// The findings of a rule or of a run, in the order in which they were added; duplicates are allowed.
using TValidationMessages = std::vector<std::shared_ptr<const TValidationMessage>>;

/// There is one kind of each; callers depend on these names.
using IValidationMessage = TValidationMessage;
using IValidationMessages = TValidationMessages;

} // namespace conferix
