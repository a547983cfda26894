#include "validation/signature.h"

namespace conferix {

bool IsSigned(const TXmlDocument& document) {
    const TXmlNode& root = document.Root();
    for (const TXmlNode* node = &root; node != nullptr; node = node->NextInWalk(&root))
        if (IsSignature(*node) || (IsSignatureWrapper(*node) && node->FirstChildTag() != nullptr))
            return true;
    return false;
}

} // namespace conferix
