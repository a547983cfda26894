#include "validation/encoding_findings.h"

#include "model/arquivo_tiss_factory.h"
#include "model/tiss_exceptions.h"
#include "validation/hash_calculator.h"
#include "xml/cut_text.h"
#include "xml/lower_case.h"
#include "xml/xml_parser.h"

#include <fmt/format.h>

namespace conferix {

namespace {

constexpr std::string_view kIso = "ISO-8859-1";
constexpr std::string_view kUtf8 = "UTF-8";

/// What is said of the stored hash of a text that was misread; empty where there is none to judge.
std::string HashSentence(const std::string& meant) {
    const TXmlParseResult parsed = TXmlParser::Parse(meant);
    if (parsed.Document == nullptr)
        return {};
    try {
        const auto file = TArquivoTissFactory().GetNewArquivoTiss(parsed.Document);
        const std::string stored = LowerCase(file->Hash());
        if (stored.empty())
            return {};
        const auto [iso, utf8] = THashCalculator::CalculateBoth(*parsed.Document);
        if (stored == iso)
            return " O hash informado confere com o texto certo.";
        if (stored == utf8)
            return " O hash informado confere com o texto certo, calculado em UTF-8.";
        return " O hash informado não confere, nem com o texto certo.";
    } catch (const ETissException&) { // no file of the standard; that is told elsewhere
        return {};
    }
}

using TTextPtr = std::shared_ptr<const std::string>;

bool CanBeWritten(const std::string& text) {
    try {
        EncodeXml(text, {});
        return true;
    } catch (const EXmlEncoding&) {
        return false;
    }
}

/// Offers to write a text in another encoding, unless that cannot hold it.
void Offer(TXmlMessage& message, std::string description, const TTextPtr& text, std::string_view encoding) {
    try {
        RecodeXml(*text, encoding);
    } catch (const EXmlEncoding&) {
        return;
    }
    message.AddSolver(std::make_shared<TEncodingSolver>(
        std::move(description), [text, encoding] { return RecodeXml(*text, encoding).Text; },
        EncodingToWrite(DeclareEncoding({}, encoding), {})));
}

std::shared_ptr<TXmlMessage> Utf8AsAnsi(const TXmlMisreading& misreading, const TTextPtr& text) {
    const auto meant = std::make_shared<const std::string>(MeantText(*text, misreading.Kind));
    const bool whole = misreading.Kept.empty();
    auto message = TXmlMessage::CreateWarn(
        fmt::format(
            "O arquivo declara a codificação {0}, mas {1} em UTF-8: lê-se {2} onde deve estar {3}.{4}{5} "
            "Grave o arquivo em {0}, ou {6}.",
            misreading.Declared,
            whole               ? "foi gravado"
            : misreading.Partly ? "uma parte dele foi gravada"
                                : "foi gravado quase todo",
            QuoteText(misreading.Read), QuoteText(misreading.Meant),
            whole ? std::string()
                  : fmt::format(" {} estão mesmo em {}, como as de {} na linha {}.",
                                misreading.Partly ? "Outras letras" : "Só algumas letras",
                                misreading.Declared, QuoteText(misreading.Kept), misreading.KeptLine),
            HashSentence(*meant), whole ? "declare encoding=\"UTF-8\"" : "todo ele em UTF-8"),
        CutText(misreading.Read), misreading.Place.Line, misreading.Place.LinePos, misreading.Place.FilePos);
    message->SetKind(TFindingKind::Misread);
    if (CanBeWritten(*meant))
        message->AddSolver(std::make_shared<TEncodingSolver>(
            fmt::format("Gravar o arquivo em {}", misreading.Declared), [meant] { return *meant; },
            EncodingToWrite(*meant, {})));
    Offer(*message, whole ? "Declarar UTF-8" : "Gravar o arquivo em UTF-8", meant, kUtf8);
    return message;
}

std::shared_ptr<TXmlMessage> Guessed(const TXmlMisreading& misreading, const TXmlEncoding& encoding,
                                     const TTextPtr& text) {
    const TXmlMessage& fault = *encoding.Fault;
    const bool isUtf8 = encoding.Name == kUtf8;
    auto message = TXmlMessage::CreateError(
        encoding.Mixed
            ? fmt::format("{} Outras letras estão em UTF-8. Cada uma foi lida na codificação em que está.",
                          fault.Reason())
            : fmt::format("{} Foi lido em {}: {}.", fault.Reason(), isUtf8 ? kUtf8 : kIso,
                          QuoteText(misreading.Read)),
        CutText(misreading.Read), fault.Line(), fault.LinePos(), fault.FilePos());
    if (encoding.Mixed) {
        Offer(*message, "Gravar em UTF-8", text, kUtf8);
        Offer(*message, "Gravar em ISO-8859-1", text, kIso);
        return message;
    }
    if (EncodingToWrite(*text, {}).Name == encoding.Name) {
        // The bytes are what the declaration says; only the mark before them is wrong.
        Offer(*message, "Gravar em ISO-8859-1, sem a marca", text, kIso);
        Offer(*message, "Gravar em UTF-8, sem a marca", text, kUtf8);
        return message;
    }
    Offer(*message, isUtf8 ? "Declarar UTF-8" : "Gravar em UTF-8", text, kUtf8);
    Offer(*message, isUtf8 ? "Gravar em ISO-8859-1" : "Declarar ISO-8859-1", text, kIso);
    return message;
}

std::shared_ptr<TXmlMessage> BomAgainstDeclaration(const TXmlMisreading& misreading,
                                                   const TXmlEncoding& encoding, const TTextPtr& text) {
    const bool wide = encoding.Name != kUtf8;
    auto message = TXmlMessage::CreateWarn(
        fmt::format("O arquivo começa com a marca de {0} (BOM), mas declara a codificação {1}. Foi lido "
                    "como {0}; outros leitores podem recusá-lo, ou lê-lo de outro modo e achar outro hash. "
                    "{2} em {1}, sem a marca.",
                    encoding.Name, CutText(misreading.Declared),
                    wide ? std::string("Grave o arquivo")
                         : fmt::format("Declare encoding=\"{}\" ou grave o arquivo", encoding.Name)),
        misreading.Declared, 1, 1, 0);
    Offer(*message, "Gravar em UTF-8, sem a marca", text, kUtf8);
    Offer(*message, "Gravar em ISO-8859-1, sem a marca", text, kIso);
    return message;
}

} // namespace

TXmlMessages FindEncodingFaults(const std::shared_ptr<const std::string>& text,
                                const TXmlEncoding& encoding) {
    TXmlMessages messages;
    if (const auto misreading = FindMisreading(*text, encoding)) {
        switch (misreading->Kind) {
        case TXmlMisreading::TKind::Utf8AsAnsi:
            messages.push_back(Utf8AsAnsi(*misreading, text));
            break;
        case TXmlMisreading::TKind::Guessed:
            messages.push_back(Guessed(*misreading, encoding, text));
            break;
        case TXmlMisreading::TKind::BomAgainstDeclaration:
            messages.push_back(BomAgainstDeclaration(*misreading, encoding, text));
            break;
        }
    }
    if (DeclaredVersion(*text) == "1.1")
        messages.push_back(TXmlMessage::CreateWarn(
            "O arquivo declara a versão 1.1 do XML, que muitos leitores recusam. Declare version=\"1.0\".",
            "1.1", 1, 1, 0));
    return messages;
}

} // namespace conferix
