// Digital signatures in a message.
#pragma once

#include "xml/xml_document.h"

#include <string_view>

namespace conferix {

/// The prefix that the tags of signatures carry, and the namespace that it stands for.
inline constexpr std::string_view kSignaturePrefix = "ds";
inline constexpr std::string_view kSignatureNamespace = "http://www.w3.org/2000/09/xmldsig#";

/// The element that is a signature itself.
inline bool IsSignature(const TXmlNode& node) {
    return node.IsTag() && node.LocalName() == "Signature";
}

/// An element of the message that holds a signature or the parts of one.
inline bool IsSignatureWrapper(const TXmlNode& node) {
    return node.IsTag() &&
           (node.LocalName() == "assinaturaDigital" || node.LocalName() == "assinaturaDigitalGuia");
}

/// The first node after a subtree, in document order within `root`; null at its end.
template<class Node>
Node* AfterSubtree(Node* node, const TXmlNode* root) {
    while (node != root && node->NextSibling() == nullptr)
        node = node->Parent();
    return node == root ? nullptr : node->NextSibling();
}

/// Whether a document is signed, whole or in parts; an empty wrapper is no signature.
bool IsSigned(const TXmlDocument& document);

/// What the user is told after a correction of a signed document.
inline constexpr std::string_view kSignatureNote =
    "O arquivo tem assinatura digital: o que foi alterado na parte assinada precisa ser assinado de novo.";

} // namespace conferix
