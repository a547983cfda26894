#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/message_json.h"

#include <algorithm>
#include <ostream>

namespace conferix {

namespace {

/// Number of characters of a text in UTF-8.
std::size_t Width(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

void PrintGroup(std::ostream& out, const TPalette& palette, const TInformationGroup& group) {
    out << palette.Bold(group.Titulo) << '\n';
    std::size_t widest = 0;
    for (const auto& [label, value] : group.Linhas)
        widest = std::max(widest, Width(label));
    for (const auto& [label, value] : group.Linhas)
        out << "  " << label << ": " << std::string(widest - Width(label), ' ') << value << '\n';
}

int ShowInformations(const TCliContext& context, const TInformations& groups) {
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        TJson json = TJson::array();
        for (const TInformationGroup& group : groups) {
            TJson rows = TJson::array();
            for (const auto& [label, value] : group.Linhas)
                rows.push_back({label, value});
            json.push_back({{"titulo", group.Titulo}, {"linhas", std::move(rows)}});
        }
        out << JsonText(json) << '\n';
        return kExitValid;
    }
    const TPalette palette(context.Streams.OutIsTerminal);
    for (const TInformationGroup& group : groups)
        PrintGroup(out, palette, group);
    return kExitValid;
}

} // namespace

int RunInformar(const TCliContext& context, const std::string& arquivo) {
    return RunOnFile(context, arquivo, [&](const TTissFile& file) {
        return ShowInformations(context, file.Load()->Informations());
    });
}

} // namespace conferix
