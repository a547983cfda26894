#pragma once

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace conferix {

/// A second opinion: libxml2's verdict on documents, by the same schema file.
class TLibXmlReferee {
  public:
    explicit TLibXmlReferee(const std::string& schemaFile) {
        xmlSetExternalEntityLoader(xmlNoNetExternalEntityLoader);
        xmlSetGenericErrorFunc(nullptr, &Silence);
        xmlSchemaParserCtxtPtr parser = xmlSchemaNewParserCtxt(schemaFile.c_str());
        schema_.reset(xmlSchemaParse(parser));
        xmlSchemaFreeParserCtxt(parser);
        if (!schema_)
            throw std::runtime_error("libxml2 does not compile " + schemaFile);
    }

    /// Empty for a valid document, else the first reason against it.
    std::string Reason(const std::string& text) const {
        xmlParserCtxtPtr context = xmlNewParserCtxt();
        xmlDocPtr document =
            xmlCtxtReadMemory(context, text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                              XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE);
        std::string reason;
        if (document == nullptr)
            reason = "not well-formed";
        else if (context->nsWellFormed == 0)
            reason = "undeclared prefix";
        else
            Validate(document, reason);
        xmlFreeDoc(document);
        xmlFreeParserCtxt(context);
        return reason;
    }

  private:
    static void Silence(void*, const char*, ...) {}

    struct TFree {
        void operator()(xmlSchemaPtr schema) const { xmlSchemaFree(schema); }
    };

    void Validate(xmlDocPtr document, std::string& reason) const {
        xmlSchemaValidCtxtPtr context = xmlSchemaNewValidCtxt(schema_.get());
        xmlSchemaSetValidStructuredErrors(
            context,
            [](void* data, xmlErrorPtr error) {
                auto& first = *static_cast<std::string*>(data);
                if (first.empty() && error->message != nullptr)
                    first = error->message;
            },
            &reason);
        if (xmlSchemaValidateDoc(context, document) != 0 && reason.empty())
            reason = "invalid";
        xmlSchemaFreeValidCtxt(context);
    }

    std::unique_ptr<xmlSchema, TFree> schema_;
};

} // namespace conferix
