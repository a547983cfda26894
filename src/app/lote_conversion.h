#pragma once

#include "app/schema_folder.h"
#include "convert/conversion_run.h"
#include "model/arquivo_tiss.h"

#include <memory>
#include <string>
#include <vector>

namespace conferix {

/// A converted lot, ready to be saved.
struct TConvertedLote {
    std::string Xml; ///< in UTF-8
    std::string From;
    std::string To;
    std::vector<std::string> Steps; ///< as "3.05.00 -> 4.00.00"
    TConversionNotes Notes;         ///< in the order of the steps; their nodes are in Arquivo
    bool Valid = false;             ///< by the schema of the target version
    std::shared_ptr<const IArquivoTiss> Arquivo;
};

/// Converts a lot to another version, computes its hash anew (in ISO-8859-1) and checks it by the schema of
/// that version; every fault found that no step has told of becomes a note. The file given stays as it is.
/// Raises EConversionNotSupported, ESchemaNotFound, ESchemaInvalido.
TConvertedLote ConvertLote(const IArquivoTiss& arquivo, const std::string& target,
                           const TConversionOptions& options, const TSchemaFolder& schemas);

} // namespace conferix
