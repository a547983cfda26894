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

/// Walks the tree beside the parsed text: `copied_` is the place in the text up to which everything has
/// been written or left out.
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
    static bool IsNew(const TXmlNode& node) { return (node.flags_ & TXmlNode::kNew) != 0; }

    /// Copies the text up to `end`, leaving out what removed nodes covered and the layout before them.
    void CopyTo(std::size_t end) {
        for (; nextRemoved_ < removed_.size() && removed_[nextRemoved_].End <= end; ++nextRemoved_) {
            const TXmlDocument::TSpan& span = removed_[nextRemoved_];
            if (span.Start < copied_) // inside a larger removed piece
                continue;
            std::size_t layout = span.Start;
            while (layout > copied_ && IsXmlSpace(text_[layout - 1]))
                --layout;
            out_ += text_.substr(copied_, layout - copied_);
            copied_ = span.End;
        }
        if (end > copied_) {
            out_ += text_.substr(copied_, end - copied_);
            copied_ = end;
        }
    }

    bool SelfClosed(const TXmlNode& node) const {
        return node.contentStart_ == node.byteEnd_ && text_[node.byteEnd_ - 2] == '/';
    }

    std::size_t EndTagStart(const TXmlNode& node) const { return text_.rfind("</", node.byteEnd_ - 1); }

    /// A piece of a value among comments, instructions and CDATA sections; a new one stands before them.
    void WriteText(const TXmlNode& node) {
        if (IsNew(node)) {
            CopyTo(std::max<std::size_t>(node.Parent()->contentStart_, copied_));
            AppendEscaped(out_, node.Value(), false);
        } else if ((node.flags_ & TXmlNode::kValueChanged) != 0) {
            CopyTo(node.byteStart_);
            AppendEscaped(out_, node.Value(), false);
            copied_ = node.byteEnd_;
        }
    }

    void Open(const TXmlNode& node) {
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
            CopyTo(node.contentStart_ - 2U);
            while (IsXmlSpace(out_.back()))
                out_.pop_back();
            out_ += '>';
            copied_ = node.byteEnd_;
        }
        if ((node.flags_ & TXmlNode::kValueChanged) != 0) {
            CopyTo(std::max<std::size_t>(node.contentStart_, copied_));
            AppendEscaped(out_, node.Value(), false);
            copied_ = selfClosed ? node.byteEnd_ : EndTagStart(node);
        }
    }

    void Close(const TXmlNode& node) {
        if (!node.IsTag())
            return;
        if (IsNew(node)) {
            if (node.FirstChild() != nullptr || node.HasValue())
                EndTag(node);
            return;
        }
        if (SelfClosed(node)) {
            const bool filled = node.HasValue() || node.FirstChild() != nullptr;
            if (filled && (node.flags_ & (TXmlNode::kValueChanged | TXmlNode::kChildInserted)) != 0)
                EndTag(node);
            return;
        }
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
            CopyTo(node.contentStart_);
            return;
        }
        const std::vector<TSourceAttribute> source = ScanAttributes(text_, nameEnd, node.contentStart_);
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
        CopyTo(node.contentStart_ - (selfClosed ? 2U : 1U));
        CopyTo(node.contentStart_);
    }

    /// Layout that stands before a node in the source; new nodes take it over from a neighbour.
    std::string_view LayoutBefore(std::size_t place) const {
        std::size_t start = place;
        while (start > 0 && IsXmlSpace(text_[start - 1]))
            --start;
        return text_.substr(start, place - start);
    }

    void OpenNew(const TXmlNode& node) {
        const TXmlNode* parent = node.Parent();
        if (IsNew(*parent)) {
            if (parent->FirstChild() == &node && !parent->HasValue())
                out_.back() = '>'; // the parent was written "<name/" so far
        } else {
            PlaceAmongSource(node, *parent);
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
    }

    /// Copies the source up to the place where a new node belongs and repeats a neighbour's layout.
    void PlaceAmongSource(const TXmlNode& node, const TXmlNode& parent) {
        const TXmlNode* previous = nullptr;
        for (const TXmlNode* child = parent.FirstChild(); child != &node; child = child->NextSibling())
            if (!IsNew(*child))
                previous = child;
        if (previous != nullptr) {
            CopyTo(std::max<std::size_t>(previous->byteEnd_, copied_));
            out_ += LayoutBefore(previous->byteStart_);
            return;
        }
        CopyTo(std::max<std::size_t>(parent.contentStart_, copied_));
        for (const TXmlNode* next = node.NextSibling(); next != nullptr; next = next->NextSibling()) {
            if (!IsNew(*next)) {
                out_ += LayoutBefore(next->byteStart_);
                return;
            }
        }
        for (const TXmlDocument::TSpan& span : removed_) {
            if (span.Start >= parent.contentStart_ && span.End <= parent.byteEnd_) {
                out_ += LayoutBefore(span.Start);
                return;
            }
        }
    }

    const TXmlDocument& document_;
    std::string_view text_;
    std::vector<TXmlDocument::TSpan> removed_; ///< in order of their places
    std::size_t nextRemoved_ = 0;
    std::size_t copied_ = 0;
    std::string out_;
};

std::string WriteXml(const TXmlDocument& document) {
    return TXmlTreeWriter(document).Write();
}

} // namespace conferix
