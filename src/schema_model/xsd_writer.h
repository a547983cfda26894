#pragma once

#include "schema_model/schema_model.h"

#include <string>
#include <string_view>

namespace conferix {

/// The XSD file of one version, in UTF-8: self-contained but for files that the model imports. It holds what
/// the root element reaches, all global elements for a model without versions, and ends with a seal. Raises
/// EInvalidSchemaModel for a model that does not fit together in that version.
std::string MakeXsd(const TSchemaModel& model, std::string_view version);

} // namespace conferix
