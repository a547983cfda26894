#include "convert/version_steps.h"

#include "model/arquivo_tiss_factory.h"

#include "xml/xml_document.h"

#include <fmt/format.h>

#include <charconv>
#include <unordered_set>

namespace conferix {

namespace {

using TNote = TConversionNoteType;

constexpr std::string_view kXmlSignature = "http://www.w3.org/2000/09/xmldsig#";
constexpr int kMaxSequencial = 9999; ///< four digits

/// Numbers items guide by guide, past the numbers that a guide already uses.
class TItemNumbers {
  public:
    std::optional<TFilledValue> Next(const TXmlNode& item) {
        const TXmlNode* guide = GuideOf(item);
        if (guide == nullptr)
            return std::nullopt;
        if (guide != guide_) {
            guide_ = guide;
            last_ = 0;
            used_.clear();
            for (const TXmlNode* number : guide->Descendants("sequencialItem"))
                used_.insert(NumberOf(number->Value()));
        }
        do
            ++last_;
        while (used_.contains(last_));
        if (last_ > kMaxSequencial)
            return std::nullopt;
        return TFilledValue{std::to_string(last_), "O item foi numerado dentro da guia."};
    }

  private:
    static int NumberOf(std::string_view text) {
        int number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        return number;
    }

    const TXmlNode* guide_ = nullptr;
    int last_ = 0;
    std::unordered_set<int> used_;
};

/// Takes the name of the requester out of its old place.
std::optional<TFilledValue> TakeRequester(TXmlNode& parent, TConversionRun& run) {
    TXmlNode* name = parent.Find("contratadoSolicitante/nomeContratado");
    if (name == nullptr || name->TextWithCData().empty())
        return std::nullopt;
    const std::string value = name->TextWithCData();
    run.Add(TNote::ntChange, *name, value, "O valor passa para <nomeContratadoSolicitante>.");
    run.AddLosses(*name, "<nomeContratado> foi retirado; só o seu texto tem novo lugar.", false);
    RemoveElement(*name);
    return TFilledValue{value, "O valor veio de <nomeContratado>."};
}

} // namespace

template<>
void TTissConverterEnvioLoteGuiasOf<"3.02.01">::ConvertRoot(TXmlNode& root, TConversionDirection direction,
                                                            TConversionRun& run) const {
    TXmlNode* signature = root.Child("assinaturaDigital");
    if (direction != TConversionDirection::Up || signature == nullptr)
        return;
    run.Add(TNote::ntChange, *signature, {}, "<assinaturaDigital> passa a ser <Signature>.");
    signature->SetName("ds:Signature");
    signature->SetAttribute("xmlns:ds", kXmlSignature);
}

template<>
void TTissConverterEnvioLoteGuiasOf<"3.02.02">::ConvertRoot(TXmlNode& root, TConversionDirection direction,
                                                            TConversionRun& run) const {
    TXmlNode* signature = root.Child("Signature");
    if (direction != TConversionDirection::Down || signature == nullptr)
        return;
    run.Add(TNote::ntChange, *signature, {}, "<Signature> passa a ser <assinaturaDigital>.");
    signature->SetName("ans:assinaturaDigital");
}

template<>
TFillValue TTissConverterEnvioLoteGuiasOf<"3.03.03">::Filler(TConversionDirection direction,
                                                             TConversionRun& run) const {
    if (direction != TConversionDirection::Up)
        return TTissConverterEnvioLoteGuias::Filler(direction, run);
    return [numbers = TItemNumbers()](TXmlNode& parent,
                                      std::string_view name) mutable -> std::optional<TFilledValue> {
        return name == "sequencialItem" ? numbers.Next(parent) : std::nullopt;
    };
}

template<>
TFillValue TTissConverterEnvioLoteGuiasOf<"3.05.00">::Filler(TConversionDirection direction,
                                                             TConversionRun& run) const {
    if (direction != TConversionDirection::Up)
        return TTissConverterEnvioLoteGuias::Filler(direction, run);
    return [&run](TXmlNode& parent, std::string_view name) -> std::optional<TFilledValue> {
        if (name == "nomeContratadoSolicitante")
            return TakeRequester(parent, run);
        const std::string& regime = run.Options().RegimeAtendimento;
        if (name == "regimeAtendimento" && !regime.empty())
            return TFilledValue{regime, "O regime de atendimento foi preenchido como escolhido."};
        return std::nullopt;
    };
}

std::vector<std::shared_ptr<const IVersionConverter>> MakeVersionConverters() {
    std::vector<std::shared_ptr<const IVersionConverter>> steps;
#define CONFERIX_STEP(major, minor, patch, Root, prefix, conversion)                                         \
    if constexpr (TConversionSteps::conversion != TConversionSteps::None)                                    \
        steps.push_back(std::make_shared<TTissConverterEnvioLoteGuiasOf<#major "." #minor "." #patch>>());
    CONFERIX_TISS_VERSIONS(CONFERIX_STEP)
#undef CONFERIX_STEP
    return steps;
}

} // namespace conferix
