#pragma once

#include "xml/arena.h"
#include "xml/xml_node.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

struct TXmlMisreading;

/// A parsed XML text and its tree. The document keeps the text, from which values are read without a copy
/// and which the writer repeats wherever the tree was not changed. Used by one thread at a time.
class TXmlDocument : public std::enable_shared_from_this<TXmlDocument> {
  public:
    /// A document without nodes over a text in UTF-8; the parser fills it.
    explicit TXmlDocument(std::shared_ptr<const std::string> text);
    TXmlDocument(const TXmlDocument&) = delete;
    TXmlDocument& operator=(const TXmlDocument&) = delete;

    const TXmlNode& Root() const { return root_; } ///< the document node
    TXmlNode& Root() { return root_; }
    /// The document element.
    const TXmlNode* Element() const { return root_.FirstChildTag(); }
    TXmlNode* Element() { return root_.FirstChildTag(); }

    /// The text that was parsed, in UTF-8 without byte-order mark.
    std::string_view Text() const { return *text_; }
    const std::shared_ptr<const std::string>& SharedText() const { return text_; }

    /// Number of distinct names; their identifiers are below it.
    std::uint32_t NameCount() const { return static_cast<std::uint32_t>(names_.size()); }
    const TXmlName& NameOf(std::uint32_t id) const { return *names_[id]; }
    /// The record of a qualified name, made when it is new.
    const TXmlName* InternName(std::string_view qualified);

    /// A tag that is in no tree yet; its value is empty when `value` is.
    TXmlNode* NewTag(std::string_view qualifiedName, std::string_view value = {});

    /// How the text was misread, where that is known; null else.
    const TXmlMisreading* Misreading() const { return misreading_.get(); }
    void SetMisreading(const TXmlMisreading& misreading);

    /// True for a text of a few long lines, in which a line number tells nothing.
    bool HasLongLines() const;

    /// Byte offset of a place given as 1-based line and column in characters; a place beyond the end of a
    /// line answers that line's end.
    std::uint32_t OffsetOf(std::int64_t line, std::int64_t linePos) const;

    /// Place of a byte of the text, 0-based.
    TXmlPlace PlaceOf(std::size_t offset) const { return places_.PlaceOf(offset); }

    /// True once an edit has changed the tree.
    bool Changed() const { return changed_; }

  private:
    friend class TXmlNode;
    friend class TXmlTreeBuilder;
    friend class TXmlTreeMaker;
    friend class TXmlPlainReader;
    friend class TXmlTreeWriter;

    struct TSpan {
        std::uint32_t Start;
        std::uint32_t End;
    };

    std::shared_ptr<const std::string> text_;
    std::shared_ptr<const TXmlMisreading> misreading_;
    TArena arena_;
    std::vector<const TXmlName*> names_;     ///< by identifier
    std::vector<const TXmlName*> nameTable_; ///< open addressing, a power of two
    std::vector<TSpan> removed_;             ///< spans of the text whose nodes were taken out
    mutable TPlaceIndex places_;
    mutable std::vector<std::uint32_t> lineStarts_;
    mutable std::optional<bool> hasLongLines_;
    bool changed_ = false;
    TXmlNode root_;
};

} // namespace conferix
