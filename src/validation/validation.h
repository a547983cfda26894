#pragma once

#include "model/arquivo_tiss_visitor.h"
#include "validation/finding_groups.h"
#include "validation/identity.h"
#include "validation/validation_message.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

class TXmlNode;

/// What a finding points at in the file.
struct TFindingPlace {
    TFindingPlace() = default;
    /// An element, and its value as messages show it; null for no place.
    explicit TFindingPlace(const TXmlNode* element);

    std::string SrcText;
    std::int32_t Line = 0;    ///< 1-based; 0: unknown
    std::int32_t LinePos = 0; ///< 1-based
    std::int32_t FilePos = 0; ///< 0-based, in characters
};

/// Where a finding is that no message was made of.
struct TUnkeptPlace {
    std::string Guide; ///< as TXmlMessage::Guide
    std::int32_t Line = 0;
};

/// How many findings of one rule a run keeps, over all its visits.
inline constexpr std::size_t kFindingsKeptOfRule = 10'000;
inline constexpr std::size_t kAllFindings = static_cast<std::size_t>(-1);

/// Base of every rule and group of rules: a visitor of the loaded file that keeps the findings of its last
/// visit, up to a limit of the whole run; what goes beyond is counted. Its name and its children come from
/// the table of rules, before any visit.
class TValidation : public IArquivoTissVisitor {
  public:
    TValidation() = default;
    ~TValidation() override = default;
    TValidation(const TValidation&) = delete;
    TValidation& operator=(const TValidation&) = delete;

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

    bool Required() const { return identity_->Required; }
    const std::string& Name() const { return identity_->Name; }
    const std::string& Description() const { return identity_->Description; }
    /// Name, description and flag as one record that all messages of the rule share; null before it is set.
    const IValidationIdentity& Identity() const { return identity_; }
    void SetIdentity(IValidationIdentity identity) { identity_ = std::move(identity); }

    const std::vector<std::shared_ptr<TValidation>>& Validations() const { return validations_; }
    /// Identities of the children in order; with `recursive`, of all descendants in pre-order.
    std::vector<IValidationIdentity> Validations(bool recursive) const;
    /// Adds a child after those that are there.
    void AddValidation(std::shared_ptr<TValidation> child) { validations_.push_back(std::move(child)); }

    const TValidationMessages& ValidationMessages() const { return messages_; }
    /// The findings of all visits that were not kept.
    const TMessageCounts& Unkept() const { return unkept_; }
    /// The same by cause; null without any.
    const std::shared_ptr<TUnkeptGroups>& UnkeptGroups() const { return unkeptGroups_; }
    /// Limits the findings kept of this rule and of each below it.
    void LimitFindings(std::size_t kept);
    /// Has this rule and those below it only count what they find right: for runs of which nobody reads that.
    void CountSuccesses();
    /// How often something was found right and only counted, over all visits.
    std::size_t CountedSuccesses() const { return countedSuccesses_; }
    /// True once the rule has met a node of its kind.
    bool Validated() const { return validated_; }

  protected:
    void ClearMessages() {
        messages_.clear();
        foundInVisit_ = false;
    }
    void MarkValidated() { validated_ = true; }
    /// What every visit begins with.
    void StartVisit() {
        ClearMessages();
        MarkValidated();
    }

    /// Tells that something is right. `at`: the element that it is about; null for none.
    void Success(const TXmlNode* at, std::string_view text);
    // Each adds a finding, which takes corrections until the visit ends.
    TValidationMessage& Information(const TXmlNode* at, std::string text);
    TValidationMessage& Warning(const TXmlNode* at, std::string text);
    TValidationMessage& Error(const TXmlNode* at, std::string text);
    void AddMessage(std::shared_ptr<const TValidationMessage> message);
    /// Counts findings of one cause that no message was made of but this one: where each of them is, the
    /// message's own first.
    void AddUnkept(const std::shared_ptr<const TValidationMessage>& message,
                   const std::vector<TUnkeptPlace>& places, bool sameReason, bool sameCause);
    /// Counts findings of which nothing more is told.
    void AddUntold(TMessageType type, std::size_t count);
    /// True as long as the visit has added nothing, be it kept or not.
    bool FoundNothing() const { return !foundInVisit_; }
    /// How many findings would still be kept.
    std::size_t RoomForFindings() const { return limit_ - kept_; }

    /// The message that a finding of this rule becomes: families of rules say more of where it was.
    virtual std::shared_ptr<TValidationMessage> NewMessage(TMessageType type, std::string text,
                                                           TFindingPlace place) const;

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
    TValidationMessage& Add(TMessageType type, std::string text, const TXmlNode* at);

    TValidationMessages messages_;
    std::size_t limit_ = kFindingsKeptOfRule;
    std::size_t kept_ = 0; ///< of all visits, successes not counted
    TMessageCounts unkept_;
    std::shared_ptr<TUnkeptGroups> unkeptGroups_;
    /// The last one, which its rule may still give corrections.
    std::shared_ptr<const TValidationMessage> lastUnkept_;
    bool foundInVisit_ = false;
    std::vector<std::shared_ptr<TValidation>> validations_;
    bool validated_ = false;
    bool countsSuccesses_ = false;
    std::size_t countedSuccesses_ = 0;
    IValidationIdentity identity_;
};

/// How often a rule found something right that was not kept as a message.
struct TCountedSuccesses {
    IValidationIdentity Rule;
    std::size_t Count = 0;
};

/// There is one kind of rule; callers depend on this name.
using IValidation = TValidation;

} // namespace conferix
