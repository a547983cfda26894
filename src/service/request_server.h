// A small HTTP/1.1 server for work that costs processor time.
#pragma once

#include "service/http_message.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// What a server takes upon itself. Whoever goes beyond is told so, and the others go on.
struct THttpLimits {
    std::size_t BodyBytes = std::size_t{64} << 20;  ///< of one body
    std::size_t HeldBytes = std::size_t{256} << 20; ///< of all bodies in memory
    std::size_t HeadBytes = std::size_t{16} << 10;  ///< request line and headers
    std::size_t Runs = 1;                           ///< requests that are worked on at a time
    std::size_t Waiting = 16;                       ///< requests that wait for that
    std::size_t Connections = 256;
    std::chrono::milliseconds Head{10'000};    ///< for the head, from its first byte or the connection on
    std::chrono::milliseconds Stall{10'000};   ///< for the next byte of a body
    std::chrono::milliseconds Upload{120'000}; ///< for a body; as much again for its answer
    std::chrono::milliseconds Run{60'000};     ///< from the body's end to the answer
    std::chrono::milliseconds Idle{75'000};    ///< between the requests of a connection
    std::chrono::milliseconds Stop{25'000};    ///< for what is under way when the server is stopped
};

/// What answers a path. A GET route answers HEAD as well.
struct THttpRoute {
    std::string Method;
    std::string Path;
    /// Does its work on one of the threads for that, in its turn; else it is answered at once by the thread
    /// that serves all connections, and has to be quick.
    bool IsRun = false;
    /// May use the request up. `worker`: number of the thread, 0-based, below THttpLimits::Runs; several call
    /// at a time. What it raises becomes the answer: an EHttpRefusal as it says, memory that is used up as
    /// 503, another failure as 500.
    std::function<TServiceAnswer(THttpRequest& request, std::size_t worker)> Answer;
};

/// What is known of a request once it is answered. Holds nothing that the client wrote.
struct THttpExchange {
    std::string Method; ///< "-" for one that is unknown
    std::string Route;  ///< its path; "-" where there is none
    unsigned Status = 0;
    std::chrono::steady_clock::duration Duration{}; ///< from the first byte in to the last one out
    std::size_t BytesIn = 0;                        ///< of the body
    std::size_t BytesOut = 0;
};

struct THttpLoad {
    std::size_t Connections = 0;
    std::size_t Running = 0;
    std::size_t Waiting = 0;
    std::size_t HeldBytes = 0;
};

/// Told by the thread that serves the connections.
struct THttpObserver {
    std::function<void(const THttpExchange&)> Exchanged;
    std::function<void(const THttpLoad&)> Stopping;
};

/// The address cannot be listened on; the text is for the user.
class EListenFailed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What was given as an address is none, on no machine.
class EInvalidAddress : public EListenFailed {
  public:
    using EListenFailed::EListenFailed;
};

/// Serves routes on one address. One thread serves all connections, so that slow clients cost no more than
/// their memory; THttpLimits::Runs others work on the requests.
class TRequestServer {
  public:
    /// Listens from here on. `address`: an IP address, or "localhost"; `port` 0: a free one. Raises
    /// EListenFailed, and EInvalidAddress.
    TRequestServer(const std::string& address, std::uint16_t port, const THttpLimits& limits,
                   std::vector<THttpRoute> routes, THttpObserver observer);
    /// Waits for work that still runs.
    ~TRequestServer();
    TRequestServer(const TRequestServer&) = delete;
    TRequestServer& operator=(const TRequestServer&) = delete;

    /// As in an address of the web: "127.0.0.1:8080", "[::1]:8080".
    std::string Authority() const;
    std::uint16_t Port() const;
    /// False where other machines reach it.
    bool IsLoopback() const;

    /// Serves until it is stopped. Answers false where work still runs whose time is over.
    bool Serve();
    /// Ends Serve(): no new connections; requests under way are finished, as long as THttpLimits::Stop says.
    /// Any thread; called again it ends them as well.
    void Stop();
    /// Does so at SIGINT and SIGTERM.
    void StopAtSignals();
    bool IsStopping() const;
    /// Any thread.
    THttpLoad Load() const;

  private:
    class TCore;
    std::unique_ptr<TCore> core_;
};

} // namespace conferix
