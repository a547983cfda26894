#include "validation/validation.h"

#include "validation/finding_item.h"
#include "xml/cut_text.h"
#include "xml/xml_node.h"

namespace conferix {

namespace {

void CollectIdentities(const TValidation& validation, bool recursive,
                       std::vector<IValidationIdentity>& found) {
    for (const auto& child : validation.Validations()) {
        found.push_back(child->Identity());
        if (recursive)
            CollectIdentities(*child, recursive, found);
    }
}

} // namespace

TFindingPlace::TFindingPlace(const TXmlNode* element) {
    if (element == nullptr)
        return;
    SrcText = CutText(element->Value(), kShownFound);
    const TXmlPlace place = element->Place();
    Line = place.Line;
    LinePos = place.LinePos;
    FilePos = place.FilePos;
}

std::vector<IValidationIdentity> TValidation::Validations(bool recursive) const {
    std::vector<IValidationIdentity> found;
    CollectIdentities(*this, recursive, found);
    return found;
}

void TValidation::CountSuccesses() {
    countsSuccesses_ = true;
    for (const auto& child : validations_)
        child->CountSuccesses();
}

void TValidation::Success(const TXmlNode* at, std::string_view text) {
    if (countsSuccesses_)
        ++countedSuccesses_;
    else
        Add(TMessageType::mtSuccess, std::string(text), at);
}

TValidationMessage& TValidation::Information(const TXmlNode* at, std::string text) {
    return Add(TMessageType::mtInformation, std::move(text), at);
}

TValidationMessage& TValidation::Warning(const TXmlNode* at, std::string text) {
    return Add(TMessageType::mtWarning, std::move(text), at);
}

TValidationMessage& TValidation::Error(const TXmlNode* at, std::string text) {
    return Add(TMessageType::mtError, std::move(text), at);
}

void TValidation::LimitFindings(std::size_t kept) {
    limit_ = kept;
    for (const auto& child : validations_)
        child->LimitFindings(kept);
}

void TValidation::AddMessage(std::shared_ptr<const TValidationMessage> message) {
    foundInVisit_ = true;
    const bool success = message->MsgType() == TMessageType::mtSuccess;
    if (success || RoomForFindings() > 0) {
        kept_ += success ? 0 : 1;
        messages_.push_back(std::move(message));
    } else {
        unkept_.Add(message->MsgType());
        if (unkeptGroups_ == nullptr)
            unkeptGroups_ = std::make_shared<TUnkeptGroups>();
        unkeptGroups_->Add(message);
        lastUnkept_ = std::move(message);
    }
}

void TValidation::AddUnkept(const std::shared_ptr<const TValidationMessage>& message,
                            const std::vector<TUnkeptPlace>& places, bool sameReason, bool sameCause) {
    foundInVisit_ = true;
    unkept_.Add(message->MsgType(), places.size());
    if (unkeptGroups_ == nullptr)
        unkeptGroups_ = std::make_shared<TUnkeptGroups>();
    TUnkeptGroup* group = unkeptGroups_->GroupOf(message);
    if (group == nullptr)
        return;
    for (const TUnkeptPlace& place : places)
        TUnkeptGroups::Count(*group, place.Guide, place.Line);
    group->SameReason = group->SameReason && sameReason && group->First->Reason() == message->Reason();
    group->SameCause = group->SameCause && sameCause && IsSameCause(*group->First, *message);
}

void TValidation::AddUntold(TMessageType type, std::size_t count) {
    foundInVisit_ = foundInVisit_ || count > 0;
    unkept_.Add(type, count);
}

TValidationMessage& TValidation::Add(TMessageType type, std::string text, const TXmlNode* at) {
    const std::shared_ptr<TValidationMessage> message = NewMessage(type, std::move(text), TFindingPlace(at));
    if (at != nullptr && type != TMessageType::mtSuccess)
        message->SetItem(FindingItem(*at));
    AddMessage(message);
    return *message;
}

std::shared_ptr<TValidationMessage> TValidation::NewMessage(TMessageType type, std::string text,
                                                            TFindingPlace place) const {
    return std::make_shared<TValidationMessage>(this, type, std::move(text), std::move(place.SrcText),
                                                place.Line, place.LinePos, place.FilePos);
}

} // namespace conferix
