#pragma once

#include "model/arquivo_tiss_visitor.h"
#include "validation/identity.h"
#include "validation/validation_message.h"

#include <memory>
#include <string_view>
#include <vector>

namespace conferix {

/// Base of every rule and group of rules: a visitor of the loaded file that keeps the findings of its last
/// visit. Made with MakeValidation, so that the whole tree below it exists before any visit.
class TValidation : public IArquivoTissVisitor {
  public:
    TValidation() = default;
    ~TValidation() override = default;
    TValidation(const TValidation&) = delete;
    TValidation& operator=(const TValidation&) = delete;

    /// Called once, by MakeValidation: adds the children in the order that defines the tree. A group calls
    /// the inherited one first.
    virtual void CreateValidations() {}

    // A rule overrides the node kinds that it checks and stays silent about the others.
    void Visit(const IMensagemTiss&) override {}
    void Visit(const ILoteGuias&) override {}
    void Visit(const IGuiaConsulta&) override {}
    void Visit(const IGuiaSpSadt&) override {}
    void Visit(const IGuiaResumoInternacao&) override {}
    void Visit(const IGuiaHonorarios&) override {}
    void Visit(const IGuiaOdonto&) override {}
    void Visit(const IMonitoramento&) override {}
    void Visit(const IMonitoramentoQualidade&) override {}
    void Visit(const IGuiaMonitoramento&) override {}

    virtual bool Required() const { return false; }
    virtual std::string_view Name() const = 0;
    virtual std::string_view Description() const = 0;
    /// Name, description and flag as one shared record, made once a rule.
    const IValidationIdentity& Identity() const;

    const std::vector<std::shared_ptr<TValidation>>& Validations() const { return validations_; }
    /// Identities of the children in order; with `recursive`, of all descendants in pre-order.
    std::vector<IValidationIdentity> Validations(bool recursive) const;
    const TValidationMessages& ValidationMessages() const { return messages_; }
    /// True once the rule has met a node of its kind.
    bool Validated() const { return validated_; }

  protected:
    template<class T, class... Args>
    void AddValidation(Args&&... args);

    void ClearMessages() { messages_.clear(); }
    void MarkValidated() { validated_ = true; }
    /// What every visit begins with.
    void StartVisit() {
        ClearMessages();
        MarkValidated();
    }
    void AddMessage(std::shared_ptr<const TValidationMessage> message) {
        messages_.push_back(std::move(message));
    }
    void AddValidationMessages(const TValidationMessages& messages) {
        messages_.insert(messages_.end(), messages.begin(), messages.end());
    }
    /// Hands a node to every child in order and takes over what each found.
    template<class Node>
    void VisitChildren(const Node& node) {
        for (const auto& child : validations_) {
            node.Accept(*child);
            AddValidationMessages(child->ValidationMessages());
        }
    }

  private:
    TValidationMessages messages_;
    std::vector<std::shared_ptr<TValidation>> validations_;
    bool validated_ = false;
    mutable IValidationIdentity identity_;
};

/// There is one kind of rule; callers depend on this name.
using IValidation = TValidation;

/// Makes a rule with the whole tree below it.
template<class T, class... Args>
std::shared_ptr<T> MakeValidation(Args&&... args) {
    auto validation = std::make_shared<T>(std::forward<Args>(args)...);
    validation->CreateValidations();
    return validation;
}

template<class T, class... Args>
void TValidation::AddValidation(Args&&... args) {
    validations_.push_back(MakeValidation<T>(std::forward<Args>(args)...));
}

} // namespace conferix
