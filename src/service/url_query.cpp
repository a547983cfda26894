#include "service/url_query.h"

#include "service/http_message.h"

#include <fmt/format.h>

#include <charconv>

namespace conferix {

namespace {

std::string Decoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+') {
            decoded += ' ';
        } else if (text[i] != '%') {
            decoded += text[i];
        } else {
            unsigned value = 0;
            const std::string_view digits = text.substr(i + 1, 2);
            const auto [end, failure] =
                std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
            if (digits.size() != 2 || failure != std::errc() || end != digits.data() + 2)
                throw EHttpRefusal(400,
                                   "O endereço tem um \"%\" que não é seguido de dois dígitos hexadecimais.");
            decoded += static_cast<char>(value);
            i += 2;
        }
    }
    return decoded;
}

} // namespace

TRequestTarget ParseTarget(std::string_view target) {
    if (target.starts_with("http://")) {
        const std::size_t path = target.find('/', std::string_view("http://").size());
        target = path == std::string_view::npos ? "/" : target.substr(path);
    }
    if (!target.starts_with('/'))
        throw EHttpRefusal(400, "O endereço da requisição não começa com \"/\".");
    TRequestTarget parsed;
    const std::size_t question = target.find('?');
    parsed.Path = target.substr(0, question);
    std::string_view query = question == std::string_view::npos ? "" : target.substr(question + 1);
    while (!query.empty()) {
        const std::string_view pair = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), pair.size() + 1));
        if (pair.empty())
            continue;
        const std::size_t equals = pair.find('=');
        std::string name = Decoded(pair.substr(0, equals));
        std::string value = equals == std::string_view::npos ? "" : Decoded(pair.substr(equals + 1));
        if (!parsed.Query.try_emplace(name, std::move(value)).second)
            throw EHttpRefusal(400, fmt::format("O parâmetro \"{}\" foi dado mais de uma vez.", name));
    }
    return parsed;
}

} // namespace conferix
