#include "app/http_client.h"

#include "app/curl_library.h"
#include "platform/platform.h"
#include "platform/system_proxy.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <string_view>

namespace conferix {

namespace {

constexpr long kMaxRedirects = 5;
constexpr long kStalledBytesPerSecond = 1000;

const TCurlLibrary& Library() {
    return TCurlLibrary::Get();
}

/// The library's own address of a text; raises EHttp for what is none.
class TUrl {
  public:
    explicit TUrl(const std::string& text) : url_(Library().Url(), Library().UrlCleanup) { Set(text); }

    /// Sets the address; a relative one is taken from the address before. A scheme that this library does not
    /// know makes no other address of it.
    void Set(const std::string& text) {
        if (Library().UrlSet(url_.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK)
            throw EHttp(fmt::format("o endereço \"{}\" não é válido", text));
    }
    std::string Part(CURLUPart part) const {
        char* text = nullptr;
        if (Library().UrlGet(url_.get(), part, &text, 0) != CURLUE_OK)
            return {};
        const std::unique_ptr<char, void (*)(void*)> owned(text, Library().Free);
        return owned.get();
    }

  private:
    std::unique_ptr<CURLU, void (*)(CURLU*)> url_;
};

bool IsLoopback(const std::string& host) {
    return host == "localhost" || host == "127.0.0.1" || host == "[::1]";
}

/// Where the bytes of an answer go: refuses what is too much.
struct TSink {
    std::string* Text = nullptr;
    std::ofstream* File = nullptr;
    std::uint64_t Received = 0; ///< with what was there before
    std::uint64_t Limit = 0;
    bool TooMuch = false;
    bool NotWritten = false;
};

std::size_t Receive(char* bytes, std::size_t size, std::size_t count, void* target) {
    auto& sink = *static_cast<TSink*>(target);
    const std::size_t length = size * count;
    sink.Received += length;
    sink.TooMuch = sink.Received > sink.Limit;
    if (sink.TooMuch)
        return 0;
    if (sink.Text != nullptr) {
        sink.Text->append(bytes, length);
    } else {
        sink.File->write(bytes, static_cast<std::streamsize>(length));
        sink.NotWritten = !*sink.File;
    }
    return sink.NotWritten ? 0 : length;
}

struct TProgressCall {
    const TDownloadProgress* Progress;
    std::uint64_t Before;
    std::uint64_t Total;
};

int Advance(void* target, curl_off_t /*total*/, curl_off_t received, curl_off_t /*up*/, curl_off_t /*sent*/) {
    const auto& call = *static_cast<const TProgressCall*>(target);
    const auto all = call.Before + static_cast<std::uint64_t>(received);
    return (*call.Progress)(std::min(all, call.Total), call.Total) ? 0 : 1;
}

/// The user's words for the failures that one can do something about.
std::string Reason(CURLcode code, const char* detail) {
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return "o servidor não foi encontrado; verifique o endereço e a conexão com a internet";
    case CURLE_COULDNT_RESOLVE_PROXY:
        return "o servidor de proxy não foi encontrado; verifique \"conferix proxy\"";
    case CURLE_COULDNT_CONNECT:
        return "não foi possível conectar ao servidor ou ao proxy";
    case CURLE_OPERATION_TIMEDOUT:
        return "o servidor demorou demais";
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CONNECT_ERROR:
        return "a identidade do servidor não pôde ser verificada";
    case CURLE_UNSUPPORTED_PROTOCOL:
        return "o servidor encaminha para um endereço que não é https";
    case CURLE_TOO_MANY_REDIRECTS:
        return "o servidor encaminha vezes demais";
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_GOT_NOTHING:
        return "a conexão caiu; tente de novo para continuar de onde parou";
    case CURLE_ABORTED_BY_CALLBACK:
        return "interrompido";
    default:
        return *detail != '\0' ? detail : Library().EasyStrerror(code);
    }
}

} // namespace

struct THttpClient::THandle {
    std::unique_ptr<CURL, void (*)(CURL*)> Curl{Library().EasyInit(), Library().EasyCleanup};
    char Detail[CURL_ERROR_SIZE] = {};

    template<class Value>
    void Set(CURLoption option, Value value) {
        Library().EasySetopt(Curl.get(), option, value);
    }
};

THttpClient::THttpClient(const TProxySettings& proxy, THttpPatience patience)
    : mode_(proxy.Mode), proxy_(proxy.Server), port_(proxy.Port), patience_(patience) {
    if (const std::string_view wrong = proxy.Check(); !wrong.empty())
        throw EHttp(fmt::format("configuração de proxy: {}", wrong));
    handle_ = std::make_unique<THandle>();
}

THttpClient::~THttpClient() = default;

std::string THttpClient::Resolve(const std::string& base, const std::string& address) {
    TUrl url(base);
    url.Set(address);
    return url.Part(CURLUPART_URL);
}

void THttpClient::Prepare(const std::string& url) {
    const TUrl parts(url);
    const std::string scheme = parts.Part(CURLUPART_SCHEME);
    if (scheme != "https" && !(scheme == "http" && IsLoopback(parts.Part(CURLUPART_HOST))))
        throw EHttp(fmt::format("o endereço \"{}\" não é https", url));
    THandle& handle = *handle_;
    Library().EasyReset(handle.Curl.get());
    handle.Detail[0] = '\0';
    handle.Set(CURLOPT_ERRORBUFFER, handle.Detail);
    handle.Set(CURLOPT_URL, url.c_str());
    handle.Set(CURLOPT_NOSIGNAL, 1L);
    handle.Set(CURLOPT_FAILONERROR, 1L);
    handle.Set(CURLOPT_FOLLOWLOCATION, 1L);
    handle.Set(CURLOPT_MAXREDIRS, kMaxRedirects);
    handle.Set(CURLOPT_PROTOCOLS_STR, "https,http");
    handle.Set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    handle.Set(CURLOPT_CONNECTTIMEOUT, static_cast<long>(patience_.Connect.count()));
    handle.Set(CURLOPT_LOW_SPEED_LIMIT, kStalledBytesPerSecond);
    handle.Set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(patience_.Stalled.count()));
    handle.Set(CURLOPT_TIMEOUT, static_cast<long>(patience_.Total.count()));
    switch (mode_) {
    case TProxyMode::Direct:
        handle.Set(CURLOPT_PROXY, ""); // whatever the environment says
        break;
    case TProxyMode::System:
        // What the environment names, the library reads itself.
        if (const std::string named = SystemProxy(url); !named.empty())
            handle.Set(CURLOPT_PROXY, named.c_str());
        break;
    case TProxyMode::Manual:
        handle.Set(CURLOPT_PROXY, proxy_.c_str());
        handle.Set(CURLOPT_PROXYPORT, static_cast<long>(port_));
        handle.Set(CURLOPT_NOPROXY, "");
        break;
    }
}

void THttpClient::Fail(const std::string& url, int result) const {
    const auto code = static_cast<CURLcode>(result);
    if (code == CURLE_HTTP_RETURNED_ERROR) {
        long status = 0;
        Library().EasyGetinfo(handle_->Curl.get(), CURLINFO_RESPONSE_CODE, &status);
        throw EHttp(fmt::format("{}: o servidor respondeu com o código {}", url, status));
    }
    throw EHttp(fmt::format("{}: {}", url, Reason(code, handle_->Detail)));
}

std::string THttpClient::Get(const std::string& url, std::size_t limit) {
    Prepare(url);
    std::string text;
    TSink sink;
    sink.Text = &text;
    sink.Limit = limit;
    handle_->Set(CURLOPT_WRITEFUNCTION, &Receive);
    handle_->Set(CURLOPT_WRITEDATA, &sink);
    const CURLcode code = Library().EasyPerform(handle_->Curl.get());
    if (sink.TooMuch)
        throw EHttp(fmt::format("{}: o arquivo tem mais de {} bytes", url, limit));
    if (code != CURLE_OK)
        Fail(url, code);
    return text;
}

void THttpClient::Download(const std::string& url, const std::filesystem::path& file, std::uint64_t size,
                           const TDownloadProgress& progress) {
    std::error_code failure;
    std::uint64_t before = std::filesystem::file_size(file, failure);
    if (failure || before > size)
        before = 0;
    if (before == size && size != 0)
        return;
    Prepare(url);
    std::ofstream stream(file, before != 0 ? std::ios::binary | std::ios::app : std::ios::binary);
    if (!stream)
        throw EFileNotWritten(file, "não pôde ser aberto para gravação");
    TSink sink;
    sink.File = &stream;
    sink.Received = before;
    sink.Limit = size;
    TProgressCall call{&progress, before, size};
    handle_->Set(CURLOPT_WRITEFUNCTION, &Receive);
    handle_->Set(CURLOPT_WRITEDATA, &sink);
    handle_->Set(CURLOPT_RESUME_FROM_LARGE, static_cast<curl_off_t>(before));
    handle_->Set(CURLOPT_NOPROGRESS, 0L);
    handle_->Set(CURLOPT_XFERINFOFUNCTION, &Advance);
    handle_->Set(CURLOPT_XFERINFODATA, &call);
    const CURLcode code = Library().EasyPerform(handle_->Curl.get());
    stream.close();
    if (sink.NotWritten || !stream)
        throw EFileNotWritten(file, "o disco não aceitou os dados");
    const bool whole = code == CURLE_OK && sink.Received == size;
    if (!whole && before != 0 && (code == CURLE_OK || code == CURLE_RANGE_ERROR)) {
        // A server that cannot go on in the middle is asked for the whole.
        std::filesystem::remove(file, failure);
        Download(url, file, size, progress);
        return;
    }
    if (sink.TooMuch) {
        std::filesystem::remove(file, failure);
        throw EHttp(fmt::format("{}: o arquivo tem mais do que os {} bytes anunciados", url, size));
    }
    if (code != CURLE_OK)
        Fail(url, code);
    if (!whole)
        throw EHttp(fmt::format("{}: o arquivo tem menos do que os {} bytes anunciados", url, size));
}

} // namespace conferix
