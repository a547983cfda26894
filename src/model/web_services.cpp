#include "model/web_services.h"

#include "xml/cut_text.h"

#include <fmt/format.h>

#include <string_view>

namespace conferix {

namespace {

bool IsMessage(const TXmlNode& node) {
    return node.LocalName() == "mensagemTISS" || node.LocalName() == "mensagemEnvioANS";
}

/// The messages of the web services, which end in "WS", and the faults that they answer.
bool IsServiceMessage(const TXmlNode& node) {
    return node.LocalName().ends_with("WS");
}

} // namespace

std::string WebServiceHint(const TXmlDocument& document) {
    const TXmlNode& element = *document.Element();
    const bool envelope =
        element.LocalName() == "Envelope" && NamespaceOf(element).find("soap") != std::string_view::npos;
    if (!envelope && !IsServiceMessage(element))
        return {};
    const TXmlNode* message = nullptr;
    const TXmlNode* service = envelope ? nullptr : &element;
    for (const TXmlNode* node = &element; node != nullptr && message == nullptr;
         node = node->NextInWalk(&element)) {
        if (!node->IsTag())
            continue;
        if (service == nullptr && IsServiceMessage(*node))
            service = node;
        if (IsMessage(*node))
            message = node;
    }
    std::string what = envelope ? "O arquivo é um envelope SOAP, o que um web service envia ou responde" : "";
    if (service != nullptr)
        what += fmt::format("{} a mensagem <{}> dos web services do TISS", envelope ? ", com" : "O arquivo é",
                            CutText(service->LocalName()));
    if (message != nullptr)
        return fmt::format("{}. O que se valida é a mensagem de dentro, <{}>, na linha {}: salve-a em um "
                           "arquivo e abra esse arquivo.",
                           what, message->LocalName(), message->Line());
    return what +
           ". O que se valida é o arquivo XML da mensagem, com raiz <mensagemTISS>: abra esse arquivo, "
           "ou peça-o a quem o gerou.";
}

} // namespace conferix
