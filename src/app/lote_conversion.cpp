#include "app/lote_conversion.h"

#include "app/validador_controller.h"
#include "convert/version_converter.h"
#include "model/tiss_kinds.h"
#include "validation/hash_calculator.h"
#include "validation/schema_rule.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_parser.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <utility>

namespace conferix {

namespace {

using TNote = TConversionNoteType;

/// The element of the hash, made where the epilogue lacks it; null where it cannot hold one.
TXmlNode* HashNodeOf(const IArquivoTiss& arquivo) {
    TXmlNode* hash = arquivo.HashNode();
    TXmlNode* epilogo = arquivo.EpilogoNode();
    if (hash == nullptr && epilogo != nullptr) {
        const std::string prefix(epilogo->Prefix());
        hash = arquivo.Xml()->NewTag(prefix.empty() ? "hash" : prefix + ":hash");
        epilogo->InsertChild(*hash, epilogo->FirstChildTag());
    }
    return hash != nullptr && hash->FirstChildTag() == nullptr ? hash : nullptr;
}

/// The hash of the text that a tree is written as: where elements were removed beside text, the layout that
/// stays in the text may count.
std::string HashOfWritten(const TXmlDocument& document) {
    const TXmlParseResult written = TXmlParser::Parse(WriteXml(document));
    return THashCalculator::Calculate(written.Document != nullptr ? *written.Document : document,
                                      THashEncoding::Iso88591);
}

void RenewHash(const IArquivoTiss& arquivo, TConversionRun& run) {
    TXmlNode* hash = HashNodeOf(arquivo);
    if (hash == nullptr)
        return; // the schema tells of it
    const std::string before = hash->TextWithCData();
    const std::string computed = HashOfWritten(*arquivo.Xml());
    if (computed == before)
        return;
    hash->SetValue(computed);
    run.Add(TNote::ntChange, *hash, before, "O hash foi calculado de novo.");
}

/// The faults that the steps have told of: a child that is missing, or a value that is not accepted.
class TToldFaults {
  public:
    explicit TToldFaults(const TConversionNotes& notes) {
        for (std::size_t i = 0; i < notes.size(); ++i)
            if (const TConversionNote& note = notes[i]; note.Type == TNote::ntPending)
                told_.insert_or_assign({note.Node, note.Element.substr(note.Element.rfind('/') + 1)}, i);
    }
    bool ContainsMissing(const TXmlNode& parent, const std::string& name) const {
        return told_.contains({&parent, name});
    }
    /// The place of the note on a value, 0-based; nothing when nobody has told.
    std::optional<std::size_t> FindValue(const TSchemaFault& fault) const {
        if (fault.Code < TSchemaFaultCode::EmptyValue || fault.Attribute != nullptr)
            return std::nullopt;
        const auto found = told_.find({fault.Node, fault.Name});
        return found != told_.end() ? std::optional(found->second) : std::nullopt;
    }

  private:
    std::map<std::pair<const TXmlNode*, std::string>, std::size_t> told_;
};

/// The elements that a fault says are missing; none for a fault of another kind.
std::vector<std::string> MissingOf(const TSchemaFault& fault) {
    if (fault.Code == TSchemaFaultCode::MissingElement)
        return {fault.Name};
    return fault.Code == TSchemaFaultCode::MissingSeveral ? fault.Expected : std::vector<std::string>();
}

/// The sentence for one of the elements that a fault says are missing.
std::string SentenceOfMissing(TSchemaFault fault, const std::string& name) {
    fault.Code = TSchemaFaultCode::MissingElement;
    fault.Name = name;
    return TSchemaMessages::Sentence(fault);
}

/// Adds what the schema finds in the result and nobody has told. What a step has told of a value is said
/// anew, as that step's version may have accepted other codes than the result's. Answers whether it finds
/// nothing.
bool CheckSchema(const IArquivoTiss& arquivo, const TSchemaFolder& schemas, TConversionRun& run) {
    const std::filesystem::path file =
        schemas.Locate(SchemaFileName(TEnumTipoArquivoTiss::taMensagemTISS, arquivo.Versao()));
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored))
        throw ESchemaNotFound(file);
    const auto schema = TSchemaSet::Load(file);
    const std::vector<TSchemaFault> faults = TSchemaValidator(*schema).Validate(*arquivo.Xml());
    const TToldFaults told(run.Notes());
    for (const TSchemaFault& fault : faults) {
        const std::vector<std::string> missing = MissingOf(fault);
        const TXmlNode& parent =
            missing.empty() || fault.Node->LocalName() == fault.Parent ? *fault.Node : *fault.Node->Parent();
        for (const std::string& name : missing)
            if (!told.ContainsMissing(parent, name))
                run.AddBelow(TNote::ntPending, parent, name, {}, SentenceOfMissing(fault, name));
        if (const std::optional<std::size_t> note = told.FindValue(fault))
            run.Notes()[*note].Text = TSchemaMessages::Sentence(fault);
        else if (missing.empty())
            run.Add(TNote::ntPending, *fault.Node, TSchemaMessages::Sentence(fault));
    }
    return faults.empty();
}

} // namespace

TConvertedLote ConvertLote(const IArquivoTiss& arquivo, const std::string& target,
                           const TConversionOptions& options, const TSchemaFolder& schemas) {
    TConversionRun run(options);
    TConvertedLote result;
    result.From = arquivo.Versao();
    result.To = target;
    result.Arquivo = TVersionConverter().Convert(arquivo, target, run);
    RenewHash(*result.Arquivo, run);
    result.Valid = CheckSchema(*result.Arquivo, schemas, run);
    result.Steps = run.Steps();
    result.Notes = run.TakeNotes();
    result.Xml = WriteXml(*result.Arquivo->Xml());
    return result;
}

} // namespace conferix
