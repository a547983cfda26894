#include "app/proxy_settings.h"

#include <charconv>

namespace conferix {

namespace {

constexpr const char* kMode = "Mode";
constexpr const char* kServer = "Server";
constexpr const char* kPort = "Port";
constexpr int kMaxPort = 65535;

} // namespace

TProxySettings::TProxySettings(std::filesystem::path file)
    : TIniSection(std::move(file), "Proxy"), Server(ReadText(kServer, {})), Port(ReadInteger(kPort, 0)) {
    const int mode = ReadInteger(kMode, 0);
    if (mode == static_cast<int>(TProxyMode::System) || mode == static_cast<int>(TProxyMode::Manual))
        Mode = static_cast<TProxyMode>(mode);
    if (Port < 0 || Port > kMaxPort)
        Port = 0;
}

void TProxySettings::Save() {
    WriteInteger(kMode, static_cast<int>(Mode));
    WriteText(kServer, Server);
    WriteInteger(kPort, Port);
    SaveFile();
}

std::string_view TProxySettings::CheckServer(std::string_view server) {
    if (server.empty())
        return kEmptyServer;
    return server.find_first_of(" \t\r\n") == std::string_view::npos ? std::string_view() : kServerWithBlanks;
}

std::string_view TProxySettings::CheckPort(std::string_view port) {
    const bool digits = !port.empty() && port.find_first_not_of("0123456789") == std::string_view::npos;
    int value = 0;
    const auto [end, failure] = std::from_chars(port.data(), port.data() + port.size(), value);
    const bool inRange = failure == std::errc() && value >= 1 && value <= kMaxPort;
    return digits && inRange ? std::string_view() : kInvalidPort;
}

std::string_view TProxySettings::Take(TProxyMode mode, const std::string& server, const std::string& port) {
    const std::string_view wrongPort = CheckPort(port);
    if (mode == TProxyMode::Manual) {
        const std::string_view wrongServer = CheckServer(server);
        if (!wrongServer.empty() || !wrongPort.empty())
            return wrongServer.empty() ? wrongPort : wrongServer;
    }
    Mode = mode;
    Server = server;
    Port = wrongPort.empty() ? std::stoi(port) : 0;
    return {};
}

std::string_view TProxySettings::Check() const {
    if (Mode != TProxyMode::Manual)
        return {};
    const std::string_view wrong = CheckServer(Server);
    return wrong.empty() ? CheckPort(PortText(Port)) : wrong;
}

} // namespace conferix
