#include "app/cli/commands.h"
#include "platform/utf8.h"
#include "report/console.h"
#include "report/message_json.h"

#include <algorithm>
#include <ostream>

namespace conferix {

namespace {

void PrintGroup(std::ostream& out, const TPalette& palette, const TInformationGroup& group) {
    out << palette.Bold(group.Titulo) << '\n';
    std::size_t widest = 0;
    for (const auto& [label, value] : group.Linhas)
        widest = std::max(widest, CountCharacters(label));
    for (const auto& [label, value] : group.Linhas)
        out << "  " << label << ": " << std::string(widest - CountCharacters(label), ' ') << Visible(value)
            << '\n';
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
