// What both readers of XML make a tree with.
#pragma once

#include "xml/namespace_check.h"
#include "xml/xml_document.h"

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// A document that grows node by node in document order, below the tag that is open.
class TXmlTreeMaker {
  protected:
    struct TOpenNode {
        TXmlNode* Node;
        TXmlNode* LastChild;
    };

    explicit TXmlTreeMaker(std::shared_ptr<const std::string> text)
        : document_(std::make_shared<TXmlDocument>(std::move(text))) {
        open_.push_back({&document_->root_, nullptr});
    }

    /// Adds a node that spans bytes of the text, end excluded.
    TXmlNode* Append(TXmlNodeKind kind, std::uint32_t start, std::uint32_t end) {
        auto* node = document_->arena_.New<TXmlNode>();
        node->kind_ = kind;
        node->byteStart_ = start;
        node->byteEnd_ = end;
        node->name_ = document_->root_.name_;
        TOpenNode& parent = open_.back();
        node->parent_ = parent.Node;
        (parent.LastChild != nullptr ? parent.LastChild->nextSibling_ : parent.Node->firstChild_) = node;
        parent.LastChild = node;
        return node;
    }

    /// Keeps a tag with attributes, or an instruction, for the check of namespaces.
    void NoteSpecial(const TXmlNode* node) { special_.push_back(node); }
    std::shared_ptr<const TXmlMessage> NamespaceFault() const {
        return FindNamespaceFault(*document_, special_);
    }

    static void SetContent(TXmlNode* node, std::string_view content) { node->PointValue(content); }

    /// True where a text goes on that a comment, an instruction or a CDATA section interrupted.
    bool AfterInterruption() const {
        return open_.back().LastChild != nullptr && !open_.back().LastChild->IsTag();
    }

    /// Gives a tag whose text is interrupted by other nodes than tags its value.
    void JoinPieces(TXmlNode* node) {
        if (node->FirstChildTag() == nullptr)
            node->JoinPieces(document_->arena_);
    }

    std::shared_ptr<TXmlDocument> document_;
    std::vector<TOpenNode> open_; ///< the document node first

  private:
    std::vector<const TXmlNode*> special_;
};

} // namespace conferix
