#include "xml/xml_writer.h"

#include <algorithm>
#include <vector>

namespace conferix {

namespace {

void AppendEscaped(std::string& out, std::string_view text, bool attribute) {
    for (const char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '\r':
            out += "&#13;";
            break;
        case '"':
            out += attribute ? "&quot;" : "\"";
            break;
        case '\n':
            out += attribute ? "&#10;" : "\n";
            break;
        case '\t':
            out += attribute ? "&#9;" : "\t";
            break;
        default:
            out += c;
        }
    }
}

/// An attribute as the source wrote it, with the white space before it. Offsets into the text.
struct TSourceAttribute {
    std::size_t Start = 0; ///< the white space
    std::size_t NameStart = 0;
    std::size_t NameEnd = 0;
    std::size_t ValueStart = 0; ///< the opening quote
    std::size_t End = 0;
};

/// Reads the attributes of a start tag that is known to be well formed.
std::vector<TSourceAttribute> ScanAttributes(std::string_view text, std::size_t nameEnd, std::size_t tagEnd) {
    std::vector<TSourceAttribute> found;
    std::size_t at = nameEnd;
    while (at < tagEnd) {
        TSourceAttribute attribute;
        attribute.Start = at;
        while (at < tagEnd && IsXmlSpace(text[at]))
            ++at;
        if (at >= tagEnd || text[at] == '/' || text[at] == '>')
            break;
        attribute.NameStart = at;
        while (text[at] != '=' && !IsXmlSpace(text[at]))
            ++at;
        attribute.NameEnd = at;
        at = text.find_first_of("\"'", at);
        attribute.ValueStart = at;
        at = text.find(text[at], at + 1) + 1;
        attribute.End = at;
        found.push_back(attribute);
    }
    return found;
}

} // namespace

std::string EscapeXml(std::string_view text, bool attribute) {
    std::string out;
    AppendEscaped(out, text, attribute);
    return out;
}

/// The white space at the end of a layout that indents what follows.
std::string_view IndentOf(std::string_view layout) {
    const std::size_t line = layout.rfind('\n');
    return line == std::string_view::npos ? std::string_view{} : layout.substr(line + 1);
}

/// Another indentation for the lines of a piece of the text.
struct TIndentChange {
    std::string From;
    std::string To;

    bool Changes() const { return From != To; }
};

/// Walks the tree beside the parsed text: `copied_` is the place in the text up to which everything has
/// been written or left out. A moved node is written from its own place in the text, after which the walk
/// goes on where it was.
class TXmlTreeWriter {
  public:
    explicit TXmlTreeWriter(const TXmlDocument& document)
        : document_(document), text_(document.Text()), removed_(document.removed_) {
        std::sort(removed_.begin(), removed_.end(), [](const auto& a, const auto& b) {
            return a.Start != b.Start ? a.Start < b.Start : a.End > b.End;
        });
    }

    std::string Write() {
        if (!document_.Changed())
            return std::string(text_);
        out_.reserve(text_.size() + text_.size() / 16);
        const TXmlNode* root = &document_.Root();
        const TXmlNode* node = root->FirstChild();
        while (node != nullptr) {
            Open(*node);
            if (node->FirstChild() != nullptr) {
                node = node->FirstChild();
                continue;
            }
            Close(*node);
            while (node->NextSibling() == nullptr && node->Parent() != root) {
                node = node->Parent();
                Close(*node);
            }
            node = node->NextSibling();
        }
        CopyTo(text_.size());
        return std::move(out_);
    }

  private:
    struct TMove {
        const TXmlNode* Node;
        std::size_t Resume; ///< where the walk was in the text
        TIndentChange Indent;
    };

    static bool IsNew(const TXmlNode& node) { return (node.flags_ & TXmlNode::kNew) != 0; }
    static bool IsMoved(const TXmlNode& node) { return (node.flags_ & TXmlNode::kMoved) != 0; }
    /// True for a node that stands where the text has it.
    static bool IsInPlace(const TXmlNode& node) { return !IsNew(node) && !IsMoved(node); }

    /// Copies the text up to `end`, leaving out what removed nodes covered and the layout before them.
    void CopyTo(std::size_t end) {
        auto span = std::lower_bound(
            removed_.begin(), removed_.end(), copied_,
            [](const TXmlDocument::TSpan& removed, std::size_t start) { return removed.Start < start; });
        for (; span != removed_.end() && span->Start < end; ++span) {
            // Inside a larger removed piece, around the end, or what is being written where it was moved.
            if (span->Start < copied_ || span->End > end ||
                (!moves_.empty() && span->Start == moves_.back().Node->byteStart_))
                continue;
            std::size_t layout = span->Start;
            while (layout > copied_ && IsXmlSpace(text_[layout - 1]))
                --layout;
            Repeat(copied_, layout);
            copied_ = span->End;
        }
        if (end > copied_) {
            Repeat(copied_, end);
            copied_ = end;
        }
    }

    /// Repeats a piece of the text, the layout of its lines indented anew inside a moved node.
    void Repeat(std::size_t start, std::size_t end) {
        if (!moves_.empty() && moves_.back().Indent.Changes()) {
            const TIndentChange& indent = moves_.back().Indent;
            for (std::size_t line = text_.find('\n', start); line < end; line = text_.find('\n', start)) {
                out_ += text_.substr(start, line + 1 - start);
                start = line + 1;
                if (start + indent.From.size() <= end && text_.substr(start).starts_with(indent.From) &&
                    IsLayout(line)) {
                    out_ += indent.To;
                    start += indent.From.size();
                }
            }
        }
        out_ += text_.substr(start, end - start);
    }

    /// True when white space is all that stands around a place, between tags that do not hold it as a value.
    bool IsLayout(std::size_t place) const {
        std::size_t start = place;
        while (start > 0 && IsXmlSpace(text_[start - 1]))
            --start;
        std::size_t end = place;
        while (end < text_.size() && IsXmlSpace(text_[end]))
            ++end;
        if (start < 2 || end + 1 >= text_.size() || text_[start - 1] != '>' || text_[end] != '<')
            return false;
        const std::size_t tag = text_.rfind('<', start - 1);
        const bool opens = text_[tag + 1] != '/' && text_[start - 2] != '/';
        return !opens || text_[end + 1] != '/';
    }

    bool SelfClosed(const TXmlNode& node) const {
        return node.ContentStart(text_) == node.byteEnd_ && text_[node.byteEnd_ - 2] == '/';
    }

    std::size_t EndTagStart(const TXmlNode& node) const { return text_.rfind("</", node.byteEnd_ - 1); }

    /// A piece of a value among comments, instructions and CDATA sections; a new one stands before them.
    void WriteText(const TXmlNode& node) {
        if (IsNew(node)) {
            CopyTo(std::max<std::size_t>(node.Parent()->ContentStart(text_), copied_));
            AppendEscaped(out_, node.Value(), false);
        } else if ((node.flags_ & TXmlNode::kValueChanged) != 0) {
            CopyTo(node.byteStart_);
            AppendEscaped(out_, node.Value(), false);
            copied_ = node.byteEnd_;
        }
    }

    void Open(const TXmlNode& node) {
        if (IsMoved(node))
            OpenMoved(node);
        if (node.Kind() == TXmlNodeKind::xnText) {
            WriteText(node);
            return;
        }
        if (IsNew(node)) {
            OpenNew(node);
            return;
        }
        if (!node.IsTag())
            return;
        const bool selfClosed = SelfClosed(node);
        if ((node.flags_ & (TXmlNode::kNameChanged | TXmlNode::kAttributesChanged)) != 0)
            WriteStartTag(node, selfClosed);
        const bool filled = node.HasValue() || node.FirstChild() != nullptr;
        if (selfClosed && filled &&
            (node.flags_ & (TXmlNode::kValueChanged | TXmlNode::kChildInserted)) != 0) {
            CopyTo(node.ContentStart(text_) - 2U);
            while (IsXmlSpace(out_.back()))
                out_.pop_back();
            out_ += '>';
            copied_ = node.byteEnd_;
        }
        if ((node.flags_ & TXmlNode::kChildRemoved) != 0 && !filled && !selfClosed) {
            // The layout of what was in it would be a value now.
            CopyTo(std::max<std::size_t>(node.ContentStart(text_), copied_));
            copied_ = EndTagStart(node);
        }
        if ((node.flags_ & TXmlNode::kValueChanged) != 0) {
            CopyTo(std::max<std::size_t>(node.ContentStart(text_), copied_));
            AppendEscaped(out_, node.Value(), false);
            copied_ = selfClosed ? node.byteEnd_ : EndTagStart(node);
        }
    }

    void Close(const TXmlNode& node) {
        CloseTag(node);
        if (IsMoved(node)) {
            CopyTo(node.byteEnd_);
            copied_ = moves_.back().Resume;
            moves_.pop_back();
        }
    }

    void CloseTag(const TXmlNode& node) {
        if (!node.IsTag())
            return;
        if (IsNew(node)) {
            if (!wraps_.empty() && wraps_.back().Node == &node) {
                out_ += wraps_.back().Layout;
                wraps_.pop_back();
            }
            if (node.FirstChild() != nullptr || node.HasValue())
                EndTag(node);
            return;
        }
        if (SelfClosed(node)) {
            const bool filled = node.HasValue() || node.FirstChild() != nullptr;
            LayOutEnd(node);
            if (filled && (node.flags_ & (TXmlNode::kValueChanged | TXmlNode::kChildInserted)) != 0)
                EndTag(node);
            return;
        }
        LayOutEnd(node);
        if ((node.flags_ & TXmlNode::kNameChanged) == 0)
            return;
        CopyTo(EndTagStart(node));
        EndTag(node);
        copied_ = node.byteEnd_;
    }

    void EndTag(const TXmlNode& node) {
        out_ += "</";
        out_ += node.QualifiedName();
        out_ += '>';
    }

    void WriteAttribute(const TXmlAttribute& attribute) {
        out_ += ' ';
        out_ += attribute.QualifiedName();
        out_ += "=\"";
        AppendEscaped(out_, attribute.Value(), true);
        out_ += '"';
    }

    /// Repeats a start tag with its new name and attributes; what did not change stays as it was written.
    void WriteStartTag(const TXmlNode& node, bool selfClosed) {
        CopyTo(node.byteStart_);
        std::size_t nameEnd = node.byteStart_ + 1;
        while (!IsXmlSpace(text_[nameEnd]) && text_[nameEnd] != '/' && text_[nameEnd] != '>')
            ++nameEnd;
        out_ += '<';
        out_ += node.QualifiedName();
        copied_ = nameEnd;
        if ((node.flags_ & TXmlNode::kAttributesChanged) == 0) {
            CopyTo(node.ContentStart(text_));
            return;
        }
        const std::vector<TSourceAttribute> source = ScanAttributes(text_, nameEnd, node.ContentStart(text_));
        for (const TXmlAttribute& attribute : node.Attributes()) {
            if (attribute.sourceIndex_ < 0) {
                WriteAttribute(attribute);
                continue;
            }
            const TSourceAttribute& written = source[static_cast<std::size_t>(attribute.sourceIndex_)];
            out_ += text_.substr(written.Start, written.NameStart - written.Start);
            out_ += attribute.QualifiedName();
            out_ += text_.substr(written.NameEnd, written.ValueStart - written.NameEnd);
            if (attribute.valueChanged_) {
                out_ += '"';
                AppendEscaped(out_, attribute.Value(), true);
                out_ += '"';
            } else {
                out_ += text_.substr(written.ValueStart, written.End - written.ValueStart);
            }
        }
        copied_ = source.empty() ? nameEnd : source.back().End;
        // The white space before the bracket, and the bracket, stay as they were.
        CopyTo(node.ContentStart(text_) - (selfClosed ? 2U : 1U));
        CopyTo(node.ContentStart(text_));
    }

    /// Layout that stands before a node in the source; new nodes take it over from a neighbour.
    std::string_view LayoutBefore(std::size_t place) const {
        std::size_t start = place;
        while (start > 0 && IsXmlSpace(text_[start - 1]))
            --start;
        return text_.substr(start, place - start);
    }

    /// Where a node stands below a new one, ends that one's start tag, which was written "<name/" so far.
    void EnterNewParent(const TXmlNode& node) {
        const TXmlNode* parent = node.Parent();
        if (parent->FirstChild() == &node && !parent->HasValue())
            out_.back() = '>';
    }

    void OpenNew(const TXmlNode& node) {
        std::string_view layout;
        if (IsNew(*node.Parent())) {
            EnterNewParent(node);
        } else {
            layout = PlaceAmongSource(node);
            out_ += Shifted(layout);
        }
        out_ += '<';
        out_ += node.QualifiedName();
        for (const TXmlAttribute& attribute : node.Attributes())
            WriteAttribute(attribute);
        if (node.HasValue()) {
            out_ += '>';
            AppendEscaped(out_, node.Value(), false);
        } else {
            out_ += node.FirstChild() != nullptr ? "/" : "/>";
        }
        if (node.FirstChild() != nullptr && IsMoved(*node.FirstChild()))
            wraps_.push_back({&node, layout, Shifted(layout)});
    }

    /// Goes on at the source of a moved node, after its own layout, indented as its new neighbours are.
    void OpenMoved(const TXmlNode& node) {
        const std::string_view own = LayoutBefore(node.byteStart_);
        TIndentChange indent{std::string(IndentOf(own)), std::string(IndentOf(own))};
        const bool lines = own.find('\n') != std::string_view::npos;
        if (IsNew(*node.Parent())) {
            EnterNewParent(node);
            if (lines && !wraps_.empty())
                indent.To = IndentBelow(*wraps_.back().Node, wraps_.back().Source);
        } else if (const std::string_view layout = PlaceAmongSource(node);
                   lines && layout.find('\n') != std::string_view::npos) {
            indent.To = IndentOf(layout);
        } else if (lines && IsFilled(*node.Parent())) {
            indent.To = IndentBelow(*node.Parent(), LayoutBefore(node.Parent()->byteStart_));
        }
        indent.To = IndentOf(Shifted("\n" + indent.To));
        if (text_.substr(node.byteStart_, node.byteEnd_ - node.byteStart_).find("<!") !=
            std::string_view::npos)
            indent.To = indent.From; // what stands in comments and CDATA sections is no layout
        out_ += own.substr(0, own.size() - indent.From.size());
        out_ += indent.To;
        moves_.push_back({&node, copied_, std::move(indent)});
        copied_ = node.byteStart_;
    }

    /// A layout of the text as it has to be at the place that is being written.
    std::string Shifted(std::string_view layout) const {
        std::string shifted(layout);
        const std::size_t line = layout.rfind('\n');
        if (!moves_.empty() && line != std::string_view::npos &&
            layout.substr(line + 1).starts_with(moves_.back().Indent.From))
            shifted.replace(line + 1, moves_.back().Indent.From.size(), moves_.back().Indent.To);
        return shifted;
    }

    /// True for an element that was empty and now holds others.
    bool IsFilled(const TXmlNode& node) const {
        if ((node.flags_ & TXmlNode::kChildInserted) == 0 || IsNew(node) || node.FirstChildTag() == nullptr)
            return false;
        const std::size_t end = SelfClosed(node) ? node.byteEnd_ : EndTagStart(node);
        return node.ContentStart(text_) == end;
    }

    /// The layout before the end tag of an element that was empty and takes what stood on lines of its own.
    void LayOutEnd(const TXmlNode& node) {
        const TXmlNode* first = node.FirstChildTag();
        if (IsFilled(node) && IsMoved(*first) &&
            LayoutBefore(first->byteStart_).find('\n') != std::string_view::npos)
            out_ += Shifted(LayoutBefore(node.byteStart_));
    }

    /// The indentation of the children of an element: one step more than its own.
    std::string IndentBelow(const TXmlNode& node, std::string_view layout) const {
        const std::string own(IndentOf(layout));
        const std::string_view above = IndentOf(LayoutBefore(node.Parent()->byteStart_));
        return own.size() > above.size() ? own + own.substr(above.size()) : own;
    }

    /// Copies the source up to the place where a new or moved node belongs; answers a neighbour's layout.
    std::string_view PlaceAmongSource(const TXmlNode& node) {
        const TXmlNode& parent = *node.Parent();
        const TXmlNode* previous = nullptr;
        for (const TXmlNode* child = parent.FirstChild(); child != &node; child = child->NextSibling())
            if (IsInPlace(*child))
                previous = child;
        if (previous != nullptr) {
            CopyTo(std::max<std::size_t>(previous->byteEnd_, copied_));
            return LayoutBefore(previous->byteStart_);
        }
        const std::uint32_t contentStart = parent.ContentStart(text_);
        CopyTo(std::max<std::size_t>(contentStart, copied_));
        for (const TXmlNode* next = node.NextSibling(); next != nullptr; next = next->NextSibling())
            if (IsInPlace(*next))
                return LayoutBefore(next->byteStart_);
        for (const TXmlDocument::TSpan& span : removed_)
            if (span.Start >= contentStart && span.End <= parent.byteEnd_)
                return LayoutBefore(span.Start);
        return {};
    }

    /// A new element around moved ones, with the layout that stands before both its tags.
    struct TWrap {
        const TXmlNode* Node;
        std::string_view Source; ///< the layout where it was taken from
        std::string Layout;
    };

    const TXmlDocument& document_;
    std::string_view text_;
    std::vector<TXmlDocument::TSpan> removed_; ///< in order of their places
    std::vector<TMove> moves_;                 ///< moved nodes around the place, innermost last
    std::vector<TWrap> wraps_;
    std::size_t copied_ = 0;
    std::string out_;
};

std::string WriteXml(const TXmlDocument& document) {
    return TXmlTreeWriter(document).Write();
}

} // namespace conferix
