#include "xml/xml_document.h"

#include "platform/utf8.h"
#include "xml/xml_encoding.h"

#include <algorithm>

namespace conferix {

namespace {

std::size_t HashName(std::string_view name) {
    std::size_t hash = 14695981039346656037ULL;
    for (const char c : name)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    return hash ^ (hash >> 29);
}

} // namespace

TXmlDocument::TXmlDocument(std::shared_ptr<const std::string> text)
    : text_(std::move(text)), nameTable_(256), places_(*text_) {
    root_.kind_ = TXmlNodeKind::xnDocument;
    root_.document_ = this;
    root_.name_ = InternName("");
    root_.byteEnd_ = static_cast<std::uint32_t>(text_->size());
}

void TXmlDocument::SetMisreading(const TXmlMisreading& misreading) {
    misreading_ = std::make_shared<const TXmlMisreading>(misreading);
}

const TXmlName* TXmlDocument::InternName(std::string_view qualified) {
    std::size_t mask = nameTable_.size() - 1;
    std::size_t slot = HashName(qualified) & mask;
    for (; nameTable_[slot] != nullptr; slot = (slot + 1) & mask)
        if (nameTable_[slot]->Qualified == qualified)
            return nameTable_[slot];

    auto* name = arena_.New<TXmlName>();
    name->Qualified = arena_.Copy(qualified);
    const std::size_t colon = name->Qualified.find(':');
    if (colon == std::string_view::npos) {
        name->Local = name->Qualified;
    } else {
        name->Prefix = name->Qualified.substr(0, colon);
        name->Local = name->Qualified.substr(colon + 1);
    }
    name->Id = NameCount();
    names_.push_back(name);
    nameTable_[slot] = name;

    if (names_.size() * 2 > nameTable_.size()) {
        std::vector<const TXmlName*> larger(nameTable_.size() * 4);
        mask = larger.size() - 1;
        for (const TXmlName* known : names_) {
            slot = HashName(known->Qualified) & mask;
            while (larger[slot] != nullptr)
                slot = (slot + 1) & mask;
            larger[slot] = known;
        }
        nameTable_.swap(larger);
    }
    return name;
}

TXmlNode* TXmlDocument::NewTag(std::string_view qualifiedName, std::string_view value) {
    auto* node = arena_.New<TXmlNode>();
    node->kind_ = TXmlNodeKind::xnTag;
    node->flags_ = TXmlNode::kNew | TXmlNode::kOutside;
    node->parent_ = &root_;
    node->name_ = InternName(qualifiedName);
    node->PointValue(arena_.Copy(value));
    return node;
}

std::uint32_t TXmlDocument::OffsetOf(std::int64_t line, std::int64_t linePos) const {
    const std::string_view text = Text();
    if (lineStarts_.empty()) {
        lineStarts_.push_back(0);
        for (std::size_t i = 0; i < text.size(); ++i) {
            const bool loneCr = text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n');
            if (text[i] == '\n' || loneCr)
                lineStarts_.push_back(static_cast<std::uint32_t>(i + 1));
        }
    }
    if (line < 1)
        return 0;
    if (static_cast<std::size_t>(line) > lineStarts_.size())
        return static_cast<std::uint32_t>(text.size());
    std::size_t offset = lineStarts_[static_cast<std::size_t>(line - 1)];
    for (std::int64_t column = 1; column < linePos && offset < text.size(); ++column) {
        if (text[offset] == '\n' || text[offset] == '\r')
            break;
        ++offset;
        while (offset < text.size() && !StartsCharacter(text[offset]))
            ++offset;
    }
    return static_cast<std::uint32_t>(offset);
}

bool TXmlDocument::HasLongLines() const {
    constexpr std::size_t kLooked = 100'000;
    constexpr std::ptrdiff_t kLong = 1000;
    if (!hasLongLines_) {
        const std::string_view start = Text().substr(0, kLooked);
        hasLongLines_ = std::ranges::count(start, '\n') * kLong < static_cast<std::ptrdiff_t>(start.size()) &&
                        static_cast<std::ptrdiff_t>(start.size()) > 2 * kLong;
    }
    return *hasLongLines_;
}

} // namespace conferix
