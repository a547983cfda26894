#pragma once

#include "app/proxy_settings.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace conferix {

/// Something could not be fetched; the text says what and why.
class EHttp : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Told while a download runs, in bytes; answers false to end it.
using TDownloadProgress = std::function<bool(std::uint64_t received, std::uint64_t total)>;

/// How long a server may take.
struct THttpPatience {
    std::chrono::seconds Connect{30};
    std::chrono::seconds Stalled{60}; ///< without a thousand bytes a second
    std::chrono::seconds Total{3600};
};

/// Fetches files over HTTPS by the proxy settings; over HTTP only from this machine itself. Follows
/// redirects to HTTPS alone.
class THttpClient {
  public:
    explicit THttpClient(const TProxySettings& proxy, THttpPatience patience = {});
    ~THttpClient();
    THttpClient(const THttpClient&) = delete;
    THttpClient& operator=(const THttpClient&) = delete;

    /// A small file. Raises EHttp, also for more than `limit` bytes.
    std::string Get(const std::string& url, std::size_t limit);
    /// Fetches `size` bytes into a file, going on where an earlier attempt has left it; what a failure leaves
    /// of the file is good to go on from. Raises EHttp, EFileNotWritten.
    void Download(const std::string& url, const std::filesystem::path& file, std::uint64_t size,
                  const TDownloadProgress& progress);

    /// An address as seen from another one. Raises EHttp.
    static std::string Resolve(const std::string& base, const std::string& address);

  private:
    struct THandle;
    void Prepare(const std::string& url);
    [[noreturn]] void Fail(const std::string& url, int result) const;

    TProxyMode mode_;
    std::string proxy_;
    int port_;
    THttpPatience patience_;
    std::unique_ptr<THandle> handle_;
};

} // namespace conferix
