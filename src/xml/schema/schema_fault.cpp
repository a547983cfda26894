#include "xml/schema/schema_fault.h"

#include "xml/cut_text.h"
#include "xml/xml_document.h"
#include "xml/xml_node.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>

namespace conferix {

std::string TSchemaFault::SrcText() const {
    if (!Found.empty())
        return CutText(TrimXmlSpace(Found));
    if (Node == nullptr || Node->ByteEnd() == 0)
        return Node != nullptr ? "<" + std::string(Node->QualifiedName()) + ">" : std::string();
    const std::string_view text = Node->Document().Text();
    const std::string_view piece = text.substr(Node->ByteStart(), Node->ByteEnd() - Node->ByteStart());
    // The start tag of an element with content says enough.
    const bool leaf = Node->FirstChild() == nullptr;
    return CutText(TrimXmlSpace(leaf ? piece : piece.substr(0, piece.find('>') + 1)));
}

std::uint64_t TSchemaFault::GroupKey() const {
    // A code stands for itself, wherever it is; a list of what is missing is the fault itself.
    const bool byValue = Code == TSchemaFaultCode::NotInList || Code == TSchemaFaultCode::UndeclaredPrefix;
    const bool byList = Code == TSchemaFaultCode::MissingSeveral || Code == TSchemaFaultCode::MissingChoice ||
                        Code == TSchemaFaultCode::WrongSequence;
    std::string key = std::to_string(static_cast<int>(Code));
    for (const std::string_view part :
         {std::string_view(Name), Type != nullptr ? std::string_view{} : std::string_view(Parent),
          Code == TSchemaFaultCode::SpaceAround ? std::string_view{} : std::string_view(Bound),
          byValue ? std::string_view(Found) : std::string_view{}})
        key.append(1, '\n').append(part);
    if (byList)
        for (const std::string& name : Expected)
            key.append(1, '\n').append(name);
    return std::hash<std::string>()(key) | 1U;
}

TSchemaFault& TSchemaFaultList::Add(TSchemaFault fault) {
    if (latest_.size() > limit_) {
        if (latest_.front().FilePos < firstLeftOut_)
            earlier_.push_back(std::move(latest_.front()));
        else
            LeaveOut(std::move(latest_.front()));
        latest_.pop_front();
        if (earlier_.size() / 2 > limit_)
            KeepFirst();
    }
    return latest_.emplace_back(std::move(fault));
}

void TSchemaFaultList::KeepFirst() {
    const auto before = [](const TSchemaFault& left, const TSchemaFault& right) {
        return left.FilePos < right.FilePos;
    };
    if (!std::is_sorted(earlier_.begin(), earlier_.end(), before))
        std::stable_sort(earlier_.begin(), earlier_.end(), before);
    if (earlier_.size() <= limit_)
        return;
    firstLeftOut_ = earlier_[limit_].FilePos;
    for (std::size_t i = limit_; i < earlier_.size(); ++i)
        LeaveOut(std::move(earlier_[i]));
    earlier_.resize(limit_);
}

void TSchemaFaultList::LeaveOut(TSchemaFault fault) {
    const std::uint64_t cause = fault.GroupKey();
    // A schema has only so many elements that can be missing.
    if (further_.size() >= kCausesTold && fault.Code != TSchemaFaultCode::MissingElement &&
        !further_.contains(cause)) {
        untold_.push_back({fault.Node, fault.Code});
        return;
    }
    const auto [entry, added] = further_.try_emplace(cause);
    TSchemaFurther& further = entry->second;
    further.Nodes.push_back(fault.Node);
    if (!added) {
        further.SameValue = further.SameValue && fault.Found == further.First.Found;
        further.SamePlace = further.SamePlace && fault.Before == further.First.Before;
        if (fault.FilePos >= further.First.FilePos)
            return;
    }
    further.First = std::move(fault);
}

TSchemaVerdict TSchemaFaultList::Take() {
    std::move(latest_.begin(), latest_.end(), std::back_inserter(earlier_));
    latest_.clear();
    KeepFirst();
    std::vector<TSchemaFurther> further;
    for (auto& [key, faults] : further_)
        further.push_back(std::move(faults));
    return {std::move(earlier_), std::move(further), std::move(untold_)};
}

} // namespace conferix
