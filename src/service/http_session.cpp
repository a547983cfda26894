#include "service/http_session.h"

#include "service/url_query.h"

#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/rfc7230.hpp>
#include <boost/beast/http/write.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace conferix {

namespace http = boost::beast::http;
using TErrorCode = boost::beast::error_code;

namespace {

/// When to try again a server that is busy, and one that stops.
constexpr unsigned kRetryBusy = 2;
constexpr unsigned kRetryStopped = 5;
/// How long the rest of a refused request is read.
constexpr std::chrono::milliseconds kLinger{2'000};
/// What was cancelled ends by itself within this time.
constexpr std::chrono::milliseconds kCancelled{1'000};
/// How long a connection that has sent nothing yet is waited for when the server stops.
constexpr std::chrono::milliseconds kLastMoment{100};
constexpr std::size_t kReadAtOnce = std::size_t{64} << 10;

constexpr std::string_view kBusy = "O serviço está ocupado; tente de novo em instantes.";
constexpr std::string_view kStopped = "O serviço está parando; tente de novo em instantes.";
constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";

std::string_view View(boost::beast::string_view text) {
    return {text.data(), text.size()};
}

std::string Megabytes(std::size_t bytes) {
    return fmt::format("{:.4g} MB", static_cast<double>(bytes) / (1 << 20));
}

TServiceAnswer AnswerOf(const THttpRoute& route, THttpRequest& request, std::size_t worker) {
    try {
        return route.Answer(request, worker);
    } catch (const EHttpRefusal& refusal) {
        return ErrorAnswer(refusal.Status(), refusal.what());
    } catch (const std::bad_alloc&) {
        return ErrorAnswer(503, "Não há memória suficiente para esta requisição.", kRetryBusy);
    } catch (const std::exception& error) {
        return ErrorAnswer(500, fmt::format("O serviço falhou: {}", error.what()));
    }
}

/// Status and sentence for a head or body that is no HTTP.
std::pair<unsigned, std::string_view> FaultOf(TErrorCode failure) {
    if (failure == http::error::header_limit || failure == http::error::buffer_overflow)
        return {431, "Os cabeçalhos da requisição são grandes demais."};
    if (failure == http::error::bad_version)
        return {505, "Só HTTP/1.0 e HTTP/1.1 são aceitos."};
    if (failure == http::error::bad_content_length)
        return {400, "O cabeçalho Content-Length não é um número, ou veio mais de uma vez."};
    if (failure == http::error::bad_transfer_encoding)
        return {400, "O cabeçalho Transfer-Encoding não é aceito, ou veio com Content-Length."};
    if (failure == http::error::bad_chunk || failure == http::error::bad_chunk_extension)
        return {400, "O corpo em partes (chunked) está malformado."};
    return {400, "A requisição não é HTTP bem formado."};
}

} // namespace

THttpSession::THttpSession(boost::asio::ip::tcp::socket socket, THttpShared& shared)
    : socket_(std::move(socket)), shared_(shared), deadline_(shared.Io),
      buffer_(shared.Limits.HeadBytes + kReadAtOnce) {
    buffer_.reserve(kReadAtOnce); // a read fills at most what is there
    shared_.Sessions.insert(this);
    ++shared_.Connections;
}

THttpSession::~THttpSession() {
    ReleaseBody();
    shared_.Sessions.erase(this);
    --shared_.Connections;
    if (shared_.Closed)
        shared_.Closed();
}

void THttpSession::Start() {
    TErrorCode ignored;
    socket_.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    ReadHead();
}

void THttpSession::BeginRequest() {
    route_ = nullptr;
    request_ = {};
    bytesIn_ = 0;
    if (buffer_.size() != 0) {
        ReadHead();
        return;
    }
    phase_ = TPhase::Idle;
    Arm(shared_.Limits.Idle);
    socket_.async_wait(boost::asio::ip::tcp::socket::wait_read,
                       [self = shared_from_this()](TErrorCode failure) {
                           if (self->phase_ == TPhase::Closed)
                               return;
                           if (failure)
                               self->Close();
                           else
                               self->ReadHead();
                       });
}

void THttpSession::ReadHead() {
    phase_ = TPhase::Head;
    timedOut_ = false;
    begun_ = std::chrono::steady_clock::now();
    parser_.emplace();
    parser_->header_limit(static_cast<std::uint32_t>(shared_.Limits.HeadBytes));
    parser_->body_limit(shared_.Limits.BodyBytes);
    Arm(shared_.Limits.Head);
    http::async_read_header(
        socket_, buffer_, *parser_,
        [self = shared_from_this()](TErrorCode failure, std::size_t) { self->OnHead(failure); });
}

void THttpSession::OnHead(TErrorCode failure) {
    if (phase_ == TPhase::Closed)
        return;
    try {
        // A length beyond the limit is told by a failure too; what is wrong besides comes first.
        if (!failure || failure == http::error::body_limit)
            CheckHead();
    } catch (const EHttpRefusal& refusal) {
        Refuse(refusal.Status(), refusal.what(), refusal.Status() == 503 ? kRetryBusy : 0);
        return;
    }
    if (failure) {
        RefuseUnread(failure);
        return;
    }
    const auto& head = parser_->get();
    if (head.version() >= 11 && head.count(http::field::expect) != 0 && !parser_->is_done()) {
        phase_ = TPhase::Body;
        Arm(shared_.Limits.Stall);
        boost::asio::async_write(socket_, boost::asio::buffer(kContinue.data(), kContinue.size()),
                                 [self = shared_from_this()](TErrorCode unsent, std::size_t) {
                                     if (self->phase_ == TPhase::Closed)
                                         return;
                                     if (unsent)
                                         self->Close();
                                     else
                                         self->ReadBody();
                                 });
        return;
    }
    ReadBody();
}

void THttpSession::CheckHead() {
    const auto& head = parser_->get();
    request_.Method = View(head.method_string());
    TRequestTarget target = ParseTarget(View(head.target()));
    request_.Path = std::move(target.Path);
    request_.Query = std::move(target.Query);
    request_.ContentType = View(head[http::field::content_type]);
    request_.Accept = View(head[http::field::accept]);
    CheckFraming();
    FindRoute();
    if (route_->IsRun)
        RequireCapacity();
    else if (parser_->chunked() || parser_->content_length().value_or(0) != 0)
        throw EHttpRefusal(400, "Esta requisição não leva corpo.");
}

void THttpSession::CheckFraming() const {
    const auto& head = parser_->get();
    const std::size_t hosts = head.count(http::field::host);
    if (hosts > 1 || (hosts == 0 && head.version() >= 11))
        throw EHttpRefusal(400, "O cabeçalho Host falta, ou veio mais de uma vez.");
    // What reads lengths in another way than a proxy before it lets requests be smuggled in.
    const auto transfer = head.find(http::field::transfer_encoding);
    if (transfer != head.end()) {
        if (!boost::beast::iequals(transfer->value(), "chunked") ||
            head.count(http::field::transfer_encoding) > 1)
            throw EHttpRefusal(501, "De Transfer-Encoding só \"chunked\" é aceito.");
        if (head.version() < 11 || head.count(http::field::content_length) != 0)
            throw EHttpRefusal(400, "Transfer-Encoding não é aceito aqui, nem com Content-Length.");
    }
    const auto encoding = head.find(http::field::content_encoding);
    if (encoding != head.end() && !boost::beast::iequals(encoding->value(), "identity"))
        throw EHttpRefusal(415, "O corpo vem comprimido (Content-Encoding); envie-o sem compressão.");
    const auto expect = head.find(http::field::expect);
    if (expect != head.end() && !boost::beast::iequals(expect->value(), "100-continue"))
        throw EHttpRefusal(417, "De Expect só \"100-continue\" é aceito.");
}

void THttpSession::FindRoute() {
    const std::string_view method = request_.Method == "HEAD" ? "GET" : std::string_view(request_.Method);
    std::string allowed;
    for (const THttpRoute& route : shared_.Routes) {
        if (route.Path != request_.Path)
            continue;
        if (route.Method == method) {
            route_ = &route;
            return;
        }
        allowed += (allowed.empty() ? "" : ", ") + route.Method + (route.Method == "GET" ? ", HEAD" : "");
    }
    if (parser_->get().method() == http::verb::unknown)
        throw EHttpRefusal(501, "O método da requisição não é conhecido.");
    if (allowed.empty())
        throw EHttpRefusal(404, "Não há nada neste endereço.");
    throw EHttpRefusal(405, "O método não é aceito neste endereço; use " + allowed + ".");
}

void THttpSession::RequireCapacity() const {
    if (shared_.Stopping)
        throw EHttpRefusal(503, std::string(kStopped));
    if (shared_.Pool.Full() || shared_.HeldBytes >= shared_.Limits.HeldBytes)
        throw EHttpRefusal(503, std::string(kBusy));
}

void THttpSession::ReadBody() {
    phase_ = TPhase::Body;
    uploadEnd_ = std::chrono::steady_clock::now() + shared_.Limits.Upload;
    if (parser_->is_done())
        Dispatch();
    else
        ReadSomeOfBody();
}

void THttpSession::ReadSomeOfBody() {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(uploadEnd_ - std::chrono::steady_clock::now());
    Arm(std::min(left, shared_.Limits.Stall));
    http::async_read_some(
        socket_, buffer_, *parser_,
        [self = shared_from_this()](TErrorCode failure, std::size_t) { self->OnBody(failure); });
}

void THttpSession::OnBody(TErrorCode failure) {
    if (phase_ == TPhase::Closed)
        return;
    const std::size_t size = parser_->get().body().size();
    shared_.HeldBytes += size - held_;
    bytesIn_ = held_ = size;
    if (failure) {
        RefuseUnread(failure);
    } else if (parser_->is_done()) {
        Dispatch();
    } else if (shared_.HeldBytes > shared_.Limits.HeldBytes) {
        Refuse(503, kBusy, kRetryBusy);
    } else {
        ReadSomeOfBody();
    }
}

void THttpSession::RefuseUnread(TErrorCode failure) {
    if (failure == http::error::body_limit)
        Refuse(413, fmt::format("O corpo passa de {}, o limite deste serviço.",
                                Megabytes(shared_.Limits.BodyBytes)));
    else if (failure == boost::asio::error::operation_aborted && timedOut_ && parser_->got_some())
        Refuse(408, "A requisição demorou demais a chegar.");
    else if (failure == http::error::partial_message)
        Refuse(400, "A requisição terminou antes do tamanho anunciado.");
    else if (failure == http::error::end_of_stream ||
             failure.category() != make_error_code(http::error::bad_value).category())
        Close(); // the client is gone
    else
        Refuse(FaultOf(failure).first, FaultOf(failure).second);
}

void THttpSession::Dispatch() {
    request_.Body = std::move(parser_->get().body());
    phase_ = TPhase::Running;
    run_ = std::make_shared<TRun>(std::move(request_), shared_.HeldBytes, std::exchange(held_, 0));
    if (!route_->IsRun) {
        OnAnswered(run_, AnswerOf(*route_, run_->Request, 0));
        return;
    }
    Arm(shared_.Limits.Run);
    const bool taken = shared_.Pool.TryPost(
        // The connection goes back to its own thread, to end there.
        [self = shared_from_this(), run = run_, route = route_,
         &io = shared_.Io](std::size_t worker) mutable {
            TServiceAnswer answer;
            if (!run->Abandoned) {
                answer = AnswerOf(*route, run->Request, worker);
                std::string().swap(run->Request.Body);
            }
            boost::asio::post(
                io, [self = std::move(self), run = std::move(run), answer = std::move(answer)]() mutable {
                    self->OnAnswered(run, std::move(answer));
                });
        });
    if (!taken)
        Write(ErrorAnswer(503, kBusy, kRetryBusy), true);
}

void THttpSession::OnAnswered(const std::shared_ptr<TRun>& run, TServiceAnswer answer) {
    if (phase_ == TPhase::Running && run == run_ && !run->Abandoned)
        Write(std::move(answer), parser_->get().keep_alive());
}

void THttpSession::Refuse(unsigned status, std::string_view text, unsigned retryAfterSeconds) {
    TServiceAnswer answer = ErrorAnswer(status, text, retryAfterSeconds);
    if (status == 415)
        answer.Headers.emplace_back("Accept-Encoding", "identity");
    if (status == 405)
        for (const THttpRoute& route : shared_.Routes)
            if (route.Path == request_.Path)
                answer.Headers.emplace_back("Allow", route.Method == "GET" ? "GET, HEAD" : route.Method);
    ReleaseBody();
    Write(std::move(answer), false);
}

void THttpSession::Write(TServiceAnswer answer, bool keepAlive) {
    phase_ = TPhase::Writing;
    keepAlive = keepAlive && !shared_.Stopping;
    auto response = std::make_shared<http::response<http::string_body>>();
    const auto& request = parser_->get();
    response->version(request.version() == 10 ? 10 : 11);
    response->result(answer.Status);
    response->set(http::field::content_type, answer.ContentType);
    response->set(http::field::cache_control, "no-store"); // it is about bills
    response->set("X-Content-Type-Options", "nosniff");
    for (const auto& [name, value] : answer.Headers)
        response->set(name, value);
    response->keep_alive(keepAlive);
    response->content_length(answer.Body.size());
    const std::size_t bytesOut = request.method() == http::verb::head ? 0 : answer.Body.size();
    if (bytesOut != 0)
        response->body() = std::move(answer.Body);
    run_.reset();
    Arm(shared_.Limits.Upload);
    http::async_write(
        socket_, *response,
        [self = shared_from_this(), response, keepAlive, bytesOut](TErrorCode failure, std::size_t) {
            self->Tell(response->result_int(), bytesOut);
            self->OnWritten(failure, keepAlive);
        });
}

void THttpSession::OnWritten(TErrorCode failure, bool keepAlive) {
    if (phase_ == TPhase::Closed)
        return;
    if (failure)
        Close();
    else if (keepAlive && !shared_.Stopping)
        BeginRequest();
    else if (parser_->is_done() && buffer_.size() == 0)
        Close();
    else
        Linger();
}

void THttpSession::Tell(unsigned status, std::size_t bytesOut) const {
    if (!shared_.Observer.Exchanged)
        return;
    const http::verb method = parser_->get().method();
    shared_.Observer.Exchanged(
        {method == http::verb::unknown ? "-" : std::string(View(http::to_string(method))),
         route_ == nullptr ? "-" : route_->Path, status, std::chrono::steady_clock::now() - begun_, bytesIn_,
         bytesOut});
}

void THttpSession::Linger() {
    phase_ = TPhase::Lingering;
    TErrorCode ignored;
    socket_.shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
    Arm(kLinger);
    Drain();
}

void THttpSession::Drain() {
    socket_.async_read_some(boost::asio::buffer(scratch_),
                            [self = shared_from_this()](TErrorCode failure, std::size_t) {
                                if (self->phase_ == TPhase::Closed)
                                    return;
                                if (failure)
                                    self->Close();
                                else
                                    self->Drain();
                            });
}

void THttpSession::Stop() {
    TErrorCode ignored;
    if (phase_ == TPhase::Idle && socket_.available(ignored) == 0)
        Close();
    else if (phase_ == TPhase::Head && !parser_->got_some())
        Arm(kLastMoment); // what has arrived already is on its way to the parser
}

void THttpSession::Abort() {
    if (phase_ != TPhase::Running) {
        Close();
        return;
    }
    run_->Abandoned = true;
    Write(ErrorAnswer(503, kStopped, kRetryStopped), false);
}

void THttpSession::Close() {
    phase_ = TPhase::Closed;
    ReleaseBody();
    if (run_ != nullptr)
        run_->Abandoned = true;
    TErrorCode ignored;
    deadline_.cancel(ignored);
    socket_.close(ignored);
}

void THttpSession::Arm(std::chrono::milliseconds duration) {
    deadline_.expires_after(duration);
    deadline_.async_wait([self = shared_from_this()](TErrorCode failure) {
        // One that was set anew meanwhile has not expired.
        if (!failure && self->deadline_.expiry() <= std::chrono::steady_clock::now())
            self->OnDeadline();
    });
}

void THttpSession::OnDeadline() {
    switch (phase_) {
    case TPhase::Head:
    case TPhase::Body:
        if (timedOut_) {
            Close();
        } else {
            timedOut_ = true;
            TErrorCode ignored;
            socket_.cancel(ignored); // what was being read ends with a failure, and is answered there
            Arm(kCancelled);
        }
        break;
    case TPhase::Running:
        run_->Abandoned = true;
        Write(ErrorAnswer(503,
                          "A requisição não terminou no tempo que o serviço lhe dá; tente mais tarde, ou com "
                          "um arquivo menor.",
                          kRetryBusy),
              false);
        break;
    case TPhase::Idle:
    case TPhase::Writing:
    case TPhase::Lingering:
        Close();
        break;
    case TPhase::Closed:
        break;
    }
}

void THttpSession::ReleaseBody() {
    shared_.HeldBytes -= std::exchange(held_, 0);
}

} // namespace conferix
