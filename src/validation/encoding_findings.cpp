#include "validation/encoding_findings.h"

#include "model/arquivo_tiss_factory.h"
#include "model/tiss_exceptions.h"
#include "validation/hash_calculator.h"
#include "xml/cut_text.h"
#include "xml/lower_case.h"
#include "xml/xml_parser.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

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
        return " O hash informado não confere com o texto certo.";
    } catch (const ETissException&) { // no file of the standard; that is told elsewhere
        return {};
    }
}

using TTextPtr = std::shared_ptr<const std::string>;

/// The characters of some findings with their lines; the rest as a number.
std::string CharactersOf(const TXmlMessages& findings) {
    constexpr std::size_t kNamed = 5;
    std::string named;
    for (std::size_t i = 0; i < std::min(findings.size(), kNamed); ++i)
        named += fmt::format("{}{} na linha {}", i == 0 ? "" : ", ", QuoteText(findings[i]->SrcText()),
                             findings[i]->Line());
    return findings.size() > kNamed ? fmt::format("{} e mais {}", named, findings.size() - kNamed) : named;
}

/// Corrections that write a text in another encoding.
class TOffers {
  public:
    explicit TOffers(TTextPtr text) : text_(std::move(text)) {}

    /// True when an encoding holds all characters of the text.
    bool Fits(std::string_view encoding) const {
        try {
            return RecodeXml(*text_, encoding).Replaced.empty();
        } catch (const EXmlEncoding&) {
            return false;
        }
    }
    /// Offers an encoding; one that cannot hold the text is an obstacle.
    void Add(const std::string& description, const std::string& encoding) {
        try {
            const TXmlMessages replaced = RecodeXml(*text_, encoding).Replaced;
            solvers_.push_back(std::make_shared<TEncodingSolver>(
                replaced.empty() ? description
                                 : fmt::format("{} (ficam como referências, por não existirem nessa "
                                               "codificação: {})",
                                               description, CharactersOf(replaced)),
                [text = text_, encoding] { return RecodeXml(*text, encoding).Text; },
                EncodingToWrite(DeclareEncoding({}, encoding), {})));
        } catch (const EXmlEncoding& error) {
            TXmlMessages unwritable;
            for (const auto& message : error.Messages())
                if (message->MsgType() == TMessageType::mtError)
                    unwritable.push_back(message);
            obstacles_ += fmt::format(" Em {} não pode ser gravado, por ter o que não existe nela, onde não "
                                      "cabe uma referência: {}.",
                                      encoding, CharactersOf(unwritable));
        }
    }
    /// Offers to write the text as the file was held.
    void AddAsItIs(std::string description, const TXmlEncoding& encoding) {
        solvers_.push_back(std::make_shared<TEncodingSolver>(
            std::move(description), [text = text_] { return *text; },
            TXmlEncoding{encoding.Name, encoding.Bom, nullptr}));
    }

    /// Sentences, each with a space before it.
    const std::string& Obstacles() const { return obstacles_; }
    void Give(TXmlMessage& message) {
        for (auto& solver : solvers_)
            message.AddSolver(std::move(solver));
    }

  private:
    TTextPtr text_;
    std::vector<std::shared_ptr<ISolver>> solvers_;
    std::string obstacles_;
};

std::shared_ptr<TXmlMessage> Misread(const std::string& sentence, const TXmlMisreading& misreading,
                                     TOffers& offers) {
    auto message =
        TXmlMessage::CreateWarn(sentence + offers.Obstacles(), CutText(misreading.Read),
                                misreading.Place.Line, misreading.Place.LinePos, misreading.Place.FilePos);
    message->SetKind(TFindingKind::Misread);
    offers.Give(*message);
    return message;
}

/// Where letters stand that were read as they were meant, as a sentence with a space before it; empty for
/// none. `where`: in what they are.
std::string KeptSentence(const TXmlMisreading& misreading, const std::string& where) {
    return misreading.Kept.empty() ? std::string()
                                   : fmt::format(" {} {}, como as de {} na linha {}.",
                                                 misreading.Partly ? "Outras letras" : "Só algumas letras",
                                                 where, QuoteText(misreading.Kept), misreading.KeptLine);
}

std::shared_ptr<TXmlMessage> Utf8AsOneByte(const TXmlMisreading& misreading, const TTextPtr& text) {
    const auto meant = std::make_shared<const std::string>(MeantText(*text, misreading));
    const bool whole = misreading.Kept.empty();
    TOffers offers(meant);
    // Some encodings that are declared by mistake lack the letters of Portuguese.
    const bool isIso = misreading.Page == EncodingToWrite(DeclareEncoding({}, kIso), {}).Name;
    const std::string target(isIso || offers.Fits(misreading.Declared) ? misreading.Declared : kIso);
    offers.Add(fmt::format("Gravar o arquivo em {}", target), target);
    offers.Add(whole ? "Declarar UTF-8" : "Gravar o arquivo em UTF-8", std::string(kUtf8));
    return Misread(
        fmt::format("O arquivo declara a codificação {}, mas {} em UTF-8: lê-se {} onde deve estar "
                    "{}.{}{} Grave o arquivo em {}, ou {}.",
                    misreading.Declared,
                    whole               ? "foi gravado"
                    : misreading.Partly ? "uma parte dele foi gravada"
                                        : "foi gravado quase todo",
                    QuoteText(misreading.Read), QuoteText(misreading.Meant),
                    KeptSentence(misreading, "estão mesmo em " + misreading.Declared), HashSentence(*meant),
                    target, whole ? "declare encoding=\"UTF-8\"" : "todo ele em UTF-8"),
        misreading, offers);
}

std::shared_ptr<TXmlMessage> Utf8Twice(const TXmlMisreading& misreading, const TXmlEncoding& encoding,
                                       const TTextPtr& text) {
    const auto meant = std::make_shared<const std::string>(MeantText(*text, misreading));
    TOffers offers(meant);
    offers.AddAsItIs("Gravar o arquivo com as letras certas", encoding);
    offers.Add("Gravar o arquivo com as letras certas em ISO-8859-1", std::string(kIso));
    return Misread(fmt::format("{} em UTF-8 duas vezes: lê-se {} onde deve estar {}.{}{} Grave o arquivo com "
                               "as letras certas, e peça a quem faz o sistema que grave em UTF-8 uma só vez.",
                               misreading.Kept.empty() ? "O texto do arquivo foi gravado"
                               : misreading.Partly     ? "Uma parte do texto do arquivo foi gravada"
                                                       : "Quase todo o texto do arquivo foi gravado",
                               QuoteText(misreading.Read), QuoteText(misreading.Meant),
                               KeptSentence(misreading, "estão certas"), HashSentence(*meant)),
                   misreading, offers);
}

std::shared_ptr<TXmlMessage> Guessed(const TXmlMisreading& misreading, const TXmlEncoding& encoding,
                                     const TTextPtr& text) {
    const TXmlMessage& fault = *encoding.Fault;
    const bool isUtf8 = encoding.Name == kUtf8;
    TOffers offers(text);
    const auto offer = [&offers](const char* description, std::string_view target) {
        offers.Add(description, std::string(target));
    };
    if (encoding.Mixed) {
        offer("Gravar em UTF-8", kUtf8);
        offer("Gravar em ISO-8859-1", kIso);
    } else if (EncodingToWrite(*text, {}).Name == encoding.Name) {
        // The bytes are what the declaration says; only the mark before them is wrong.
        offer("Gravar em ISO-8859-1, sem a marca", kIso);
        offer("Gravar em UTF-8, sem a marca", kUtf8);
    } else {
        offer(isUtf8 ? "Declarar UTF-8" : "Gravar em UTF-8", kUtf8);
        offer(isUtf8 ? "Gravar em ISO-8859-1" : "Declarar ISO-8859-1", kIso);
    }
    auto message = TXmlMessage::CreateError(
        (encoding.Mixed
             ? fmt::format("{} Outras letras estão em UTF-8. Cada uma foi lida na codificação em que está.",
                           fault.Reason())
             : fmt::format("{} Foi lido em {}: {}.", fault.Reason(), isUtf8 ? kUtf8 : kIso,
                           QuoteText(misreading.Read))) +
            offers.Obstacles(),
        CutText(misreading.Read), fault.Line(), fault.LinePos(), fault.FilePos());
    offers.Give(*message);
    return message;
}

std::shared_ptr<TXmlMessage> BomAgainstDeclaration(const TXmlMisreading& misreading,
                                                   const TXmlEncoding& encoding, const TTextPtr& text) {
    const bool wide = encoding.Name != kUtf8;
    const std::string without = encoding.Bom ? ", sem a marca" : "";
    TOffers offers(text);
    offers.Add("Gravar em UTF-8" + without, std::string(kUtf8));
    offers.Add("Gravar em ISO-8859-1" + without, std::string(kIso));
    const std::string declared = CutText(misreading.Declared);
    std::string advice = wide ? fmt::format("Grave o arquivo em {}{}", declared, without)
                              : fmt::format("Declare encoding=\"{}\"", encoding.Name);
    // UTF-16 would need another mark.
    if (!wide && !LowerCase(declared).starts_with("utf-16"))
        advice += fmt::format(" ou grave o arquivo em {}{}", declared, without);
    auto message = TXmlMessage::CreateWarn(
        fmt::format("{} {}, mas declara a codificação {}. Foi lido como {}; outros leitores podem recusá-lo, "
                    "ou lê-lo de outro modo e achar outro hash. {}.{}",
                    encoding.Bom ? "O arquivo começa com a marca de" : "O arquivo está gravado em",
                    encoding.Name + (encoding.Bom ? " (BOM)" : ""), declared, encoding.Name, advice,
                    offers.Obstacles()),
        misreading.Declared, 1, 1, 0);
    offers.Give(*message);
    return message;
}

} // namespace

TXmlMessages FindEncodingFaults(const std::shared_ptr<const std::string>& text, const TXmlEncoding& encoding,
                                const std::optional<TXmlMisreading>& misreading) {
    TXmlMessages messages;
    if (misreading) {
        switch (misreading->Kind) {
        case TXmlMisreading::TKind::Utf8AsOneByte:
            messages.push_back(Utf8AsOneByte(*misreading, text));
            break;
        case TXmlMisreading::TKind::Utf8Twice:
            messages.push_back(Utf8Twice(*misreading, encoding, text));
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
