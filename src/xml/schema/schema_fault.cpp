#include "xml/schema/schema_fault.h"

#include "xml/cut_text.h"
#include "xml/xml_document.h"
#include "xml/xml_node.h"

#include <algorithm>
#include <iterator>

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

TSchemaFault& TSchemaFaultList::Add(TSchemaFault fault) {
    if (latest_.size() > limit_) {
        if (latest_.front().FilePos < firstLeftOut_)
            earlier_.push_back(std::move(latest_.front()));
        else
            ++further_;
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
    further_ += earlier_.size() - limit_;
    earlier_.resize(limit_);
}

std::pair<std::vector<TSchemaFault>, std::size_t> TSchemaFaultList::Take() {
    std::move(latest_.begin(), latest_.end(), std::back_inserter(earlier_));
    latest_.clear();
    KeepFirst();
    return {std::move(earlier_), further_};
}

} // namespace conferix
