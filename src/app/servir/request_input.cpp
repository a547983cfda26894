#include "app/servir/request_input.h"

#include "service/media_type.h"
#include "xml/xml_node.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <optional>

namespace conferix {

namespace {

/// Files of one form: an answer about more would be read by nobody.
constexpr std::size_t kMostParts = 1000;

/// What bodies are called that are an XML file: clients that are not told say one of the last three.
constexpr std::array<std::string_view, 6> kXmlTypes = {"",
                                                       "application/xml",
                                                       "text/xml",
                                                       "application/octet-stream",
                                                       "application/x-www-form-urlencoded",
                                                       "text/plain"};

bool IsXml(std::string_view type) {
    return std::ranges::find(kXmlTypes, type) != kXmlTypes.end() || type.ends_with("+xml");
}

} // namespace

TRequestInput::TRequestInput(THttpRequest& request, std::initializer_list<std::string_view> allowed)
    : request_(request), parameters_(request.Query.begin(), request.Query.end()) {
    const std::optional<THeaderValue> type = ParseHeaderValue(request.ContentType);
    if (type && type->Value == "multipart/form-data") {
        const auto boundary = type->Parameters.find("boundary");
        ReadForm(boundary == type->Parameters.end() ? std::string_view() : boundary->second);
    } else if (!type || !IsXml(type->Value)) {
        throw EHttpRefusal(415,
                           "O Content-Type não é aceito; envie o XML como application/xml, ou arquivos como "
                           "multipart/form-data.");
    } else if (request.Body.empty()) {
        throw EHttpRefusal(400, "O corpo da requisição está vazio; envie o arquivo XML.");
    }
    if (!parts_.empty() && parameters_.contains("arquivo"))
        throw EHttpRefusal(400, "O parâmetro \"arquivo\" dá nome a um corpo XML; em um formulário, cada "
                                "arquivo tem o seu (filename).");
    for (const auto& [name, value] : parameters_)
        if (std::ranges::find(allowed, name) == allowed.end())
            throw EHttpRefusal(400, fmt::format("O parâmetro \"{}\" não existe aqui; há {}.", name,
                                                fmt::join(allowed, ", ")));
}

void TRequestInput::ReadForm(std::string_view boundary) {
    for (TFormPart& part : ParseForm(request_.Body, boundary, kMostParts)) {
        if (part.IsFile)
            parts_.push_back(std::move(part));
        else if (!parameters_.try_emplace(part.Name, part.Content).second)
            throw EHttpRefusal(400, fmt::format("O parâmetro \"{}\" foi dado mais de uma vez.", part.Name));
    }
    if (parts_.empty())
        throw EHttpRefusal(400, "O formulário não tem arquivo; cada arquivo é uma parte com filename.");
}

std::string TRequestInput::FileName(std::size_t index) const {
    const std::string name = parts_.empty() ? Text("arquivo") : parts_[index].FileName;
    return name.empty() ? "-" : name;
}

std::string TRequestInput::TakeBytes(std::size_t index) {
    return parts_.empty() ? std::move(request_.Body) : std::string(parts_[index].Content);
}

std::string TRequestInput::Text(std::string_view parameter) const {
    const auto found = parameters_.find(parameter);
    return found == parameters_.end() ? std::string() : found->second;
}

bool TRequestInput::Flag(std::string_view parameter) const {
    const auto found = parameters_.find(parameter);
    if (found == parameters_.end())
        return false;
    const std::string& value = found->second;
    if (value.empty() || value == "1" || value == "sim" || value == "true" || value == "on")
        return true;
    if (value == "0" || value == "nao" || value == "não" || value == "false")
        return false;
    throw EHttpRefusal(400, fmt::format("O parâmetro \"{}\" é \"sim\" ou \"nao\".", parameter));
}

std::vector<std::string> TRequestInput::List(std::string_view parameter) const {
    std::vector<std::string> values;
    const std::string text = Text(parameter);
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view part = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(rest.size(), part.size() + 1));
        const std::string_view value = TrimXmlSpace(part);
        if (value.empty())
            throw EHttpRefusal(
                400, fmt::format("\"{}\": há um valor vazio; separe os valores com uma vírgula.", parameter));
        values.emplace_back(value);
    }
    return values;
}

} // namespace conferix
