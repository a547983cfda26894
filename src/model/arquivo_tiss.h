// A loaded TISS file, and what can be told of a document before it is loaded.
#pragma once

#include "model/arquivo_tiss_visitor.h"
#include "model/informations.h"
#include "model/tiss_enums.h"
#include "xml/bindings/xml_binding.h"
#include "xml/xml_document.h"

#include <memory>
#include <string>
#include <string_view>

namespace conferix {

/// A TISS file bound to its document, which it shares. It keeps nothing else: every answer is read from the
/// document when asked, so that an edit is seen at the next question. Always held by a shared pointer.
class TArquivoTissBase : public TXmlBinding, public std::enable_shared_from_this<TArquivoTissBase> {
  public:
    virtual ~TArquivoTissBase();
    TArquivoTissBase(const TArquivoTissBase&) = delete;
    TArquivoTissBase& operator=(const TArquivoTissBase&) = delete;

    /// Kind of the file that a document is. Raises EInvalidTissFile.
    static TEnumTipoArquivoTiss GetTipoArquivoTiss(const TXmlDocument& document);
    /// Transaction that the header names; tmDesconhecido for none or another one.
    static TEnumTipoTransacaoTiss GetTipoTransacaoTiss(const TXmlDocument& document);
    /// Version that the header names, exactly as written. Raises ETissVersionNotFound.
    static std::string GetVersaoTissDetectada(const TXmlDocument& document);

    /// Prefix that the elements of this version are written with.
    virtual std::string_view GetNamespace() const = 0;
    /// Version of the standard that this class serves, as "3.05.00".
    virtual std::string_view Versao() const = 0;
    /// Calls the visitor's overload for this kind of file.
    virtual void Accept(IArquivoTissVisitor& visitor) const = 0;

    const std::shared_ptr<TXmlDocument>& Xml() const { return xml_; }
    TEnumTipoArquivoTiss TipoArquivo() const { return GetTipoArquivoTiss(*xml_); }
    TEnumTipoTransacaoTiss TipoTransacao() const { return GetTipoTransacaoTiss(*xml_); }
    /// The header's text of the transaction.
    std::string_view TextoTipoTransacao() const;
    /// The summary for the user, numbers as the user writes them unless told otherwise.
    TInformations Informations(const TFormatSettings& formats = TFormatSettings::Regional()) const {
        return InformationsOf(*this, formats);
    }
    /// The hash of the epilogue exactly as stored; empty when absent.
    std::string_view Hash() const { return ValueOf(HashNode()); }
    /// The element of the hash, through which it is changed; null when absent.
    TXmlNode* HashNode() const { return Find("epilogo/hash"); }
    /// The epilogue, or null.
    TXmlNode* EpilogoNode() const { return Find("epilogo"); }

  protected:
    explicit TArquivoTissBase(std::shared_ptr<TXmlDocument> document);

  private:
    std::shared_ptr<TXmlDocument> xml_;
};

} // namespace conferix
