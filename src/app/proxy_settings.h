#pragma once

#include "app/ini_section.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace conferix {

/// How the program reaches the internet; the numbers are those of the file.
enum class TProxyMode : std::uint8_t {
    Direct = 0, ///< without a proxy
    System = 1, ///< by the system's settings
    Manual = 2, ///< by Server and Port
};

/// Section "Proxy" of Conferix.ini, and the rules of the dialog that changes it.
class TProxySettings : public TIniSection {
  public:
    static constexpr std::string_view kEmptyServer = "Preencha o endereço do servidor.";
    static constexpr std::string_view kServerWithBlanks = "O endereço do servidor não pode conter espaços.";
    static constexpr std::string_view kInvalidPort = "Informe um número de porta válido.";

    /// Reads the settings; what is absent or unknown is a direct connection, no server and port 0. Raises
    /// EFileNotRead.
    explicit TProxySettings(std::filesystem::path file = DefaultFile());
    /// Raises EFileNotWritten.
    void Save();

    TProxyMode Mode = TProxyMode::Direct;
    std::string Server;
    int Port = 0; ///< 0: none

    /// What is wrong with a server as typed; empty when nothing is.
    static std::string_view CheckServer(std::string_view server);
    /// What is wrong with a port as typed, which goes from 1 to 65535; empty when nothing is.
    static std::string_view CheckPort(std::string_view port);
    /// The port as its field shows it; empty for 0.
    static std::string PortText(int port) { return port > 0 ? std::to_string(port) : std::string(); }
    /// Takes over what was typed. Answers what keeps it from being used, and then has taken nothing; empty
    /// otherwise. Server and port matter to the manual mode alone; others keep them for later.
    std::string_view Take(TProxyMode mode, const std::string& server, const std::string& port);
    /// What keeps the settings from being used: of the manual mode, its server and port; empty otherwise.
    std::string_view Check() const;
};

} // namespace conferix
