// One value of a file that may be absent.
#pragma once

#include "xml/xml_node.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// View of an element with a value. Reads the tree at each call and keeps nothing but the node, through
/// which a correction may write.
class TXmlField {
  public:
    TXmlField() = default;
    explicit TXmlField(TXmlNode* node) : node_(node) {}

    /// The element, or null when the file does not have it.
    TXmlNode* Node() const { return node_; }
    /// Whether the element exists, with a value or without.
    bool Present() const { return node_ != nullptr; }

    /// The text exactly as it stands in the file; empty when absent.
    std::string_view Text() const { return ValueOf(node_); }
    /// The text as messages quote it, cut when it is very long.
    std::string Shown() const;
    /// The value of an xs:decimal; nothing when absent or no number.
    std::optional<double> Number() const;
    /// The value of an xs:integer; nothing when absent or no whole number of 64 bits.
    std::optional<std::int64_t> Integer() const;

    // Place of the start tag; 0 when absent.
    std::int32_t Line() const { return node_ != nullptr ? node_->Line() : 0; }       ///< 1-based
    std::int32_t LinePos() const { return node_ != nullptr ? node_->LinePos() : 0; } ///< 1-based
    std::int32_t FilePos() const { return node_ != nullptr ? node_->FilePos() : 0; } ///< 0-based

  private:
    TXmlNode* node_ = nullptr;
};

} // namespace conferix
