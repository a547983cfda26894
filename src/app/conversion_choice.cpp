#include "app/conversion_choice.h"

#include "convert/version_converter.h"
#include "xml/cut_text.h"
#include "xml/xml_document.h"
#include "xml/xml_parser.h"

#include <fmt/format.h>

#include <unordered_map>

namespace conferix {

namespace {

constexpr std::string_view kFirstWithRegime = "4.00.00";

/// Where the elements of a tree stand in the text that was written from it. Elements are found again by
/// their number in document order, which writing does not change.
class TPlaces {
  public:
    TPlaces(const TXmlDocument& tree, const std::shared_ptr<const TXmlDocument>& written)
        : written_(written) {
        std::vector<const TXmlNode*> tags;
        for (const TXmlNode* tag = FirstTag(*written_); tag != nullptr; tag = NextTag(*tag, *written_))
            tags.push_back(tag);
        std::size_t number = 0;
        for (const TXmlNode* tag = FirstTag(tree); tag != nullptr && number < tags.size();
             tag = NextTag(*tag, tree))
            places_.emplace(tag, tags[number++]);
    }

    /// Of an element, or of the nearest one around it that was written; null when there is none.
    const TXmlNode* Of(const TXmlNode* node) const {
        for (; node != nullptr; node = node->Parent())
            if (const auto place = places_.find(node); place != places_.end())
                return place->second;
        return nullptr;
    }

  private:
    static const TXmlNode* FirstTag(const TXmlDocument& tree) { return NextTag(tree.Root(), tree); }
    static const TXmlNode* NextTag(const TXmlNode& node, const TXmlDocument& tree) {
        const TXmlNode* next = node.NextInWalk(&tree.Root());
        while (next != nullptr && !next->IsTag())
            next = next->NextInWalk(&tree.Root());
        return next;
    }

    std::shared_ptr<const TXmlDocument> written_;
    std::unordered_map<const TXmlNode*, const TXmlNode*> places_;
};

std::string_view LabelOf(TConversionNoteType type) {
    switch (type) {
    case TConversionNoteType::ntLoss:
        return "Perda";
    case TConversionNoteType::ntPending:
        return "Pendência";
    case TConversionNoteType::ntChange:
        return "Mudança";
    }
    return "";
}

/// A finding about a guide that comes from no rule.
class TConversionMessage : public TXmlMessage {
  public:
    TConversionMessage(const TConversionNote& note, const TXmlNode* place)
        : TXmlMessage(TMessageOrigin{nullptr, note.Guia, {}},
                      note.Type == TConversionNoteType::ntChange ? TMessageType::mtInformation
                                                                 : TMessageType::mtWarning,
                      Reason(note), {}, place != nullptr ? place->Line() : 0,
                      place != nullptr ? place->LinePos() : 0, place != nullptr ? place->FilePos() : 0) {}

  private:
    static std::string Reason(const TConversionNote& note) {
        return fmt::format("{} na conversão ({}), {}: {}{}", LabelOf(note.Type), note.Step, note.Element,
                           note.Text,
                           note.Value.empty() ? "" : fmt::format(" Valor: \"{}\".", CutText(note.Value)));
    }
};

} // namespace

TConversionChoice::TConversionChoice(const IArquivoTiss& arquivo) : versao_(arquivo.Versao()) {
    const TVersionConverter converter;
    converter.RequireConvertible(arquivo, "");
    targets_ = converter.NextVersions(arquivo.TipoTransacao(), versao_);
    const std::vector<std::string> earlier = converter.PreviousVersions(arquivo.TipoTransacao(), versao_);
    targets_.insert(targets_.end(), earlier.begin(), earlier.end());
    if (targets_.empty())
        throw EConversionNotSupported(
            fmt::format("Não há versões para as quais um lote da versão {} possa ser convertido.", versao_));
}

bool TConversionChoice::AsksRegime(std::string_view target) const {
    return versao_ < kFirstWithRegime && target >= kFirstWithRegime;
}

TXmlMessages MessagesOf(const TConvertedLote& lote) {
    TXmlMessages messages;
    const auto text = std::make_shared<const std::string>(lote.Xml);
    const TPlaces places(*lote.Arquivo->Xml(), TXmlParser::Parse(text).Document);
    messages.reserve(lote.Notes.size());
    for (const TConversionNote& note : lote.Notes)
        messages.push_back(std::make_shared<TConversionMessage>(note, places.Of(note.Node)));
    return messages;
}

} // namespace conferix
