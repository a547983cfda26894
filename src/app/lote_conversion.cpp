#include "app/lote_conversion.h"

#include "app/validador_controller.h"
#include "convert/version_converter.h"
#include "validation/hash_calculator.h"
#include "validation/schema_rule.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>

#include <set>
#include <utility>

namespace conferix {

namespace {

using TNote = TConversionNoteType;

void RenewHash(const IArquivoTiss& arquivo, TConversionRun& run) {
    TXmlNode* hash = arquivo.HashNode();
    if (hash == nullptr)
        return;
    const std::string before = hash->TextWithCData();
    const std::string computed = THashCalculator::Calculate(*arquivo.Xml(), THashEncoding::Iso88591);
    if (computed == before)
        return;
    hash->SetValue(computed);
    run.Add(TNote::ntMudanca, *hash, before, "O hash foi calculado de novo.");
}

/// The faults that the steps have told of: the element, and the name of a child where that one is missing.
std::set<std::pair<const TXmlNode*, std::string>> ToldFaults(const TConversionNotes& notes) {
    std::set<std::pair<const TXmlNode*, std::string>> told;
    for (const TConversionNote& note : notes)
        if (note.Tipo == TNote::ntPendencia)
            told.emplace(note.No, note.Elemento.substr(note.Elemento.rfind('/') + 1));
    return told;
}

/// Adds what the schema finds in the result and nobody has told; answers whether it finds nothing.
bool CheckSchema(const IArquivoTiss& arquivo, const TSchemaFolder& schemas, TConversionRun& run) {
    const std::filesystem::path file = schemas.Locate(
        TValidadorController::SchemaFileName(TEnumTipoArquivoTiss::taMensagemTISS, arquivo.Versao()));
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored))
        throw ESchemaNotFound(file);
    const auto schema = TSchemaSet::Load(file);
    const std::vector<TSchemaFault> faults = TSchemaValidator(*schema).Validate(*arquivo.Xml());
    const auto told = ToldFaults(run.Notes());
    for (const TSchemaFault& fault : faults) {
        const bool missing = fault.Code == TSchemaFaultCode::MissingElement;
        const TXmlNode& parent =
            !missing || fault.Node->LocalName() == fault.Parent ? *fault.Node : *fault.Node->Parent();
        if (told.contains({missing ? &parent : fault.Node, fault.Name}))
            continue;
        if (missing)
            run.AddBelow(TNote::ntPendencia, parent, fault.Name, {}, TSchemaMessages::Sentence(fault));
        else
            run.Add(TNote::ntPendencia, *fault.Node, TSchemaMessages::Sentence(fault));
    }
    return faults.empty();
}

} // namespace

TLoteConvertido ConvertLote(const IArquivoTiss& arquivo, const std::string& destino,
                            const TConversionOptions& options, const TSchemaFolder& schemas) {
    TConversionRun run(options);
    TLoteConvertido result;
    result.Origem = arquivo.Versao();
    result.Destino = destino;
    result.Arquivo = TVersionConverter().Convert(arquivo, destino, run);
    RenewHash(*result.Arquivo, run);
    result.Valido = CheckSchema(*result.Arquivo, schemas, run);
    result.Passos = run.Steps();
    result.Notas = run.TakeNotes();
    result.Xml = WriteXml(*result.Arquivo->Xml());
    return result;
}

} // namespace conferix
