#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace conferix {

/// What the server of a test answers.
struct THttpAnswer {
    int Status = 200;
    std::string Body = {};
    std::string Location = {};  ///< of a redirect
    std::size_t CutAfter = ~0U; ///< bytes of the body after which the connection drops
    bool HonoursRange = true;
};

/// An HTTP server of one thread on the loopback address. As a proxy it is asked with whole addresses.
class THttpServer {
  public:
    using THandler = std::function<THttpAnswer(const std::string& target)>;

    explicit THttpServer(THandler handler)
        : handler_(std::move(handler)), acceptor_(context_, {boost::asio::ip::address_v4::loopback(), 0}),
          port_(acceptor_.local_endpoint().port()), thread_([this] { Serve(); }) {}
    ~THttpServer() {
        stop_ = true;
        // Wakes the thread, which waits for somebody.
        TSocket(context_).connect(acceptor_.local_endpoint());
        thread_.join();
    }
    THttpServer(const THttpServer&) = delete;
    THttpServer& operator=(const THttpServer&) = delete;

    int Port() const { return port_; }
    std::string Url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    /// First lines of the requests so far, with the range that was asked for.
    std::vector<std::string> Requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

  private:
    using TSocket = boost::asio::ip::tcp::socket;

    void Serve() {
        for (;;) {
            TSocket client = acceptor_.accept();
            if (stop_)
                return;
            std::string request;
            boost::system::error_code failure;
            boost::asio::read_until(client, boost::asio::dynamic_buffer(request), "\r\n\r\n", failure);
            if (!failure)
                Answer(client, request);
        }
    }

    void Answer(TSocket& client, const std::string& request) {
        const std::size_t start = request.find(' ') + 1;
        const std::string target = request.substr(start, request.find(' ', start) - start);
        std::size_t from = 0;
        if (const std::size_t range = request.find("Range: bytes="); range != std::string::npos)
            from = std::stoul(request.substr(range + 13));
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back(target + (from != 0 ? " desde " + std::to_string(from) : ""));
        }
        THttpAnswer answer = handler_(target);
        std::string head;
        if (from != 0 && answer.HonoursRange && answer.Status == 200) {
            head = "Content-Range: bytes " + std::to_string(from) + "-" +
                   std::to_string(answer.Body.size() - 1) + "/" + std::to_string(answer.Body.size()) + "\r\n";
            answer.Body.erase(0, from);
            answer.Status = 206;
        }
        if (!answer.Location.empty())
            head += "Location: " + answer.Location + "\r\n";
        const std::string all = "HTTP/1.1 " + std::to_string(answer.Status) + " X\r\nConnection: close\r\n" +
                                head + "Content-Length: " + std::to_string(answer.Body.size()) + "\r\n\r\n" +
                                answer.Body.substr(0, answer.CutAfter);
        boost::system::error_code gone;
        boost::asio::write(client, boost::asio::buffer(all), gone);
    }

    THandler handler_;
    boost::asio::io_context context_;
    boost::asio::ip::tcp::acceptor acceptor_;
    int port_;
    std::atomic<bool> stop_ = false;
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::thread thread_;
};

} // namespace conferix
