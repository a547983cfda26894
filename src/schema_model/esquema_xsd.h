#pragma once

#include "schema_model/esquema_modelo.h"

#include <string>
#include <string_view>

namespace conferix {

/// The XSD file of one version, in UTF-8: self-contained but for files that the model imports. It holds what
/// the root element reaches, all global elements for a model without versions, and ends with a seal. Raises
/// EModeloInvalido for a model that does not fit together in that version.
std::string EsquemaXsd(const TEsquemaModelo& modelo, std::string_view versao);

} // namespace conferix
