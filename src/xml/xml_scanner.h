#pragma once

#include "xml/xml_document.h"

namespace conferix {

/// Pre-order walk over a tree (a node before its children, children in order) that ends as soon as the
/// visitor sets its stop flag. Visitor: callable with (node, bool& stop).
class TXmlMappingScanner {
  public:
    template<class Node, class Visitor>
    static void Scan(Node& start, Visitor&& visit) {
        bool stop = false;
        for (Node* node = &start; node != nullptr && !stop; node = node->NextInWalk(&start))
            visit(*node, stop);
    }
};

} // namespace conferix
