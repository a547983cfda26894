#include "xml/schema/schema_fault.h"

#include "xml/cut_text.h"
#include "xml/xml_document.h"
#include "xml/xml_node.h"

namespace conferix {

std::string TSchemaFault::SrcText() const {
    if (!Found.empty())
        return CutText(TrimXmlSpace(Found));
    if (Node == nullptr || Node->ByteEnd() == 0)
        return Node != nullptr ? "<" + std::string(Node->QualifiedName()) + ">" : std::string();
    const std::string_view text = Node->Document().Text();
    const std::string_view piece = text.substr(Node->ByteStart(), Node->ByteEnd() - Node->ByteStart());
    // The start tag of an element with content says enough.
    const bool leaf = Node->FirstChild() == nullptr;
    return CutText(TrimXmlSpace(leaf ? piece : piece.substr(0, piece.find('>') + 1)));
}

} // namespace conferix
