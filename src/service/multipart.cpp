#include "service/multipart.h"

#include "service/http_message.h"
#include "service/media_type.h"
#include "xml/lower_case.h"

#include <fmt/format.h>

#include <optional>

namespace conferix {

namespace {

constexpr std::string_view kLineBreak = "\r\n";
constexpr std::string_view kHeadEnd = "\r\n\r\n";

[[noreturn]] void Refuse(std::string_view reason) {
    throw EHttpRefusal(400, fmt::format("O corpo multipart não pôde ser lido: {}.", reason));
}

/// The head of a part: its fields by their names in small letters.
TFormPart ReadHead(std::string_view head) {
    TFormPart part;
    bool isFormData = false;
    while (!head.empty()) {
        const std::string_view line = head.substr(0, head.find(kLineBreak));
        head.remove_prefix(std::min(head.size(), line.size() + kLineBreak.size()));
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos)
            Refuse("o cabeçalho de uma parte tem uma linha sem \":\"");
        const std::string name = LowerCase(line.substr(0, colon));
        if (name == "content-transfer-encoding") {
            const std::optional<THeaderValue> encoding = ParseHeaderValue(line.substr(colon + 1));
            if (!encoding ||
                (encoding->Value != "binary" && encoding->Value != "8bit" && encoding->Value != "7bit"))
                throw EHttpRefusal(415, "Uma parte está em Content-Transfer-Encoding; envie os bytes do "
                                        "arquivo como são.");
        }
        if (name != "content-disposition")
            continue;
        const std::optional<THeaderValue> disposition = ParseHeaderValue(line.substr(colon + 1));
        if (!disposition || disposition->Value != "form-data" || isFormData)
            Refuse("o Content-Disposition de uma parte não é form-data");
        isFormData = true;
        const auto& parameters = disposition->Parameters;
        if (const auto found = parameters.find("name"); found != parameters.end())
            part.Name = found->second;
        if (const auto found = parameters.find("filename"); found != parameters.end()) {
            part.IsFile = true;
            part.FileName = found->second;
        }
    }
    if (!isFormData)
        Refuse("uma parte não tem Content-Disposition");
    return part;
}

} // namespace

std::vector<TFormPart> ParseForm(std::string_view body, std::string_view boundary, std::size_t maxParts) {
    constexpr std::size_t kLongestBoundary = 70;
    if (boundary.empty() || boundary.size() > kLongestBoundary)
        Refuse("falta o parâmetro boundary no Content-Type, com 1 a 70 caracteres");
    const std::string delimiter = fmt::format("\r\n--{}", boundary);
    std::vector<TFormPart> parts;
    // The first delimiter may open the body.
    const bool opens = body.starts_with(std::string_view(delimiter).substr(kLineBreak.size()));
    std::size_t at = opens ? delimiter.size() - kLineBreak.size() : body.find(delimiter);
    if (at == std::string_view::npos)
        Refuse("o separador informado no Content-Type não aparece");
    body.remove_prefix(opens ? at : at + delimiter.size());
    while (!body.starts_with("--")) {
        body.remove_prefix(std::min(body.size(), body.find_first_not_of(" \t")));
        if (!body.starts_with(kLineBreak))
            Refuse("um separador não termina a linha");
        // A part without fields has its empty line right after the delimiter.
        const std::size_t headEnd = body.find(kHeadEnd);
        at = headEnd == std::string_view::npos ? headEnd : body.find(delimiter, headEnd + kLineBreak.size());
        if (at == std::string_view::npos)
            Refuse("ele termina antes do último separador");
        if (parts.size() == maxParts)
            throw EHttpRefusal(
                413,
                fmt::format("O corpo tem mais de {} partes; envie menos arquivos de cada vez.", maxParts));
        TFormPart part =
            ReadHead(body.substr(kLineBreak.size(), headEnd < 2 ? 0 : headEnd - kLineBreak.size()));
        const std::size_t begin = headEnd + kHeadEnd.size();
        part.Content = at < begin ? std::string_view() : body.substr(begin, at - begin);
        if (!part.IsFile || !part.FileName.empty() || !part.Content.empty())
            parts.push_back(std::move(part));
        body.remove_prefix(at + delimiter.size());
    }
    return parts;
}

} // namespace conferix
