#pragma once

#include "xml/schema/schema_set.h"

#include <ostream>
#include <string>
#include <vector>

namespace conferix {

/// A place at which two compiled schemas differ.
struct TDiferenca {
    std::string Caminho; ///< from the root element, as "mensagemTISS/cabecalho: nillable"
    std::string Publicado;
    std::string Gerado;
    bool operator==(const TDiferenca&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const TDiferenca& difference) {
    return out << difference.Caminho << " | " << difference.Publicado << " | " << difference.Gerado;
}

/// Compares the tables of two schemas from their global elements on: automata, how often, values, attributes,
/// names and ancestry of types. Each pair of types is compared once, at its first place.
std::vector<TDiferenca> CompararEsquemas(const TSchemaSet& published, const TSchemaSet& generated);

} // namespace conferix
