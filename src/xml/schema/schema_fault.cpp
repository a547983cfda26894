#include "xml/schema/schema_fault.h"

#include "xml/schema/schema_messages.h"
#include "xml/xml_document.h"
#include "xml/xml_node.h"

namespace conferix {

namespace {

constexpr std::size_t kShownCharacters = 120;

} // namespace

std::string TSchemaFault::SrcText() const {
    if (!Found.empty())
        return CutText(TrimXmlSpace(Found), kShownCharacters);
    if (Node == nullptr || Node->ByteEnd() == 0)
        return Node != nullptr ? "<" + std::string(Node->QualifiedName()) + ">" : std::string();
    const std::string_view text = Node->Document().Text();
    const std::string_view piece = text.substr(Node->ByteStart(), Node->ByteEnd() - Node->ByteStart());
    // The start tag of an element with content says enough.
    const bool leaf = Node->FirstChild() == nullptr;
    return CutText(TrimXmlSpace(leaf ? piece : piece.substr(0, piece.find('>') + 1)), kShownCharacters);
}

} // namespace conferix
