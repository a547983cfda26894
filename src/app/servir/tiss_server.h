// The service: validation, correction and printing of files over HTTP.
#pragma once

#include "app/servir/tiss_requests.h"
#include "service/request_server.h"
#include "service/service_metrics.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace conferix {

struct TTissServerOptions {
    std::string Address = "127.0.0.1";
    std::uint16_t Port = 8080; ///< 0: a free one
    THttpLimits Limits;
    std::string Version; ///< of the program
};

/// Answers POST /validar, /corrigir and /imprimir, GET / (the page), /regras, /saude, /saude/pronta and
/// /metricas. Keeps nothing of a request once it is answered, so that any number of servers can stand side by
/// side.
class TTissServer {
  public:
    /// Listens from here on. `log`: a line goes there for each request, with nothing that a client wrote.
    /// Raises EListenFailed.
    TTissServer(const TTissServerOptions& options, TServiceEngine engine, std::ostream& log);
    ~TTissServer();
    TTissServer(const TTissServer&) = delete;
    TTissServer& operator=(const TTissServer&) = delete;

    TRequestServer& Server() { return *server_; }
    /// What keeps files from being judged, some or all, a sentence each.
    std::vector<std::string> Problems() const;

  private:
    class TLog;

    std::vector<THttpRoute> Routes();
    THttpObserver Observer();
    TServiceAnswer AnswerReadiness() const;
    std::string Obstacle() const;

    TServiceEngine engine_;
    std::size_t bodyBytes_;                           ///< the largest body
    std::vector<TDBConnectionFactory> terminologies_; ///< one a thread
    TServiceMetrics metrics_;
    std::unique_ptr<TLog> log_;
    std::unique_ptr<TRequestServer> server_;
};

} // namespace conferix
