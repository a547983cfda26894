// The typed classes over the element tree: thin views that hold a node and read the tree when asked.
#pragma once

#include "xml/bindings/xml_field.h"

namespace conferix {

/// Binds an object to one element of a document, which has to outlive it. The element may be missing:
/// then every value reads as absent and every list as empty.
class TXmlBindingBase {
  public:
    TXmlBindingBase() = default;
    explicit TXmlBindingBase(TXmlNode* node) : node_(node) {}

    TXmlNode* Node() const { return node_; }
    bool HasNode() const { return node_ != nullptr; }

  private:
    TXmlNode* node_ = nullptr;
};

/// A binding that finds its values by paths of local names.
class TXmlBinding : public TXmlBindingBase {
  public:
    using TXmlBindingBase::TXmlBindingBase;

  protected:
    /// The node at a path ("a/b") below this one, or null; the empty path is this node.
    TXmlNode* Find(std::string_view path) const { return HasNode() ? Node()->Find(path) : nullptr; }
    /// The value at a path; absent for the empty path, which stands for "not in this version".
    TXmlField Field(std::string_view path) const { return TXmlField(path.empty() ? nullptr : Find(path)); }
};

} // namespace conferix
