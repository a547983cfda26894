// A tree as text, for comparing two of them.
#pragma once

#include "xml/xml_document.h"

#include <sstream>
#include <string>

namespace conferix {

/// All that a tree says, a node a line.
inline std::string TreeText(const TXmlDocument& document) {
    std::ostringstream out;
    const TXmlNode& root = document.Root();
    for (const TXmlNode* node = &root; node != nullptr; node = node->NextInWalk(&root)) {
        out << static_cast<int>(node->Kind()) << ' ' << node->QualifiedName() << '#' << node->Name().Id << ' '
            << node->Line() << ':' << node->LinePos() << '@' << node->FilePos() << ' ' << node->ByteStart()
            << '-' << node->ByteEnd() << ' ' << node->HasValue() << '[' << node->Value() << ']'
            << (node->Parent() != nullptr ? node->Parent()->ByteStart() : 0);
        if (node->IsTag())
            for (const TXmlAttribute& attribute : node->Attributes())
                out << ' ' << attribute.QualifiedName() << "=[" << attribute.Value() << ']';
        out << '\n';
    }
    return out.str();
}

} // namespace conferix
