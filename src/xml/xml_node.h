#pragma once

#include "xml/xml_position.h"

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

class TArena;
class TXmlDocument;
class TXmlNode;

/// The kinds of node that a document tree holds.
enum class TXmlNodeKind : std::uint8_t {
    xnDocument,
    xnTag,
    xnText, ///< text beside other nodes; the text of a plain element is the element's value instead
    xnComment,
    xnCData,
    xnDeclaration,
    xnInstruction
};

/// A name as written and its two parts; one record a distinct name and document, so that equal names
/// of one document have equal addresses and dense identifiers (0-based).
struct TXmlName {
    std::string_view Qualified;
    std::string_view Prefix; ///< the part before the first ":", empty without one
    std::string_view Local;  ///< the part after the first ":", or the whole name
    std::uint32_t Id = 0;
};

/// An attribute of a tag (namespace declarations included), in document order.
class TXmlAttribute {
  public:
    const TXmlName& Name() const { return *name_; }
    std::string_view QualifiedName() const { return name_->Qualified; }
    /// The value with references replaced and white space normalised as XML demands.
    std::string_view Value() const { return value_; }
    const TXmlAttribute* Next() const { return next_; }

  private:
    friend class TXmlNode;
    friend class TXmlDocument;
    friend class TXmlTreeBuilder;
    friend class TXmlTreeMaker;
    friend class TXmlPlainReader;
    friend class TXmlTreeWriter;

    const TXmlName* name_ = nullptr;
    std::string_view value_;
    TXmlAttribute* next_ = nullptr;
    std::int32_t sourceIndex_ =
        -1; ///< place among the attributes of the source's start tag, -1 when added later
    bool nameChanged_ = false;
    bool valueChanged_ = false;
};

/// Forward range over a linked list of nodes or attributes.
template<class T>
class TXmlRange {
  public:
    class Iterator {
      public:
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::forward_iterator_tag;
        using pointer = T*;
        using reference = T&;

        Iterator() = default;
        Iterator(T* item, T* (*next)(T*)) : item_(item), next_(next) {}
        T& operator*() const { return *item_; }
        T* operator->() const { return item_; }
        Iterator& operator++() {
            item_ = next_(item_);
            return *this;
        }
        Iterator operator++(int) {
            Iterator old = *this;
            ++*this;
            return old;
        }
        bool operator==(const Iterator& other) const { return item_ == other.item_; }

      private:
        T* item_ = nullptr;
        T* (*next_)(T*) = nullptr;
    };

    TXmlRange(T* first, T* (*next)(T*)) : first_(first), next_(next) {}
    Iterator begin() const { return {first_, next_}; }
    Iterator end() const { return {nullptr, next_}; }
    bool empty() const { return first_ == nullptr; }

  private:
    T* first_;
    T* (*next_)(T*);
};

class TXmlNode;
/// The namespace of a tag, by the declarations on it and around it; empty for none.
std::string_view NamespaceOf(const TXmlNode& tag);

/// One node of the tree. Nodes belong to their document and live as long as it does; a removed node stays
/// valid but is no longer reached. Positions speak of the text that was parsed, also after edits.
///
/// Value: only a tag without child tags has one, made of its plain text (CDATA sections left out);
/// `HasValue` is false for an empty element. Comments, CDATA sections, texts, declarations and
/// instructions answer their content.
class TXmlNode {
  public:
    TXmlNodeKind Kind() const { return kind_; }
    bool IsTag() const { return kind_ == TXmlNodeKind::xnTag; }

    /// The name of a tag, or the target of an instruction; empty for the other kinds.
    const TXmlName& Name() const { return *name_; }
    std::string_view QualifiedName() const { return name_->Qualified; }
    std::string_view LocalName() const { return name_->Local; }
    std::string_view Prefix() const { return name_->Prefix; }

    bool HasValue() const { return valueLength_ != 0; }
    std::string_view Value() const { return {HasExtra() ? extra_->Value : value_, valueLength_}; }
    /// Text of a tag as a schema sees it: value, text nodes and CDATA sections joined.
    std::string TextWithCData() const;

    /// Where the node begins; no line for the document and for a new node. Found out when asked, since few
    /// nodes of a file are.
    TXmlPlace Place() const;
    std::int32_t Line() const { return Place().Line; }       ///< 1-based; 0 for none
    std::int32_t LinePos() const { return Place().LinePos; } ///< 1-based, in characters
    std::int32_t FilePos() const { return Place().FilePos; } ///< 0-based, in characters
    /// Where the text of a text node or of a tag's value begins, white space before it passed over.
    TXmlPlace TextPlace() const;
    /// Span of the node in the UTF-8 text of the document, 0-based, end excluded; both 0 for a new node.
    std::uint32_t ByteStart() const { return byteStart_; }
    std::uint32_t ByteEnd() const { return byteEnd_; }

    const TXmlNode* Parent() const { return IsOutside() ? nullptr : parent_; }
    TXmlNode* Parent() { return IsOutside() ? nullptr : parent_; }
    const TXmlNode* FirstChild() const { return firstChild_; }
    TXmlNode* FirstChild() { return firstChild_; }
    const TXmlNode* NextSibling() const { return nextSibling_; }
    TXmlNode* NextSibling() { return nextSibling_; }
    /// First child or following sibling that is a tag; null when there is none.
    const TXmlNode* FirstChildTag() const { return SkipToTag(firstChild_); }
    TXmlNode* FirstChildTag() { return SkipToTag(firstChild_); }
    const TXmlNode* NextSiblingTag() const { return SkipToTag(nextSibling_); }
    TXmlNode* NextSiblingTag() { return SkipToTag(nextSibling_); }

    TXmlRange<const TXmlNode> Children() const {
        return {firstChild_, [](const TXmlNode* node) -> const TXmlNode* { return node->nextSibling_; }};
    }
    TXmlRange<const TXmlNode> ChildTags() const {
        return {FirstChildTag(), [](const TXmlNode* node) { return node->NextSiblingTag(); }};
    }
    TXmlRange<TXmlNode> ChildTags() {
        return {FirstChildTag(), [](TXmlNode* node) { return node->NextSiblingTag(); }};
    }
    TXmlRange<const TXmlAttribute> Attributes() const {
        return {FirstAttribute(), [](const TXmlAttribute* attribute) { return attribute->Next(); }};
    }
    /// The attribute of that qualified name, or null.
    const TXmlAttribute* Attribute(std::string_view qualifiedName) const;

    /// First child tag of that local name, or null.
    const TXmlNode* Child(std::string_view localName) const;
    TXmlNode* Child(std::string_view localName);
    /// Follows local names separated by "/" from child to child, the first match at each step; null when
    /// a step finds nothing.
    const TXmlNode* Find(std::string_view path) const;
    TXmlNode* Find(std::string_view path);
    /// First tag below this node, in document order, of that local name; null when there is none.
    const TXmlNode* FirstDescendant(std::string_view localName) const;
    /// Every tag below this node of that local name, in document order.
    std::vector<const TXmlNode*> Descendants(std::string_view localName) const;
    std::vector<TXmlNode*> Descendants(std::string_view localName);

    /// Next node of a pre-order walk that does not leave `root`; null at its end. Never recurses.
    const TXmlNode* NextInWalk(const TXmlNode* root) const;
    TXmlNode* NextInWalk(const TXmlNode* root);

    const TXmlDocument& Document() const;
    TXmlDocument& Document();

    /// Sets the value of a tag that has no child tags; comments, instructions and CDATA sections in it stay
    /// where they are, and the value goes to where its first piece stood. Of a text node, sets that piece of
    /// its tag's value.
    void SetValue(std::string_view value);
    void SetPrefix(std::string_view prefix);
    /// Gives a tag another qualified name; its content and place stay.
    void SetName(std::string_view qualifiedName);
    /// Changes the attribute of that qualified name, or adds it after the last one.
    void SetAttribute(std::string_view qualifiedName, std::string_view value);
    /// Gives an attribute another name; nothing happens when there is none, or when the new name is taken.
    void RenameAttribute(std::string_view qualifiedName, std::string_view newName);
    void RemoveAttribute(std::string_view qualifiedName);
    /// Adds a node of this node's document that is in no tree before `before` (null: at the end): a new one,
    /// or one that was removed, which takes its content and its layout along.
    void InsertChild(TXmlNode& child, TXmlNode* before);
    /// Takes this node (not the document) out of the tree.
    void Remove();

  private:
    friend class TXmlDocument;
    friend class TXmlTreeBuilder;
    friend class TXmlTreeMaker;
    friend class TXmlPlainReader;
    friend class TXmlTreeWriter;

    enum Flag : std::uint16_t {
        kNew = 1, ///< not in the parsed text
        kValueChanged = 2,
        kNameChanged = 4,
        kAttributesChanged = 8,
        kChildInserted = 16,
        kMoved = 32, ///< of the parsed text, but in another place of the tree
        kChildRemoved = 64,
        kOutside = 128, ///< in no tree; the parent only leads to the document
        kExtra = 256,   ///< a tag that has attributes, or had them
    };
    /// What few nodes have, so that the others need no room for it.
    struct TExtra {
        const char* Value;
        TXmlAttribute* Attributes = nullptr;
    };
    bool HasExtra() const { return (flags_ & kExtra) != 0; }
    TXmlAttribute* FirstAttribute() const { return HasExtra() ? extra_->Attributes : nullptr; }
    /// Where the attributes of a tag begin, to be changed.
    TXmlAttribute** AttributesOf(TArena& arena);
    /// Lets the value be a text that lives as long as the document.
    void PointValue(std::string_view value);
    bool IsOutside() const { return (flags_ & kOutside) != 0; }
    /// First byte after the start tag of a tag of the text; the end of any other node, 0 of the document.
    std::uint32_t ContentStart(std::string_view text) const;

    template<class Node>
    static Node* SkipToTag(Node* node) {
        while (node != nullptr && node->kind_ != TXmlNodeKind::xnTag)
            node = node->nextSibling_;
        return node;
    }
    TXmlAttribute* FindAttribute(std::string_view qualifiedName) const;
    void KeepValue(std::string_view value);
    /// The text node that takes the value of a tag whose text is interrupted by other nodes.
    TXmlNode& TextPiece();
    /// Makes the value of such a tag from its text nodes.
    void JoinPieces(TArena& arena);

    TXmlNode* parent_ = nullptr;
    TXmlNode* firstChild_ = nullptr;
    TXmlNode* nextSibling_ = nullptr;
    const TXmlName* name_ = nullptr;
    union {
        const char* value_ = nullptr;
        TExtra* extra_;          ///< with kExtra
        TXmlDocument* document_; ///< of the document node, which has no value
    };
    std::uint32_t valueLength_ = 0;
    std::uint32_t byteStart_ = 0;
    std::uint32_t byteEnd_ = 0;
    TXmlNodeKind kind_ = TXmlNodeKind::xnTag;
    std::uint16_t flags_ = 0;
};
static_assert(sizeof(TXmlNode) <= 56, "a large file has a million of them");

/// Text of a node that may be absent; empty for null and for a node without value.
inline std::string_view ValueOf(const TXmlNode* node) {
    return node != nullptr ? node->Value() : std::string_view{};
}

/// True for the four characters that XML calls white space.
constexpr bool IsXmlSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// The text without XML white space at its ends.
constexpr std::string_view TrimXmlSpace(std::string_view text) {
    while (!text.empty() && IsXmlSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsXmlSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace conferix
