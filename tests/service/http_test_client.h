#pragma once

#include <boost/asio/ip/tcp.hpp>

#include <chrono>
#include <cstdint>
#include <iterator>
#include <string>

namespace conferix::tests {

/// A connection of a client that sends what it likes.
class TTestClient {
  public:
    explicit TTestClient(std::uint16_t port) : stream_("127.0.0.1", std::to_string(port)) {
        stream_.expires_after(std::chrono::seconds(60));
    }
    bool IsConnected() const { return stream_.good(); }
    TTestClient& Send(const std::string& text) {
        stream_ << text << std::flush;
        return *this;
    }
    /// Sends no more; the server sees the end.
    TTestClient& End() {
        boost::system::error_code ignored;
        stream_.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
        return *this;
    }
    /// All until the server closes.
    std::string Answer() { return {std::istreambuf_iterator<char>(stream_), {}}; }

  private:
    boost::asio::ip::tcp::iostream stream_;
};

} // namespace conferix::tests
