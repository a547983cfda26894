#include "convert/version_converter.h"

#include "convert/version_steps.h"
#include "model/arquivo_tiss_factory.h"
#include "xml/xml_parser.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace conferix {

namespace {

/// The steps keep the differences of their versions once they have been derived.
std::shared_ptr<const std::vector<std::shared_ptr<const IVersionConverter>>> SharedConverters() {
    static const auto steps = std::make_shared<const std::vector<std::shared_ptr<const IVersionConverter>>>(
        MakeVersionConverters());
    return steps;
}

/// A loaded copy of a file; positions of its tree are those of the text that the file was read from.
std::shared_ptr<IArquivoTiss> CopyOf(const IArquivoTiss& arquivo) {
    const TXmlDocument& document = *arquivo.Xml();
    const TXmlParseResult parsed = TXmlParser::Parse(
        document.Changed() ? std::make_shared<const std::string>(WriteXml(document)) : document.SharedText());
    if (parsed.Document == nullptr)
        throw EConversionNotSupported(parsed.Messages.front()->Msg());
    return TArquivoTissFactory().GetNewArquivoTiss(parsed.Document);
}

/// Whoever signed the file did not sign what it becomes.
void NoteSignatures(const IArquivoTiss& arquivo, TConversionRun& run) {
    const auto note = [&run](const TXmlNode& signature, const char* text) {
        run.Add(TConversionNoteType::ntPending, signature, {}, text).Node = nullptr;
    };
    const TXmlNode& root = *arquivo.Xml()->Element();
    for (const TXmlNode& child : root.ChildTags())
        if (child.LocalName() == "assinaturaDigital" || child.LocalName() == "Signature")
            note(child, "A assinatura digital não vale para o arquivo convertido. Assine-o de novo.");
    const TXmlNode* guides = root.Find("prestadorParaOperadora/loteGuias/guiasTISS");
    if (guides == nullptr)
        return;
    for (const TXmlNode& guide : guides->ChildTags())
        if (const TXmlNode* signature = guide.Child("assinaturaDigitalGuia"))
            note(*signature,
                 "A assinatura digital da guia não vale para o arquivo convertido. Assine-a de novo.");
}

} // namespace

TVersionConverter::TVersionConverter() : converters_(SharedConverters()) {}

const IVersionConverter* TVersionConverter::FindStep(TEnumTipoTransacaoTiss type,
                                                     std::string_view versao) const {
    const auto found = std::find_if(converters_->begin(), converters_->end(), [&](const auto& step) {
        return step->TipoTransacao() == type && step->Version() == versao;
    });
    return found != converters_->end() ? found->get() : nullptr;
}

std::vector<std::string> TVersionConverter::NextVersions(TEnumTipoTransacaoTiss type,
                                                         std::string_view versao) const {
    std::vector<std::string> versions;
    for (const IVersionConverter* step = FindStep(type, versao);
         step != nullptr && !step->NextVersion().empty(); step = FindStep(type, versions.back()))
        versions.emplace_back(step->NextVersion());
    return versions;
}

std::vector<std::string> TVersionConverter::PreviousVersions(TEnumTipoTransacaoTiss type,
                                                             std::string_view versao) const {
    std::vector<std::string> versions;
    for (const IVersionConverter* step = FindStep(type, versao);
         step != nullptr && !step->PreviousVersion().empty(); step = FindStep(type, versions.back()))
        versions.emplace_back(step->PreviousVersion());
    return versions;
}

void TVersionConverter::RequireConvertible(const IArquivoTiss& arquivo, std::string_view target) const {
    if (arquivo.TipoTransacao() != TEnumTipoTransacaoTiss::tmEnvioLoteGuias)
        throw EConversionNotSupported(fmt::format(
            "Conversão não suportada para esse tipo de transação ({}). {}{}{}",
            NameOf(arquivo.TipoTransacao()), arquivo.Versao(), target.empty() ? "" : " -> ", target));
    if (FindStep(arquivo.TipoTransacao(), arquivo.Versao()) == nullptr)
        throw EConversionNotSupported(fmt::format(
            "Conversão não suportada a partir da versão {}. São convertidas as versões de {} a {}.",
            arquivo.Versao(), converters_->front()->Version(), converters_->back()->Version()));
}

std::shared_ptr<const IArquivoTiss> TVersionConverter::Run(const IArquivoTiss& arquivo,
                                                           std::string_view target,
                                                           TConversionDirection direction,
                                                           TConversionRun& run) const {
    RequireConvertible(arquivo, target);
    const std::vector<std::string> up = NextVersions(arquivo.TipoTransacao(), arquivo.Versao());
    const std::vector<std::string> down = PreviousVersions(arquivo.TipoTransacao(), arquivo.Versao());
    const std::vector<std::string>& reachable = direction == TConversionDirection::Up ? up : down;
    if (std::find(reachable.begin(), reachable.end(), target) == reachable.end())
        throw EConversionNotSupported(
            fmt::format("Conversão não suportada: {} -> {}. A partir de {} são possíveis: {}{}{}.",
                        arquivo.Versao(), target, arquivo.Versao(), fmt::join(up, ", "),
                        up.empty() || down.empty() ? "" : ", ", fmt::join(down, ", ")));
    const TArquivoTissFactory factory;
    std::shared_ptr<const IArquivoTiss> current = CopyOf(arquivo);
    do {
        const IVersionConverter& step = *FindStep(current->TipoTransacao(), current->Versao());
        const bool first = run.Steps().empty();
        step.Convert(*current, direction, run);
        current = factory.GetNewArquivoTiss(current->Xml());
        if (first)
            NoteSignatures(*current, run);
        if (observer_)
            observer_(current->Versao(), current);
    } while (current->Versao() != target);
    return current;
}

std::string TVersionConverter::ConvertUp(const IArquivoTiss& arquivo, std::string_view target,
                                         TConversionRun& run) const {
    return WriteXml(*Run(arquivo, target, TConversionDirection::Up, run)->Xml());
}

std::string TVersionConverter::ConvertDown(const IArquivoTiss& arquivo, std::string_view target,
                                           TConversionRun& run) const {
    return WriteXml(*Run(arquivo, target, TConversionDirection::Down, run)->Xml());
}

std::shared_ptr<const IArquivoTiss>
TVersionConverter::Convert(const IArquivoTiss& arquivo, std::string_view target, TConversionRun& run) const {
    // Versions are compared as text, which is their order.
    const bool up = target > arquivo.Versao();
    return Run(arquivo, target, up ? TConversionDirection::Up : TConversionDirection::Down, run);
}

} // namespace conferix
