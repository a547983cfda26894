#pragma once

#include "xml/xml_document.h"

#include <string>

namespace conferix {

/// What a document is that belongs to the standard's web services (a SOAP envelope, "loteGuiasWS",
/// "protocoloRecebimentoWS"...), and what to open instead; empty for any other document.
std::string WebServiceHint(const TXmlDocument& document);

} // namespace conferix
