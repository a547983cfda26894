// One connection of the server. Everything here belongs to the thread that serves the connections.
#pragma once

#include "service/request_server.h"
#include "service/run_pool.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

class THttpSession;

/// What the connections of a server share.
struct THttpShared {
    boost::asio::io_context& Io;
    const THttpLimits& Limits;
    const std::vector<THttpRoute>& Routes;
    const THttpObserver& Observer;
    TRunPool& Pool;
    std::set<THttpSession*> Sessions = {};
    std::atomic<std::size_t> Connections = 0;
    std::atomic<std::size_t> HeldBytes = 0;
    bool Stopping = false;
    std::function<void()> Closed = {}; ///< told of each connection that has ended
};

/// Reads requests, one after the other, has them answered and writes the answers.
class THttpSession : public std::enable_shared_from_this<THttpSession> {
  public:
    THttpSession(boost::asio::ip::tcp::socket socket, THttpShared& shared);
    ~THttpSession();
    THttpSession(const THttpSession&) = delete;
    THttpSession& operator=(const THttpSession&) = delete;

    void Start();
    /// The server stops: a connection between two requests is closed, another one after its answer.
    void Stop();
    /// The time to stop is over: what still runs is answered with 503.
    void Abort();

  private:
    enum class TPhase { Idle, Head, Body, Running, Writing, Lingering, Closed };
    using TParser = boost::beast::http::request_parser<boost::beast::http::string_body>;

    /// A request that is worked on, shared with the thread that does it. Counts its body as held.
    struct TRun {
        TRun(THttpRequest request, std::atomic<std::size_t>& held, std::size_t bytes)
            : Request(std::move(request)), Held(held), Bytes(bytes) {}
        ~TRun() { Held -= Bytes; }
        TRun(const TRun&) = delete;
        TRun& operator=(const TRun&) = delete;

        THttpRequest Request;
        std::atomic<bool> Abandoned = false; ///< nobody waits for the answer
        std::atomic<std::size_t>& Held;
        const std::size_t Bytes;
    };

    void BeginRequest();
    void ReadHead();
    void OnHead(boost::beast::error_code failure);
    /// What is wrong with a head that was read; raises EHttpRefusal.
    void CheckHead();
    void CheckFraming() const;
    void FindRoute();
    void RequireCapacity() const;
    void ReadBody();
    void ReadSomeOfBody();
    void OnBody(boost::beast::error_code failure);
    void Dispatch();
    void OnAnswered(const std::shared_ptr<TRun>& run, TServiceAnswer answer);
    /// Answers a request that was not read to its end, after which the connection is closed.
    void Refuse(unsigned status, std::string_view text, unsigned retryAfterSeconds = 0);
    void RefuseUnread(boost::beast::error_code failure);
    void Write(TServiceAnswer answer, bool keepAlive);
    void OnWritten(boost::beast::error_code failure, bool keepAlive);
    void Tell(unsigned status, std::size_t bytesOut) const;
    /// Lets the client read the answer before the connection goes, whatever it still sends.
    void Linger();
    void Drain();
    void Close();

    void Arm(std::chrono::milliseconds duration);
    void OnDeadline();
    void ReleaseBody();

    boost::asio::ip::tcp::socket socket_;
    THttpShared& shared_;
    boost::asio::steady_timer deadline_;
    boost::beast::flat_buffer buffer_;
    std::optional<TParser> parser_;
    TPhase phase_ = TPhase::Idle;
    bool timedOut_ = false;
    std::chrono::steady_clock::time_point begun_;
    std::chrono::steady_clock::time_point uploadEnd_;
    const THttpRoute* route_ = nullptr;
    THttpRequest request_;
    std::size_t held_ = 0; ///< bytes of the body that is being read
    std::size_t bytesIn_ = 0;
    std::shared_ptr<TRun> run_;
    std::array<char, 4096> scratch_{}; ///< for what nobody reads
};

} // namespace conferix
