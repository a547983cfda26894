#include "convert/version_step.h"

#include "convert/root_attributes.h"
#include "model/arquivo_tiss_factory.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>

#include <algorithm>

namespace conferix {

namespace {

/// The target version must serve billing messages.
void RequireMessage(const IArquivoTiss& arquivo, std::string_view from, std::string_view to) {
    const auto refuse = [&] {
        throw EConversionNotSupported(
            fmt::format("Conversão não suportada para esse tipo de arquivo ({}). {} -> {}",
                        NameOf(arquivo.TipoArquivo()), from, to));
    };
    const TArquivoTissClass* target = TArquivoTissFactory().GetArquivoTissClass(to);
    if (target == nullptr || target->Tipo != arquivo.TipoArquivo() ||
        target->Tipo != TEnumTipoArquivoTiss::taMensagemTISS)
        refuse();
}

/// Writes the version into the header, under the name that it has there.
void WriteVersion(const IArquivoTiss& arquivo, std::string_view from, std::string_view to,
                  TConversionRun& run) {
    TXmlNode* root = arquivo.Xml()->Element();
    TXmlNode* version = root->Find("cabecalho/Padrao");
    if (version == nullptr)
        version = root->Find("cabecalho/versaoPadrao");
    if (version == nullptr)
        return;
    version->SetValue(to);
    run.Add(TConversionNoteType::ntChange, *version, std::string(from),
            fmt::format("A versão passa a ser {}.", to));
}

} // namespace

std::string IVersionConverter::Up(const IArquivoTiss& arquivo, TConversionRun& run) const {
    return Convert(arquivo, TConversionDirection::Up, run) ? WriteXml(*arquivo.Xml()) : std::string();
}

std::string IVersionConverter::Down(const IArquivoTiss& arquivo, TConversionRun& run) const {
    return Convert(arquivo, TConversionDirection::Down, run) ? WriteXml(*arquivo.Xml()) : std::string();
}

std::string_view TTissConverterEnvioLoteGuias::NextVersion() const {
    const auto versions = TArquivoTissFactory::Classes();
    const auto own = std::ranges::find(versions, Version(), &TArquivoTissClass::Versao);
    const auto next = std::next(own);
    return next != versions.end() && next->Conversion != TConversionSteps::None ? next->Versao
                                                                                : std::string_view{};
}

std::string_view TTissConverterEnvioLoteGuias::PreviousVersion() const {
    const auto versions = TArquivoTissFactory::Classes();
    const auto own = std::ranges::find(versions, Version(), &TArquivoTissClass::Versao);
    return own->Conversion == TConversionSteps::UpDown ? std::prev(own)->Versao : std::string_view{};
}

bool TTissConverterEnvioLoteGuias::Convert(const IArquivoTiss& arquivo, TConversionDirection direction,
                                           TConversionRun& run) const {
    const std::string_view target = direction == TConversionDirection::Up ? NextVersion() : PreviousVersion();
    if (target.empty())
        return false;
    if (arquivo.TipoTransacao() != TipoTransacao())
        throw EConversionNotSupported(
            fmt::format("Conversão não suportada para esse tipo de transação ({}). {} -> {}",
                        NameOf(arquivo.TipoTransacao()), Version(), target));
    RequireMessage(arquivo, Version(), target);
    run.StartStep(Version(), target);
    RewriteRootAttributes(*arquivo.Xml(), target, run);
    WriteVersion(arquivo, Version(), target, run);
    TXmlNode& root = *arquivo.Xml()->Element();
    ConvertRoot(root, direction, run);
    TTreeConverter(Change(direction), run, Filler(direction, run)).Convert(root);
    return true;
}

TFillValue TTissConverterEnvioLoteGuias::Filler(TConversionDirection /*direction*/,
                                                TConversionRun& /*run*/) const {
    return [](TXmlNode&, std::string_view) { return std::optional<TFilledValue>(); };
}

void TTissConverterEnvioLoteGuias::ConvertRoot(TXmlNode& /*root*/, TConversionDirection /*direction*/,
                                               TConversionRun& /*run*/) const {}

const TVersionChange& TTissConverterEnvioLoteGuias::Change(TConversionDirection direction) const {
    const bool up = direction == TConversionDirection::Up;
    std::unique_ptr<const TVersionChange>& change = up ? up_ : down_;
    const std::lock_guard lock(mutex_);
    if (change == nullptr)
        change = std::make_unique<const TVersionChange>(
            MessageModel(), std::string(Version()), std::string(up ? NextVersion() : PreviousVersion()),
            std::vector<std::string>{"prestadorParaOperadora", "loteGuias"});
    return *change;
}

} // namespace conferix
