#pragma once

#include "validation/identity.h"
#include "xml/xml_message.h"

#include <stdexcept>
#include <utility>

namespace conferix {

class TXmlNode;

class TValidation;

/// A validation message was made, or asked, without the rule that it needs.
class EValidationNotDefinedInMessageException : public std::runtime_error {
  public:
    explicit EValidationNotDefinedInMessageException(const std::string& className);
};

/// One shorthand a severity: makes a message of the kind from the arguments of its constructor, the severity
/// left out.
template<class Message>
class TMessageShorthands {
  public:
    template<class... Args>
    static std::shared_ptr<Message> CreateSuccess(const TValidation* validation, Args&&... args) {
        return Create(validation, TMessageType::mtSuccess, std::forward<Args>(args)...);
    }
    template<class... Args>
    static std::shared_ptr<Message> CreateInfo(const TValidation* validation, Args&&... args) {
        return Create(validation, TMessageType::mtInformation, std::forward<Args>(args)...);
    }
    template<class... Args>
    static std::shared_ptr<Message> CreateWarn(const TValidation* validation, Args&&... args) {
        return Create(validation, TMessageType::mtWarning, std::forward<Args>(args)...);
    }
    template<class... Args>
    static std::shared_ptr<Message> CreateError(const TValidation* validation, Args&&... args) {
        return Create(validation, TMessageType::mtError, std::forward<Args>(args)...);
    }

  private:
    template<class... Args>
    static std::shared_ptr<Message> Create(Args&&... args) {
        return std::make_shared<Message>(std::forward<Args>(args)...);
    }
};

/// A finding of a rule. The rule's identity outlives the rule. All kinds raise
/// EValidationNotDefinedInMessageException when they are made without a rule.
class TValidationMessage : public TXmlMessage, public TMessageShorthands<TValidationMessage> {
  public:
    using TMessageShorthands::CreateError;
    using TMessageShorthands::CreateInfo;
    using TMessageShorthands::CreateSuccess;
    using TMessageShorthands::CreateWarn;

    TValidationMessage(const TValidation* validation, TMessageType type, std::string reason,
                       std::string srcText = {}, std::int32_t line = 0, std::int32_t linePos = 0,
                       std::int32_t filePos = 0);

    /// The rule that produced the message; raises EValidationNotDefinedInMessageException when there is none.
    const TValidationIdentity& Validation() const;

  protected:
    /// `origin` without a rule: for messages about the validation itself.
    TValidationMessage(TMessageOrigin origin, TMessageType type, std::string reason, std::string srcText = {},
                       std::int32_t line = 0, std::int32_t linePos = 0, std::int32_t filePos = 0)
        : TXmlMessage(std::move(origin), type, std::move(reason), std::move(srcText), line, linePos,
                      filePos) {}
    static IValidationIdentity IdentityOf(const TValidation* validation, const char* className);
    virtual const char* ClassName() const { return "TValidationMessage"; }
};

/// A finding about a guide of a lot.
class TLoteGuiasValidationMessage : public TValidationMessage,
                                    public TMessageShorthands<TLoteGuiasValidationMessage> {
  public:
    using TMessageShorthands<TLoteGuiasValidationMessage>::CreateError;
    using TMessageShorthands<TLoteGuiasValidationMessage>::CreateInfo;
    using TMessageShorthands<TLoteGuiasValidationMessage>::CreateSuccess;
    using TMessageShorthands<TLoteGuiasValidationMessage>::CreateWarn;

    TLoteGuiasValidationMessage(const TValidation* validation, TMessageType type, std::string numeroGuia,
                                std::string reason, std::string srcText = {}, std::int32_t line = 0,
                                std::int32_t linePos = 0, std::int32_t filePos = 0);

  protected:
    const char* ClassName() const override { return "TLoteGuiasValidationMessage"; }
};

/// A finding about a guide and a field of a monitoring file.
class TLoteGuiasMonitoramentoValidationMessage
    : public TValidationMessage,
      public TMessageShorthands<TLoteGuiasMonitoramentoValidationMessage> {
  public:
    using TMessageShorthands<TLoteGuiasMonitoramentoValidationMessage>::CreateError;
    using TMessageShorthands<TLoteGuiasMonitoramentoValidationMessage>::CreateInfo;
    using TMessageShorthands<TLoteGuiasMonitoramentoValidationMessage>::CreateWarn;

    /// `campo`: the field number in the regulator's layout, three digits.
    TLoteGuiasMonitoramentoValidationMessage(const TValidation* validation, TMessageType type,
                                             std::string campo, std::string numeroGuia, std::string reason,
                                             std::string srcText = {}, std::int32_t line = 0,
                                             std::int32_t linePos = 0, std::int32_t filePos = 0);

  protected:
    const char* ClassName() const override { return "TLoteGuiasMonitoramentoValidationMessage"; }
};

/// What tells a guide from the others of its file, for TXmlMessage::SetGuide: two may have the same number.
std::string GuideMark(const TXmlNode& guide);

/// The name of the rule that made a message; empty for a message that comes from no rule.
inline std::string RuleName(const TXmlMessage& message) {
    return message.Rule() != nullptr ? message.Rule()->Name : std::string();
}

/// The findings of a rule or of a run, in the order in which they were added; duplicates are allowed.
using TValidationMessages = std::vector<std::shared_ptr<const TValidationMessage>>;

/// There is one kind of each; callers depend on these names.
using IValidationMessage = TValidationMessage;
using IValidationMessages = TValidationMessages;

} // namespace conferix
