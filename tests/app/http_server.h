#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
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

    explicit THttpServer(THandler handler) : handler_(std::move(handler)) {
        socket_ = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            listen(socket_, 8) != 0)
            throw std::runtime_error("the server of the test found no port");
        socklen_t size = sizeof address;
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { Serve(); });
    }
    ~THttpServer() {
        stop_ = true;
        shutdown(socket_, SHUT_RDWR);
        thread_.join();
        close(socket_);
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
    void Serve() {
        while (!stop_) {
            const int client = accept(socket_, nullptr, nullptr);
            if (client < 0)
                continue;
            std::string request;
            char buffer[4096];
            while (request.find("\r\n\r\n") == std::string::npos) {
                const ssize_t count = recv(client, buffer, sizeof buffer, 0);
                if (count <= 0)
                    break;
                request.append(buffer, static_cast<std::size_t>(count));
            }
            if (!request.empty())
                Answer(client, request);
            close(client);
        }
    }

    void Answer(int client, const std::string& request) {
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
        std::string all = "HTTP/1.1 " + std::to_string(answer.Status) + " X\r\nConnection: close\r\n" + head +
                          "Content-Length: " + std::to_string(answer.Body.size()) + "\r\n\r\n" +
                          answer.Body.substr(0, answer.CutAfter);
        for (std::string_view rest = all; !rest.empty();) {
            const ssize_t sent = send(client, rest.data(), rest.size(), MSG_NOSIGNAL);
            if (sent <= 0)
                return;
            rest.remove_prefix(static_cast<std::size_t>(sent));
        }
    }

    THandler handler_;
    int socket_ = -1;
    int port_ = 0;
    std::atomic<bool> stop_ = false;
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::thread thread_;
};

} // namespace conferix
