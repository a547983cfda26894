#pragma once

#include "convert/conversion_run.h"
#include "xml/xml_document.h"

#include <string_view>

namespace conferix {

/// Gives the document element of a message exactly the attributes of a version: the prefix "ans" of the
/// standard, the prefix "xsi", and the location of the schema. Elements of the standard take the prefix;
/// other namespaces that the document element declared are declared where they are used; attributes beyond
/// that are lost and noted.
void RewriteRootAttributes(TXmlDocument& document, std::string_view versao, TConversionRun& run);

} // namespace conferix
