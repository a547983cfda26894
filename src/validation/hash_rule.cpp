#include "validation/hash_rule.h"

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "validation/xml_sanitizer.h"
#include "xml/cut_text.h"
#include "xml/lower_case.h"
#include "xml/xml_encoding.h"

#include <fmt/format.h>

namespace conferix {

void THashValidation::Visit(const IMensagemTiss& mensagem) {
    Check(mensagem.shared_from_this());
}
void THashValidation::Visit(const IMonitoramento& monitoramento) {
    Check(monitoramento.shared_from_this());
}
void THashValidation::Visit(const IMonitoramentoQualidade& qualidade) {
    Check(qualidade.shared_from_this());
}

void THashValidation::Check(const std::shared_ptr<const IArquivoTiss>& file) {
    StartVisit();
    const TXmlDocument& document = *file->Xml();
    hashes_ = THashCalculator::CalculateBoth(document);
    const auto [hashIso, hashUtf8] = hashes_;
    if (document.Misreading() != nullptr && document.Misreading()->OfLetters())
        hashes_ = THashCalculator::CalculateMeant(document);
    const TXmlNode* hash = file->HashNode();
    // A missing hash or epilogue is the schema's matter, and told once.
    if (hash == nullptr)
        return;
    if (const THashes read{hashIso, hashUtf8}; read != hashes_)
        return CheckMisread(file, read, hashes_);
    const std::string written = CutText(file->Hash(), kShownFound);
    const std::string found = LowerCase(file->Hash());

    if (hashIso == hashUtf8) {
        if (found != hashIso) {
            auto& error = Error(
                hash, fmt::format("O hash \"{}\" informado no arquivo está inválido. O esperado é \"{}\".",
                                  written, hashIso));
            error.AddSolver(std::make_shared<THashSolver_ISO88591>(file));
        }
    } else if (found == hashIso) {
        auto& information = Information(
            hash,
            fmt::format("O hash informado no arquivo está válido e de acordo com a codificação padronizada "
                        "pelo TISS/ANS (ISO-8859-1). Entretanto, algumas operadoras podem calculá-lo "
                        "utilizando uma outra codificação (UTF-8) e recusar o seu arquivo. Caso isso ocorra, "
                        "altere o hash do arquivo para \"{}\" ou então faça a sanitização do XML para "
                        "diminuir as possibilidades de divergência.",
                        hashUtf8));
        information.AddSolver(std::make_shared<THashSolver_UTF8>(file));
        information.AddSolver(std::make_shared<TSanitizeHashSolver>(file));
    } else if (found == hashUtf8) {
        auto& warning = Warning(
            hash,
            fmt::format("O hash informado no arquivo está válido, porém utilizando a codificação UTF-8. O "
                        "padrão TISS orienta que o cálculo seja feito utilizando-se a codificação "
                        "ISO-8859-1. Portanto, caso a operadora recuse o seu arquivo, altere o Hash para "
                        "\"{}\" ou então faça a sanitização do XML para diminuir as possibilidades de "
                        "divergência.",
                        hashIso));
        warning.AddSolver(std::make_shared<THashSolver_ISO88591>(file));
        warning.AddSolver(std::make_shared<TSanitizeHashSolver>(file));
    } else {
        auto& error =
            Error(hash, fmt::format("O hash \"{}\" informado no arquivo está inválido. O esperado é \"{}\" "
                                    "(recomendado) ou \"{}\" (UTF-8).",
                                    written, hashIso, hashUtf8));
        error.AddSolver(std::make_shared<THashSolver_ISO88591>(file));
        error.AddSolver(std::make_shared<THashSolver_UTF8>(file));
        error.AddSolver(std::make_shared<TSanitizeHashSolver>(file));
    }
    if (FoundNothing())
        Success(hash, fmt::format("O hash \"{}\" informado no arquivo está válido.", written));
}

void THashValidation::CheckMisread(const std::shared_ptr<const IArquivoTiss>& file, const THashes& read,
                                   const THashes& meant) {
    const std::string found = LowerCase(file->Hash());
    const bool fitsRead = found == read.Iso88591 || found == read.Utf8;
    const bool fitsIso = found == meant.Iso88591;
    const bool fitsUtf8 = found == meant.Utf8;
    std::string text = fmt::format("O hash \"{}\" informado no arquivo ", CutText(file->Hash(), kShownFound));
    if (fitsIso || fitsUtf8)
        text += fmt::format(
            "confere com o texto certo{}{}. Corrija a codificação, que a primeira mensagem "
            "aponta{}.",
            fitsIso ? "" : ", calculado em UTF-8", fitsRead ? "" : ", mas não com o texto como se lê agora",
            fitsIso ? std::string(", e deixe o hash como está")
                    : fmt::format("; depois o padrão TISS (ISO-8859-1) espera \"{}\"", meant.Iso88591));
    else
        text += fmt::format("{}. Corrija a codificação, que a primeira mensagem aponta; depois o esperado é "
                            "\"{}\" (recomendado) ou \"{}\" (UTF-8).",
                            fitsRead ? "confere com o texto como se lê agora, mas não com o texto certo"
                                     : "está inválido",
                            meant.Iso88591, meant.Utf8);
    const TXmlNode* hash = file->HashNode();
    auto& message = fitsRead ? Warning(hash, std::move(text)) : Error(hash, std::move(text));
    message.AddSolver(std::make_shared<THashSolver_ISO88591>(file));
    message.AddSolver(std::make_shared<THashSolver_UTF8>(file));
    message.AddSolver(std::make_shared<TSanitizeHashSolver>(file));
}

std::optional<std::string> THashSolver::Replacement() const {
    return sanitize_ ? std::nullopt : std::optional(THashCalculator::Calculate(*File()->Xml(), encoding_));
}

void THashSolver::Solve() {
    TXmlDocument& document = *File()->Xml();
    if (sanitize_)
        TXmlSanitizer::Sanitize(document);
    TXmlNode* hash = File()->HashNode();
    if (hash == nullptr)
        return;
    hash->SetValue(THashCalculator::Calculate(document, encoding_));
    // Other readers would take a CDATA section for a part of the hash.
    for (TXmlNode* child = hash->FirstChild(); child != nullptr;) {
        TXmlNode* next = child->NextSibling();
        if (child->Kind() == TXmlNodeKind::xnCData)
            child->Remove();
        child = next;
    }
}

std::string TSanitizeHashSolver::Description() const {
    return "Sanitizar o XML e corrigir Hash. \r\n"
           "O processo de sanitização irá remover espaços em branco no início e fim do conteúdo das tags, "
           "caracteres invisíveis (CR, LF, tabs, etc) e os acentos dos caracteres.";
}

} // namespace conferix
