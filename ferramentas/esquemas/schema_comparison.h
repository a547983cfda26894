#pragma once

#include "xml/schema/schema_set.h"

#include <string>
#include <vector>

namespace conferix {

/// A place at which two compiled schemas differ.
struct TSchemaDifference {
    std::string Path; ///< from the root element, as "mensagemTISS/cabecalho: nillable"
    std::string Published;
    std::string Generated;
};

/// Compares the tables of two schemas from their global elements on: automata, how often, values, attributes,
/// names and ancestry of types. Each pair of types is compared once, at its first place.
std::vector<TSchemaDifference> CompareSchemas(const TSchemaSet& published, const TSchemaSet& generated);

} // namespace conferix
