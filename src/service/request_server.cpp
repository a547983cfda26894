#include "service/request_server.h"

#include "platform/listening_port.h"
#include "service/http_session.h"

#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <fmt/format.h>

#include <csignal>
#include <new>
#include <utility>

namespace conferix {

namespace asio = boost::asio;
using asio::ip::tcp;
using TErrorCode = boost::system::error_code;

namespace {

constexpr std::string_view kFull =
    "HTTP/1.1 503 Service Unavailable\r\nRetry-After: 2\r\nContent-Length: 0\r\n"
    "Connection: close\r\n\r\n";
/// After which accepting is tried again, where the system has no more room for connections.
constexpr std::chrono::milliseconds kAcceptPause{100};

asio::ip::address AddressOf(const std::string& text) {
    TErrorCode failure;
    asio::ip::address address = asio::ip::make_address(text == "localhost" ? "127.0.0.1" : text, failure);
    if (failure)
        throw EInvalidAddress(
            fmt::format("\"{}\" não é um endereço IP; use, por exemplo, 127.0.0.1 ou 0.0.0.0", text));
    return address;
}

std::string ReasonOf(TErrorCode failure, std::uint16_t port) {
    // Windows also denies access to a port that another program has for itself; no system does to a common
    // one.
    constexpr std::uint16_t kFirstCommonPort = 1024;
    if (failure == asio::error::address_in_use ||
        (failure == asio::error::access_denied && port >= kFirstCommonPort))
        return "a porta já está em uso";
    if (failure == asio::error::access_denied)
        return "o sistema não permite esta porta a este usuário";
    if (failure == boost::system::errc::address_not_available)
        return "este computador não tem esse endereço";
    return failure.message();
}

} // namespace

class TRequestServer::TCore {
  public:
    TCore(const std::string& address, std::uint16_t port, const THttpLimits& limits,
          std::vector<THttpRoute> routes, THttpObserver observer)
        : limits_(limits), routes_(std::move(routes)),
          observer_(std::move(observer)), shared_{io_, limits_, routes_, observer_, pool_}, acceptor_(io_),
          acceptPause_(io_), stopTime_(io_), signals_(io_), pool_(limits.Runs, limits.Waiting) {
        const tcp::endpoint endpoint(AddressOf(address), port);
        TErrorCode failure;
        acceptor_.open(endpoint.protocol(), failure);
        if (!failure)
            ClaimPort(static_cast<std::uintptr_t>(acceptor_.native_handle()));
        if (!failure)
            acceptor_.bind(endpoint, failure);
        if (!failure)
            acceptor_.listen(asio::socket_base::max_listen_connections, failure);
        if (failure)
            throw EListenFailed(fmt::format("não foi possível escutar em {}, porta {}: {}", address, port,
                                            ReasonOf(failure, port)));
        local_ = acceptor_.local_endpoint();
        shared_.Closed = [this] { EndWhenDone(); };
    }

    ~TCore() { shared_.Closed = nullptr; }
    TCore(const TCore&) = delete;
    TCore& operator=(const TCore&) = delete;

    const tcp::endpoint& Local() const { return local_; }
    bool IsStopping() const { return isStopping_; }
    THttpLoad Load() const {
        const TRunPool::TLoad load = pool_.Load();
        return {shared_.Connections, load.Running, load.Waiting, shared_.HeldBytes};
    }

    bool Serve() {
        Accept();
        while (true) {
            try {
                io_.run();
                break;
            } catch (const std::bad_alloc&) {
                // The connection for which there was no memory ends; the others go on.
            }
        }
        // Who has just handed over the last answer may not have ended yet.
        return pool_.IdleWithin(std::chrono::milliseconds(100));
    }

    void PostStop() {
        asio::post(io_, [this] { Stop(); });
    }

    void StopAtSignals() {
        signals_.add(SIGINT);
        signals_.add(SIGTERM);
        AwaitSignal();
    }

  private:
    void AwaitSignal() {
        signals_.async_wait([this](TErrorCode failure, int) {
            if (failure)
                return;
            AwaitSignal(); // before Stop(), which ends it where nothing is under way
            Stop();
        });
    }

    void Accept() {
        acceptor_.async_accept([this](TErrorCode failure, tcp::socket socket) {
            if (!acceptor_.is_open())
                return;
            if (failure) {
                acceptPause_.expires_after(kAcceptPause);
                acceptPause_.async_wait([this](TErrorCode cancelled) {
                    if (!cancelled && acceptor_.is_open())
                        Accept();
                });
                return;
            }
            if (shared_.Connections < limits_.Connections)
                std::make_shared<THttpSession>(std::move(socket), shared_)->Start();
            else
                TurnAway(std::move(socket));
            Accept();
        });
    }

    static void TurnAway(tcp::socket socket) {
        TErrorCode ignored;
        socket.non_blocking(true, ignored);
        socket.write_some(asio::buffer(kFull.data(), kFull.size()), ignored);
    }

    void Stop() {
        if (shared_.Stopping) {
            Abort();
            return;
        }
        shared_.Stopping = true;
        isStopping_ = true;
        if (observer_.Stopping)
            observer_.Stopping(Load());
        TErrorCode ignored;
        acceptor_.close(ignored);
        acceptPause_.cancel();
        stopTime_.expires_after(limits_.Stop);
        stopTime_.async_wait([this](TErrorCode cancelled) {
            if (!cancelled)
                Abort();
        });
        ForEachSession(&THttpSession::Stop);
        EndWhenDone();
    }

    void Abort() {
        pool_.DropWaiting();
        ForEachSession(&THttpSession::Abort);
        // Answers that are no longer taken do not hold it up.
        stopTime_.expires_after(std::chrono::seconds(1));
        stopTime_.async_wait([this](TErrorCode cancelled) {
            if (!cancelled)
                io_.stop();
        });
    }

    void ForEachSession(void (THttpSession::*action)()) {
        std::vector<std::shared_ptr<THttpSession>> sessions; // some end while they are told
        for (THttpSession* session : shared_.Sessions)
            sessions.push_back(session->shared_from_this());
        for (const auto& session : sessions)
            (*session.*action)();
    }

    void EndWhenDone() {
        if (!shared_.Stopping || !shared_.Sessions.empty())
            return;
        stopTime_.cancel();
        TErrorCode ignored;
        signals_.cancel(ignored);
    }

    const THttpLimits limits_;
    const std::vector<THttpRoute> routes_;
    const THttpObserver observer_;
    THttpShared shared_; ///< outlives the connections, which io_ and pool_ hold
    asio::io_context io_{1};
    tcp::acceptor acceptor_;
    asio::steady_timer acceptPause_;
    asio::steady_timer stopTime_;
    asio::signal_set signals_;
    tcp::endpoint local_;
    std::atomic<bool> isStopping_ = false;
    TRunPool pool_;
};

TRequestServer::TRequestServer(const std::string& address, std::uint16_t port, const THttpLimits& limits,
                               std::vector<THttpRoute> routes, THttpObserver observer)
    : core_(std::make_unique<TCore>(address, port, limits, std::move(routes), std::move(observer))) {}

TRequestServer::~TRequestServer() = default;

std::string TRequestServer::Authority() const {
    const asio::ip::address address = core_->Local().address();
    const std::string host = address.to_string();
    return fmt::format("{}:{}", address.is_v6() ? '[' + host + ']' : host, Port());
}

std::uint16_t TRequestServer::Port() const {
    return core_->Local().port();
}

bool TRequestServer::IsLoopback() const {
    return core_->Local().address().is_loopback();
}

bool TRequestServer::Serve() {
    return core_->Serve();
}

void TRequestServer::Stop() {
    core_->PostStop();
}

void TRequestServer::StopAtSignals() {
    core_->StopAtSignals();
}

bool TRequestServer::IsStopping() const {
    return core_->IsStopping();
}

THttpLoad TRequestServer::Load() const {
    return core_->Load();
}

} // namespace conferix
