#include "app/cli/console.h"

#include "platform/format_settings.h"
#include "platform/platform.h"

#include <fmt/format.h>

namespace conferix {

TPalette::TPalette(bool terminal) : enabled_(terminal && GetEnvironment("NO_COLOR").empty()) {}

std::string TPalette::Paint(std::string_view code, std::string_view text) const {
    return enabled_ && !text.empty() ? fmt::format("\x1B[{}m{}\x1B[0m", code, text) : std::string(text);
}

std::string TPalette::Severity(TMessageType type, std::string_view text) const {
    switch (type) {
    case TMessageType::mtInformation:
        return Paint("36", text);
    case TMessageType::mtWarning:
        return Paint("33", text);
    case TMessageType::mtError:
        return Paint("31", text);
    case TMessageType::mtFatal:
        return Paint("1;31", text);
    case TMessageType::mtSuccess:
        return Paint("32", text);
    }
    return std::string(text);
}

std::string_view SeverityLabel(TMessageType type) {
    static constexpr std::string_view kLabels[] = {"informação", "aviso", "erro", "erro fatal", "sucesso"};
    return kLabels[static_cast<std::size_t>(type)];
}

std::string_view NameOf(TMessageType type) {
    static constexpr std::string_view kNames[] = {"mtInformation", "mtWarning", "mtError", "mtFatal",
                                                  "mtSuccess"};
    return kNames[static_cast<std::size_t>(type)];
}

std::string IndentLines(std::string_view text, std::size_t indent) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            continue;
        if (text[i] == '\n' || text[i] == '\r')
            out.append("\n").append(indent, ' ');
        else
            out += text[i];
    }
    return out;
}

std::string Counted(std::size_t count, std::string_view one, std::string_view many) {
    return fmt::format("{} {}", TFormatSettings::Regional().Count(static_cast<std::int64_t>(count)),
                       count == 1 ? one : many);
}

} // namespace conferix
