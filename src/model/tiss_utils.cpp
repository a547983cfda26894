#include "model/tiss_utils.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace conferix {

namespace {

std::string_view FirstText(const TXmlDocument& document, std::string_view localName) {
    return ValueOf(document.Root().FirstDescendant(localName));
}

/// Text of the first of the names that is a child of a provider's identification.
std::string_view PrestadorText(const TXmlDocument& document, std::initializer_list<std::string_view> names) {
    for (const TXmlNode* identification : document.Root().Descendants("identificacaoPrestador"))
        for (const std::string_view name : names)
            if (const TXmlNode* child = identification->Child(name); child != nullptr)
                return child->Value();
    return {};
}

/// Elements that hold a contracted provider's identification and name.
bool IsContratado(const TXmlNode& node) {
    static constexpr std::array<std::string_view, 7> kNames = {
        "contratado",          "dadosContratado",         "contratadoExecutante", "dadosContratadoExecutante",
        "prestadorExecutante", "identificacaoExecutante", "dadosExecutante"};
    return std::ranges::find(kNames, node.LocalName()) != kNames.end() &&
           node.Parent()->LocalName() != "dadosSolicitante";
}

/// The name in such an element; null when there is none. The fees guides of 3.x have their own element.
const TXmlNode* NomeDoContratado(const TXmlNode& contratado) {
    const TXmlNode* nome = contratado.Child("nomeContratado");
    if (nome == nullptr && contratado.LocalName() == "dadosContratadoExecutante")
        nome = contratado.Child("nomeContratadoExecutante");
    return nome;
}

} // namespace

std::string_view TTissUtils::VersaoTiss2(const TXmlDocument& document) {
    for (const std::string_view path :
         {"mensagemTISS/cabecalho/Padrao", "mensagemTISS/cabecalho/versaoPadrao",
          "mensagemEnvioANS/cabecalho/versaoPadrao"})
        if (const TXmlNode* node = document.Root().Find(path); node != nullptr)
            return node->Value();
    return {};
}

std::string_view TTissUtils::VersaoTiss(const TXmlDocument& document) {
    const TXmlNode& root = document.Root();
    for (const TXmlNode* node = root.NextInWalk(&root); node != nullptr; node = node->NextInWalk(&root))
        if (node->IsTag() && node->QualifiedName().ends_with("Padrao"))
            return node->Value();
    return {};
}

std::string_view TTissUtils::TipoTransacao(const TXmlDocument& document) {
    return FirstText(document, "tipoTransacao");
}

std::string_view TTissUtils::SequencialTransacao(const TXmlDocument& document) {
    return FirstText(document, "sequencialTransacao");
}

std::string_view TTissUtils::DataRegistroTransacao(const TXmlDocument& document) {
    return FirstText(document, "dataRegistroTransacao");
}

std::string_view TTissUtils::HoraRegistroTransacao(const TXmlDocument& document) {
    return FirstText(document, "horaRegistroTransacao");
}

std::string_view TTissUtils::RegistroANS(const TXmlDocument& document) {
    return FirstText(document, "registroANS");
}

std::string_view TTissUtils::IdentificacaoPrestadorCnpj(const TXmlDocument& document) {
    return PrestadorText(document, {"CNPJ"});
}

std::string_view TTissUtils::IdentificacaoPrestadorCpf(const TXmlDocument& document) {
    return PrestadorText(document, {"CPF", "cpf"});
}

std::string_view TTissUtils::IdentificacaoPrestadorCodigoNaOperadora(const TXmlDocument& document) {
    return PrestadorText(document, {"codigoPrestadorNaOperadora"});
}

std::string_view TTissUtils::NomeContratado(const TXmlDocument& document) {
    const TXmlNode* lote = document.Root().FirstDescendant("loteGuias");
    if (lote == nullptr)
        return {};
    for (const TXmlNode* node = lote->NextInWalk(lote); node != nullptr; node = node->NextInWalk(lote))
        if (node->IsTag() && IsContratado(*node))
            if (const TXmlNode* nome = NomeDoContratado(*node); nome != nullptr)
                return nome->Value();
    return {};
}

std::string TTissUtils::CodigoContratado(const TXmlDocument& document) {
    struct TLabel {
        std::string_view Name;
        std::string_view Label;
    };
    static constexpr std::array<TLabel, 8> kLabels = {{{"codigoPrestadorNaOperadora", "código "},
                                                       {"codigonaOperadora", "código "},
                                                       {"CNPJ", "CNPJ "},
                                                       {"cnpjContratado", "CNPJ "},
                                                       {"cnpjPrestador", "CNPJ "},
                                                       {"CPF", "CPF "},
                                                       {"cpf", "CPF "},
                                                       {"cpfContratado", "CPF "}}};
    const auto codeBelow = [](const TXmlNode& provider) {
        for (const TXmlNode* node = &provider; node != nullptr; node = node->NextInWalk(&provider))
            for (const auto& [name, label] : kLabels)
                if (node->IsTag() && node->LocalName() == name && !node->Value().empty())
                    return std::string(label).append(node->Value());
        return std::string();
    };
    if (const TXmlNode* lote = document.Root().FirstDescendant("loteGuias"))
        for (const TXmlNode* node = lote->NextInWalk(lote); node != nullptr; node = node->NextInWalk(lote))
            if (node->IsTag() && IsContratado(*node))
                if (std::string code = codeBelow(*node); !code.empty())
                    return code;
    const TXmlNode* identification = document.Root().FirstDescendant("identificacaoPrestador");
    return identification != nullptr ? codeBelow(*identification) : std::string();
}

} // namespace conferix
