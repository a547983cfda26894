#include "xerces_referee.h"

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

#include <stdexcept>

namespace conferix {

namespace {

namespace xc = xercesc;

std::string Text(const XMLCh* text) {
    char* plain = xc::XMLString::transcode(text);
    std::string result = plain != nullptr ? plain : "?";
    xc::XMLString::release(&plain);
    return result;
}

/// Keeps the first fault, and answers every outside entity with nothing.
class TObserver : public xc::DefaultHandler {
  public:
    std::string First;

    void error(const xc::SAXParseException& fault) override { Keep(fault); }
    void fatalError(const xc::SAXParseException& fault) override { Keep(fault); }
    xc::InputSource* resolveEntity(const XMLCh* const, const XMLCh* const systemId) override {
        const std::string id = Text(systemId);
        if (!id.starts_with("http:") && !id.starts_with("https:"))
            return nullptr;
        static const XMLByte kNothing[1] = {0};
        return new xc::MemBufInputSource(kNothing, 0, "vazio");
    }

  private:
    void Keep(const xc::SAXParseException& fault) {
        if (First.empty())
            First = std::to_string(fault.getLineNumber()) + ": " + Text(fault.getMessage());
    }
};

} // namespace

struct TXercesReferee::TParser {
    std::unique_ptr<xc::XMLGrammarPoolImpl> Pool;
    std::unique_ptr<xc::SAX2XMLReader> Reader;
    TObserver Observer;
};

TXercesReferee::TXercesReferee(const std::filesystem::path& schemaFile) {
    xc::XMLPlatformUtils::Initialize();
    parser_ = std::make_unique<TParser>();
    parser_->Pool = std::make_unique<xc::XMLGrammarPoolImpl>(xc::XMLPlatformUtils::fgMemoryManager);
    parser_->Reader.reset(
        xc::XMLReaderFactory::createXMLReader(xc::XMLPlatformUtils::fgMemoryManager, parser_->Pool.get()));
    xc::SAX2XMLReader& reader = *parser_->Reader;
    reader.setFeature(xc::XMLUni::fgSAX2CoreNameSpaces, true);
    reader.setFeature(xc::XMLUni::fgSAX2CoreValidation, true);
    reader.setFeature(xc::XMLUni::fgXercesDynamic, false);
    reader.setFeature(xc::XMLUni::fgXercesSchema, true);
    reader.setFeature(xc::XMLUni::fgXercesHandleMultipleImports, true);
    reader.setFeature(xc::XMLUni::fgXercesLoadExternalDTD, false);
    reader.setErrorHandler(&parser_->Observer);
    reader.setEntityResolver(&parser_->Observer);
    reader.loadGrammar(schemaFile.c_str(), xc::Grammar::SchemaGrammarType, true);
    if (!parser_->Observer.First.empty())
        throw std::runtime_error(schemaFile.string() + ": " + parser_->Observer.First);
    reader.setFeature(xc::XMLUni::fgXercesUseCachedGrammarInParse, true);
    reader.setFeature(xc::XMLUni::fgXercesLoadSchema, false);
}

TXercesReferee::~TXercesReferee() {
    parser_.reset();
    xc::XMLPlatformUtils::Terminate();
}

std::string TXercesReferee::Reason(const std::string& text) {
    parser_->Observer.First.clear();
    const xc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                       "documento");
    try {
        parser_->Reader->parse(source);
    } catch (const xc::XMLException& failure) {
        return Text(failure.getMessage());
    }
    return parser_->Observer.First;
}

} // namespace conferix
