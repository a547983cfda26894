#include "app/cli/commands.h"
#include "app/proxy_settings.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <string_view>

namespace conferix {

namespace {

struct TModeName {
    TProxyMode Mode;
    std::string_view Name;
    std::string_view Description;
};
constexpr std::array<TModeName, 3> kModes = {
    {{TProxyMode::Direct, "direto", "Conexão direta com a internet"},
     {TProxyMode::System, "sistema", "Detecção automática das configurações de proxy"},
     {TProxyMode::Manual, "manual", "Configuração de proxy manual"}}};

const TModeName& NameOfMode(TProxyMode mode) {
    return *std::find_if(kModes.begin(), kModes.end(), [mode](const auto& m) { return m.Mode == mode; });
}

TProxyMode ModeOf(const std::string& name) {
    const auto* found =
        std::find_if(kModes.begin(), kModes.end(), [&](const auto& m) { return m.Name == name; });
    if (found == kModes.end())
        throw EUsage(fmt::format("o modo \"{}\" não existe; escolha direto, sistema ou manual", name));
    return found->Mode;
}

void Require(std::string_view wrong) {
    if (!wrong.empty())
        throw EUsage(std::string(wrong));
}

} // namespace

int RunProxy(const TCliContext& context, const TProxyOptions& options) {
    TProxySettings settings;
    if (options.Modo)
        settings.Mode = ModeOf(*options.Modo);
    // Nothing, and port 0, take out what was stored; the manual mode alone demands both.
    if (options.Servidor) {
        if (!options.Servidor->empty())
            Require(TProxySettings::CheckServer(*options.Servidor));
        settings.Server = *options.Servidor;
    }
    if (options.Porta) {
        if (*options.Porta != "0")
            Require(TProxySettings::CheckPort(*options.Porta));
        settings.Port = std::stoi(*options.Porta);
    }
    if (options.Modo || options.Servidor || options.Porta) {
        Require(settings.Check());
        settings.Save();
    }
    const TModeName& mode = NameOfMode(settings.Mode);
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        out << JsonText({{"modo", mode.Name},
                         {"servidor", settings.Server},
                         {"porta", settings.Port},
                         {"arquivo", PathText(settings.FileName())}})
            << '\n';
        return kExitValid;
    }
    out << mode.Description << '\n';
    if (!settings.Server.empty() || settings.Port > 0)
        out << fmt::format("Servidor: {}\nPorta: {}\n", Visible(settings.Server),
                           TProxySettings::PortText(settings.Port));
    return kExitValid;
}

} // namespace conferix
