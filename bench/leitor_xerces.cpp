// Checks a file against a schema by Xerces-C's SAX2 reader, to compare with; without a schema, only parses
// it.
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <memory>

using namespace xercesc;

namespace {

class TCounter : public DefaultHandler {
  public:
    int Errors = 0;
    void error(const SAXParseException& /*exception*/) override { ++Errors; }
    void fatalError(const SAXParseException& /*exception*/) override { ++Errors; }
};

int Check(const char* file, const char* schema) {
    const std::unique_ptr<SAX2XMLReader> reader(XMLReaderFactory::createXMLReader());
    TCounter counter;
    reader->setErrorHandler(&counter);
    reader->setContentHandler(&counter);
    reader->setFeature(XMLUni::fgXercesLoadSchema, false);
    reader->setFeature(XMLUni::fgSAX2CoreValidation, schema != nullptr);
    reader->setFeature(XMLUni::fgXercesSchema, schema != nullptr);
    if (schema != nullptr) {
        reader->loadGrammar(schema, Grammar::SchemaGrammarType, true);
        reader->setFeature(XMLUni::fgXercesUseCachedGrammarInParse, true);
    }
    reader->parse(file);
    return counter.Errors == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return 2;
    XMLPlatformUtils::Initialize();
    const int status = Check(argv[1], argc > 2 ? argv[2] : nullptr);
    XMLPlatformUtils::Terminate();
    return status;
}
