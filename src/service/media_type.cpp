#include "service/media_type.h"

#include "xml/lower_case.h"

#include <charconv>

namespace conferix {

namespace {

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlank = " \t";
    const std::size_t begin = text.find_first_not_of(kBlank);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kBlank) - begin + 1);
}

/// Takes a quoted text, or one up to a semicolon, from the front of `rest`; nothing where a quote stays open.
std::optional<std::string> TakeParameter(std::string_view& rest) {
    if (!rest.starts_with('"')) {
        const std::string_view token = rest.substr(0, rest.find(';'));
        rest.remove_prefix(token.size());
        return std::string(Trim(token));
    }
    std::string text;
    for (std::size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] == '"') {
            rest = Trim(rest.substr(i + 1));
            return text;
        }
        // Browsers write a backslash of a file's name as it is; only of a quote it is the escape.
        if (rest[i] == '\\' && i + 1 < rest.size() && (rest[i + 1] == '"' || rest[i + 1] == '\\'))
            ++i;
        text += rest[i];
    }
    return std::nullopt;
}

/// How well a range of types, as "text/*", meets a type: 0 not at all, 3 to the letter.
int Precision(std::string_view range, std::string_view type) {
    if (range == type)
        return 3;
    if (range.ends_with("/*") && type.starts_with(range.substr(0, range.size() - 1)))
        return 2;
    return range == "*/*" ? 1 : 0;
}

/// In thousandths; what is no number counts as 1.
int Quality(const THeaderValue& range) {
    const auto found = range.Parameters.find("q");
    if (found == range.Parameters.end())
        return 1000;
    double quality = 1;
    std::from_chars(found->second.data(), found->second.data() + found->second.size(), quality);
    return quality <= 0 ? 0 : quality >= 1 ? 1000 : static_cast<int>(quality * 1000);
}

} // namespace

std::optional<THeaderValue> ParseHeaderValue(std::string_view text) {
    THeaderValue header;
    header.Value = LowerCase(Trim(text.substr(0, text.find(';'))));
    text.remove_prefix(std::min(text.size(), text.find(';')));
    while (!text.empty()) {
        if (text.front() != ';')
            return std::nullopt;
        text = Trim(text.substr(1));
        if (text.empty() || text.front() == ';')
            continue;
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos || equals > text.find(';'))
            return std::nullopt;
        std::string name = LowerCase(Trim(text.substr(0, equals)));
        text = Trim(text.substr(equals + 1));
        std::optional<std::string> value = TakeParameter(text);
        if (!value || !header.Parameters.try_emplace(std::move(name), std::move(*value)).second)
            return std::nullopt;
    }
    return header;
}

std::optional<std::size_t> PreferredType(std::string_view accept, std::span<const std::string_view> offered) {
    if (Trim(accept).empty())
        accept = "*/*";
    std::optional<std::size_t> preferred;
    int best = 0;
    for (std::size_t type = 0; type < offered.size(); ++type) {
        int precision = 0;
        int quality = 0;
        for (std::string_view rest = accept; !rest.empty();) {
            const std::string_view item = rest.substr(0, rest.find(','));
            rest.remove_prefix(std::min(rest.size(), item.size() + 1));
            const std::optional<THeaderValue> range = ParseHeaderValue(item);
            if (!range || Precision(range->Value, offered[type]) <= precision)
                continue;
            precision = Precision(range->Value, offered[type]);
            quality = Quality(*range);
        }
        if (quality > best) {
            best = quality;
            preferred = type;
        }
    }
    return preferred;
}

} // namespace conferix
