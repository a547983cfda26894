#pragma once

#include "xml/schema/compiled_schema.h"
#include "xml/schema/schema_files.h"

namespace conferix {

/// Makes `type` a restriction of `base` by the facets below an xs:restriction; other children of it are
/// left to the caller. Raises ESchemaInvalido.
void RestrictSchemaType(TSchemaSimpleType& type, const TSchemaSimpleType& base, const TSchemaFile& file,
                        const TXmlNode& restriction);

/// True for the name of a facet.
bool IsSchemaFacet(std::string_view name);

} // namespace conferix
