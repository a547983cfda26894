#include "app/cli/commands.h"
#include "app/servir/tiss_server.h"
#include "platform/program.h"
#include "report/console.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <thread>

namespace conferix {

namespace {

TTissServerOptions ServerOptions(const TServirOptions& options) {
    TTissServerOptions server;
    server.Address = options.Endereco;
    server.Port = static_cast<std::uint16_t>(options.Porta);
    server.Version = CONFERIX_VERSAO;
    THttpLimits& limits = server.Limits;
    limits.BodyBytes = static_cast<std::size_t>(options.CorpoMaximo) << 20;
    limits.HeldBytes = options.Memoria ? static_cast<std::size_t>(*options.Memoria) << 20
                                       : std::max(limits.BodyBytes, limits.HeldBytes);
    if (limits.HeldBytes < limits.BodyBytes)
        throw EUsage(
            fmt::format("--memoria {} não comporta um corpo de --corpo-maximo {}; aumente a primeira "
                        "ou diminua a segunda",
                        *options.Memoria, options.CorpoMaximo));
    limits.Runs = options.Execucoes.value_or(std::max(1U, std::thread::hardware_concurrency()));
    limits.Waiting = static_cast<std::size_t>(options.Fila);
    limits.Connections = static_cast<std::size_t>(options.Conexoes);
    limits.Upload = std::chrono::seconds(options.PrazoEnvio);
    limits.Run = std::chrono::seconds(options.Prazo);
    limits.Stop = std::chrono::seconds(options.PrazoParada);
    return server;
}

/// The service, listening.
std::unique_ptr<TTissServer> Listening(const TTissServerOptions& options, const TServiceEngine& engine,
                                       std::ostream& log) {
    try {
        return std::make_unique<TTissServer>(options, engine, log);
    } catch (const EInvalidAddress& error) {
        throw EUsage(error.what());
    }
}

/// Kept open from one request to the next, but where that would keep others from importing terminology.
TDBConnectionFactory TerminologyOf(const TCliContext& context) {
    return OpenFilesCanBeReplaced() ? context.KeptTerminology() : context.TerminologyFactory();
}

} // namespace

int RunServir(const TCliContext& context, const TServirOptions& options) {
    static_cast<void>(context.LoadConfig()); // told now, not with each request
    std::ostream& log = context.Streams.Err;
    const std::unique_ptr<TTissServer> service =
        Listening(ServerOptions(options),
                  {context.Schemas(), [&] { return TerminologyOf(context); },
                   [&] { return TConfig::Load(context.ConfigFile()); }},
                  log);
    TRequestServer& server = service->Server();
    if (!server.IsLoopback())
        context.Warning(
            fmt::format("o serviço atende outros computadores em {}, sem senha e sem criptografia; ponha "
                        "à frente dele um proxy que cuide disso",
                        server.Authority()));
    for (const std::string& problem : service->Problems())
        context.Warning(OneLine(problem));
    server.StopAtSignals();
    log << fmt::format("conferix: o serviço atende em http://{} (Ctrl+C para)\n", server.Authority())
        << std::flush;
    const bool finished = server.Serve();
    if (!finished) {
        context.Warning("o que não terminou no prazo de parada foi interrompido");
        log.flush();
        EndNow(kExitUnreadable);
    }
    log << "conferix: o serviço parou\n" << std::flush;
    return kExitValid;
}

} // namespace conferix
