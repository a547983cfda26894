#include "xml/xml_node.h"

#include "xml/text_scan.h"
#include "xml/xml_document.h"

#include <algorithm>

namespace conferix {

namespace {

template<class Node>
Node* FindChild(Node* parent, std::string_view localName) {
    for (Node* child = parent->FirstChildTag(); child != nullptr; child = child->NextSiblingTag())
        if (child->LocalName() == localName)
            return child;
    return nullptr;
}

bool IsFirstStep(std::string_view path, std::string_view name) {
    return name.size() <= path.size() && (name.size() == path.size() || path[name.size()] == '/') &&
           EqualBytes(name.data(), path.data(), name.size());
}

template<class Node>
Node* FindPath(Node* node, std::string_view path) {
    while (node != nullptr && !path.empty()) {
        node = node->FirstChildTag();
        while (node != nullptr && !IsFirstStep(path, node->LocalName()))
            node = node->NextSiblingTag();
        if (node != nullptr)
            path.remove_prefix(std::min(node->LocalName().size() + 1, path.size()));
    }
    return node;
}

template<class Node>
Node* NextInPreOrder(Node* node, const TXmlNode* root) {
    if (node->FirstChild() != nullptr)
        return node->FirstChild();
    while (node != root) {
        if (node->NextSibling() != nullptr)
            return node->NextSibling();
        node = node->Parent();
        if (node == nullptr)
            return nullptr;
    }
    return nullptr;
}

template<class Node>
std::vector<Node*> CollectDescendants(Node* start, std::string_view localName) {
    std::vector<Node*> found;
    for (Node* node = start->NextInWalk(start); node != nullptr; node = node->NextInWalk(start))
        if (node->IsTag() && node->LocalName() == localName)
            found.push_back(node);
    return found;
}

bool IsCharacterData(TXmlNodeKind kind) {
    return kind == TXmlNodeKind::xnText || kind == TXmlNodeKind::xnCData;
}

} // namespace

const TXmlAttribute* TXmlNode::Attribute(std::string_view qualifiedName) const {
    return FindAttribute(qualifiedName);
}

TXmlAttribute* TXmlNode::FindAttribute(std::string_view qualifiedName) const {
    if (!IsTag())
        return nullptr;
    for (TXmlAttribute* attribute = FirstAttribute(); attribute != nullptr; attribute = attribute->next_)
        if (attribute->QualifiedName() == qualifiedName)
            return attribute;
    return nullptr;
}

TXmlPlace TXmlNode::Place() const {
    if (kind_ == TXmlNodeKind::xnDocument || (flags_ & kNew) != 0)
        return {};
    return Document().PlaceOf(byteStart_);
}

TXmlPlace TXmlNode::TextPlace() const {
    if (kind_ == TXmlNodeKind::xnDocument || (flags_ & kNew) != 0)
        return {};
    const TXmlDocument& document = Document();
    const std::string_view text = document.Text();
    std::uint32_t at = IsTag() ? ContentStart(text) : byteStart_;
    while (at < byteEnd_ && IsXmlSpace(text[at]))
        ++at;
    return document.PlaceOf(at);
}

std::uint32_t TXmlNode::ContentStart(std::string_view text) const {
    if (!IsTag())
        return kind_ == TXmlNodeKind::xnDocument ? 0 : byteEnd_;
    char quote = 0;
    for (std::uint32_t at = byteStart_; at < byteEnd_; ++at) {
        const char c = text[at];
        if (quote != 0) {
            if (c == quote)
                quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return at + 1;
        }
    }
    return byteEnd_;
}

const TXmlNode* TXmlNode::Child(std::string_view localName) const {
    return FindChild(this, localName);
}
TXmlNode* TXmlNode::Child(std::string_view localName) {
    return FindChild(this, localName);
}
const TXmlNode* TXmlNode::Find(std::string_view path) const {
    return FindPath(this, path);
}
TXmlNode* TXmlNode::Find(std::string_view path) {
    return FindPath(this, path);
}

const TXmlNode* TXmlNode::FirstDescendant(std::string_view localName) const {
    for (const TXmlNode* node = NextInWalk(this); node != nullptr; node = node->NextInWalk(this))
        if (node->IsTag() && node->LocalName() == localName)
            return node;
    return nullptr;
}

std::vector<const TXmlNode*> TXmlNode::Descendants(std::string_view localName) const {
    return CollectDescendants(this, localName);
}
std::vector<TXmlNode*> TXmlNode::Descendants(std::string_view localName) {
    return CollectDescendants(this, localName);
}

const TXmlNode* TXmlNode::NextInWalk(const TXmlNode* root) const {
    return NextInPreOrder(this, root);
}
TXmlNode* TXmlNode::NextInWalk(const TXmlNode* root) {
    return NextInPreOrder(this, root);
}

std::string TXmlNode::TextWithCData() const {
    if (firstChild_ == nullptr)
        return std::string(Value());
    std::string text;
    for (const TXmlNode& child : Children())
        if (IsCharacterData(child.kind_))
            text += child.Value();
    return text;
}

const TXmlDocument& TXmlNode::Document() const {
    return const_cast<TXmlNode*>(this)->Document();
}

TXmlDocument& TXmlNode::Document() {
    TXmlNode* top = this;
    while (top->parent_ != nullptr)
        top = top->parent_;
    return *top->document_;
}

TXmlAttribute** TXmlNode::AttributesOf(TArena& arena) {
    if (!HasExtra()) {
        extra_ = arena.New<TExtra>(TExtra{.Value = value_});
        flags_ |= kExtra;
    }
    return &extra_->Attributes;
}

void TXmlNode::PointValue(std::string_view value) {
    (HasExtra() ? extra_->Value : value_) = value.data();
    valueLength_ = static_cast<std::uint32_t>(value.size());
}

void TXmlNode::KeepValue(std::string_view value) {
    TXmlDocument& document = Document();
    PointValue(document.arena_.Copy(value));
    flags_ |= kValueChanged;
    document.changed_ = true;
}

TXmlNode& TXmlNode::TextPiece() {
    TXmlNode* found = nullptr;
    for (TXmlNode* child = firstChild_; child != nullptr; child = child->nextSibling_) {
        if (child->kind_ != TXmlNodeKind::xnText)
            continue;
        if (!TrimXmlSpace(child->Value()).empty())
            return *child;
        if (found == nullptr)
            found = child;
    }
    if (found != nullptr)
        return *found;
    auto* added = Document().arena_.New<TXmlNode>();
    added->kind_ = TXmlNodeKind::xnText;
    added->flags_ = kNew;
    added->name_ = Document().root_.name_;
    added->parent_ = this;
    added->nextSibling_ = firstChild_;
    firstChild_ = added;
    return *added;
}

void TXmlNode::SetValue(std::string_view value) {
    if (kind_ == TXmlNodeKind::xnText) {
        KeepValue(value);
        if (parent_->FirstChildTag() == nullptr)
            parent_->JoinPieces(Document().arena_);
        return;
    }
    if (!IsTag() || FirstChildTag() != nullptr)
        return;
    if (firstChild_ == nullptr) {
        KeepValue(value);
        return;
    }
    TXmlNode& place = TextPiece();
    for (TXmlNode* child = firstChild_; child != nullptr; child = child->nextSibling_)
        if (child->kind_ == TXmlNodeKind::xnText)
            child->KeepValue(child == &place ? value : std::string_view{});
    JoinPieces(Document().arena_);
}

void TXmlNode::JoinPieces(TArena& arena) {
    std::string joined;
    for (const TXmlNode& child : Children())
        if (child.kind_ == TXmlNodeKind::xnText)
            joined += child.Value();
    const std::string_view kept = arena.Copy(joined);
    PointValue(TrimXmlSpace(kept).empty() ? std::string_view() : kept);
}

void TXmlNode::SetPrefix(std::string_view prefix) {
    std::string qualified(prefix);
    if (!qualified.empty())
        qualified += ':';
    qualified += LocalName();
    SetName(qualified);
}

void TXmlNode::SetName(std::string_view qualifiedName) {
    if (!IsTag() || QualifiedName() == qualifiedName)
        return;
    TXmlDocument& document = Document();
    name_ = document.InternName(qualifiedName);
    flags_ |= kNameChanged;
    document.changed_ = true;
}

void TXmlNode::SetAttribute(std::string_view qualifiedName, std::string_view value) {
    if (!IsTag())
        return;
    TXmlDocument& document = Document();
    TXmlAttribute* attribute = FindAttribute(qualifiedName);
    if (attribute == nullptr) {
        TXmlAttribute** link = AttributesOf(document.arena_);
        while (*link != nullptr)
            link = &(*link)->next_;
        attribute = *link = document.arena_.New<TXmlAttribute>();
        attribute->name_ = document.InternName(qualifiedName);
    } else if (attribute->value_ == value) {
        return;
    }
    attribute->value_ = document.arena_.Copy(value);
    attribute->valueChanged_ = true;
    flags_ |= kAttributesChanged;
    document.changed_ = true;
}

void TXmlNode::RenameAttribute(std::string_view qualifiedName, std::string_view newName) {
    TXmlAttribute* attribute = FindAttribute(qualifiedName);
    if (attribute == nullptr || FindAttribute(newName) != nullptr)
        return;
    TXmlDocument& document = Document();
    attribute->name_ = document.InternName(newName);
    attribute->nameChanged_ = true;
    flags_ |= kAttributesChanged;
    document.changed_ = true;
}

void TXmlNode::RemoveAttribute(std::string_view qualifiedName) {
    if (!IsTag() || !HasExtra())
        return;
    for (TXmlAttribute** link = &extra_->Attributes; *link != nullptr; link = &(*link)->next_) {
        if ((*link)->QualifiedName() != qualifiedName)
            continue;
        *link = (*link)->next_;
        flags_ |= kAttributesChanged;
        Document().changed_ = true;
        return;
    }
}

void TXmlNode::InsertChild(TXmlNode& child, TXmlNode* before) {
    TXmlNode** link = &firstChild_;
    while (*link != nullptr && *link != before)
        link = &(*link)->nextSibling_;
    child.parent_ = this;
    child.flags_ &= static_cast<std::uint16_t>(~kOutside);
    child.nextSibling_ = *link;
    *link = &child;
    if ((child.flags_ & kNew) == 0)
        child.flags_ |= kMoved;
    if (child.IsTag() && kind_ != TXmlNodeKind::xnDocument)
        PointValue({});
    flags_ |= kChildInserted;
    Document().changed_ = true;
}

void TXmlNode::Remove() {
    if (Parent() == nullptr)
        return;
    TXmlDocument& document = Document();
    TXmlNode** link = &parent_->firstChild_;
    while (*link != this)
        link = &(*link)->nextSibling_;
    *link = nextSibling_;
    if ((flags_ & kNew) == 0)
        document.removed_.push_back({byteStart_, byteEnd_});
    parent_->flags_ |= kChildRemoved;
    nextSibling_ = nullptr;
    document.changed_ = true;
    flags_ |= kOutside;
}

std::string_view NamespaceOf(const TXmlNode& tag) {
    const std::string declaration = tag.Prefix().empty() ? "xmlns" : "xmlns:" + std::string(tag.Prefix());
    for (const TXmlNode* at = &tag; at != nullptr; at = at->Parent())
        if (const TXmlAttribute* found = at->IsTag() ? at->Attribute(declaration) : nullptr)
            return found->Value();
    return {};
}

} // namespace conferix
