// Any bytes as a schema beside the published ones; what compiles judges a document.
#include "target.h"
#include "xml/schema/schema_reader.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_parser.h"

using namespace conferix;

namespace {

std::shared_ptr<TXmlDocument> SomeDocument() {
    return TXmlParser::Parse(R"(<?xml version="1.0" encoding="UTF-8"?>
<a:mensagemTISS xmlns:a="http://www.ans.gov.br/padroes/tiss/schemas" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
<a:cabecalho b="1"><a:x xsi:nil="true"/><a:y>2024-01-01</a:y>text</a:cabecalho><a:y>1</a:y><a:y/><z/><a:epilogo/>
</a:mensagemTISS>)")
        .Document;
}

void BringNeighbours() {
    for (const auto& entry : std::filesystem::directory_iterator(CONFERIX_ESQUEMAS))
        std::filesystem::copy_file(entry.path(), WorkFolder() / entry.path().filename());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto document = SomeDocument();
    static const bool ready = (BringNeighbours(), true);
    Demand(ready, "the built-in schemas are there");
    const std::filesystem::path file = WriteWorkFile("fuzz.xsd", BytesOf(data, size));
    try {
        const auto set = TSchemaReader::Read(TSchemaFiles(file), file);
        TSchemaValidator(*set).Validate(*document);
    } catch (const ESchemaInvalido&) {
        // refused with a reason
    }
    return 0;
}
