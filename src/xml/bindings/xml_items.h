// Lists of equal elements.
#pragma once

#include "xml/xml_node.h"

#include <cstddef>
#include <iterator>
#include <string_view>
#include <tuple>

namespace conferix {

/// The children of an element that have one local name, in document order, each handed out as a view
/// made of the node and the tables of names that the view needs. Going through it is one walk.
template<class Item, class... Names>
class TXmlItems {
  public:
    class Iterator {
      public:
        using value_type = Item;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::input_iterator_tag;
        using pointer = void;
        using reference = Item;

        Iterator() = default;
        Iterator(TXmlNode* node, const TXmlItems& items)
            : node_(node), localName_(items.localName_), names_(items.names_) {
            SkipToItem();
        }
        Item operator*() const { return MakeItem(node_, names_); }
        Iterator& operator++() {
            node_ = node_->NextSiblingTag();
            SkipToItem();
            return *this;
        }
        Iterator operator++(int) {
            Iterator old = *this;
            ++*this;
            return old;
        }
        bool operator==(const Iterator& other) const { return node_ == other.node_; }

      private:
        void SkipToItem() {
            while (node_ != nullptr && node_->LocalName() != localName_)
                node_ = node_->NextSiblingTag();
        }

        TXmlNode* node_ = nullptr;
        std::string_view localName_;
        std::tuple<const Names*...> names_;
    };

    /// `parent` may be null, which gives an empty list.
    TXmlItems(TXmlNode* parent, std::string_view localName, const Names*... names)
        : parent_(parent), localName_(localName), names_(names...) {}

    Iterator begin() const {
        return {parent_ != nullptr && !localName_.empty() ? parent_->FirstChildTag() : nullptr, *this};
    }
    Iterator end() const { return {nullptr, *this}; }
    bool empty() const { return begin() == end(); }

    /// Number of items, counted anew at each call.
    std::int64_t Count() const { return std::distance(begin(), end()); }
    /// The item at a 0-based index; a view without node beyond the end.
    Item Get(std::int64_t index) const {
        for (Iterator item = begin(); item != end(); ++item)
            if (index-- == 0)
                return *item;
        return MakeItem(nullptr, names_);
    }

  private:
    static Item MakeItem(TXmlNode* node, const std::tuple<const Names*...>& names) {
        return std::apply([node](const Names*... each) { return Item(node, each...); }, names);
    }

    TXmlNode* parent_;
    std::string_view localName_;
    std::tuple<const Names*...> names_;
};

} // namespace conferix
