#pragma once

#include "xml/xml_message.h"

#include <memory>
#include <vector>

namespace conferix {

class TXmlDocument;
class TXmlNode;

/// The first thing for which a reader that knows namespaces refuses a document that is well-formed without
/// them: a name that is no qualified name, a declaration that binds nothing or something reserved, an
/// attribute that stands twice through two prefixes. Null when there is none. Prefixes that nothing declares
/// are left to whoever judges the elements. `special`: the tags that have attributes, and the
/// instructions, in document order.
std::shared_ptr<const TXmlMessage> FindNamespaceFault(const TXmlDocument& document,
                                                      const std::vector<const TXmlNode*>& special);

} // namespace conferix
