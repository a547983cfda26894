// Finds the class that serves a document.
#pragma once

#include "model/arquivo_tiss.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace conferix {

/// The steps by which lots of guides are converted from a version to its neighbours in the list.
enum class TConversionSteps : std::uint8_t { None, Up, UpDown };

/// A version as a value: one row of the list of versions.
struct TArquivoTissClass {
    std::string_view Versao;
    TEnumTipoArquivoTiss Tipo;
    TConversionSteps Conversion;
    std::shared_ptr<IArquivoTiss> (*New)(std::shared_ptr<TXmlDocument> document);
};

/// The supported versions in the order in which they are searched.
class TArquivoTissFactory {
  public:
    static std::span<const TArquivoTissClass> Classes();

    /// The class whose version is exactly this text, or null.
    const TArquivoTissClass* GetArquivoTissClass(std::string_view versao) const;
    /// Loads a document with the class of its version. Raises, the first that holds: EInvalidTissFile,
    /// ETissVersionNotFound, ETissVersionNotSupported, ETissMessageNotImplemented.
    std::shared_ptr<IArquivoTiss> GetNewArquivoTiss(const std::shared_ptr<TXmlDocument>& document) const;
};

} // namespace conferix
