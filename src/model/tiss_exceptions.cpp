#include "model/tiss_exceptions.h"

#include "xml/cut_text.h"

#include <fmt/format.h>

namespace conferix {

EInvalidTissFile::EInvalidTissFile(std::string_view elementName)
    : ETissException(
          fmt::format("O elemento raíz <{}> não é reconhecido como sendo de um tipo de arquivo TISS "
                      "válido.",
                      CutText(elementName, kShownFound))) {}

ETissVersionNotFound::ETissVersionNotFound()
    : ETissException("Versão do TISS não encontrada no arquivo XML.") {}

ETissVersionNotSupported::ETissVersionNotSupported(std::string versao)
    : ETissException(fmt::format("Versão {} do TISS não suportada.", CutText(versao, kShownFound))),
      versao_(std::move(versao)) {}

ETissMessageNotImplemented::ETissMessageNotImplemented(std::string_view versao)
    : ETissException(fmt::format("Tipo de arquivo TISS não implementado na versão {} do TISS.", versao)) {}

ELoteGuiasNotFound::ELoteGuiasNotFound()
    : std::runtime_error(
          "Como o tipo da transação foi definida como sendo \"ENVIO_LOTE_GUIAS\", é necessário que "
          "o XML contenha um lote com pelo menos uma guia TISS. Porém, não foram localizadas guias "
          "TISS no conteúdo do XML.") {}

} // namespace conferix
