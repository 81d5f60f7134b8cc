#include "server/http_session.h"

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/bind_handler.hpp>
#include <boost/beast/http/file_body.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <utility>

#include "log/host_trace.h"
#include "server/view.h"

namespace imsdk::host {
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace {

constexpr char kSource[] = "host\\server\\http_session";
constexpr std::uint32_t kLongestHeader = 16u << 10;
constexpr std::chrono::seconds kPatience{30};

std::string_view Text(beast::string_view text) { return {text.data(), text.size()}; }

}  // namespace

HttpSession::HttpSession(ServerState& server, asio::ip::tcp::socket socket, Strand strand)
    : server_(server), stream_(std::move(socket)), strand_(std::move(strand)) {}

void HttpSession::Start() {
  asio::dispatch(strand_, beast::bind_front_handler(&HttpSession::Read, shared_from_this()));
}

void HttpSession::Read() {
  parser_.emplace();
  parser_->header_limit(kLongestHeader);
  stream_.expires_after(kPatience);
  http::async_read_header(stream_, buffer_, *parser_,
                          [self = shared_from_this()](boost::system::error_code failure,
                                                      std::size_t) { self->OnRead(failure); });
}

HttpRequest HttpSession::Request() const {
  const auto& message = parser_->get();
  const auto field = [&message](http::field name) { return Text(message[name]); };
  HttpRequest request;
  request.method = Text(message.method_string());
  request.target = Text(message.target());
  request.host = field(http::field::host);
  request.origin = field(http::field::origin);
  request.range = field(http::field::range);
  request.upgrade = beast::websocket::is_upgrade(message);
  return request;
}

void HttpSession::OnRead(boost::system::error_code failure) {
  if (failure == http::error::end_of_stream || failure == beast::error::timeout) {
    return stream_.close();
  }
  if (failure) {
    // What is left of a broken request means nothing: answer and close.
    if (failure.category() == http::make_error_code(http::error::bad_method).category()) {
      Write(server_.routes.Refusal(400, "bad request: " + failure.message()), false);
    }
    return;
  }
  const HttpRequest request = Request();
  if (!WebRoutes::IsChannel(request)) {
    const HttpAnswer answer = server_.routes.Answer(request);
    return answer.fetch.empty() ? Answer(answer) : FetchFirst(answer.fetch);
  }
  ChannelRequest channel = server_.routes.CheckChannel(request);
  if (channel.refusal) return Refuse(*channel.refusal);
  if (channel.nick.empty()) return Welcome({});
  OpenView(channel.nick);
}

void HttpSession::Answer(const HttpAnswer& answer) {
  // A body would be read as the next request, so nothing follows it.
  Write(answer, parser_->get().keep_alive() && parser_->is_done());
}

// The request waits for the file or for the end of patience, whichever comes first, and is answered
// with what is there then.
void HttpSession::FetchFirst(const std::string& path) {
  stream_.expires_never();
  const auto limit = std::make_shared<asio::steady_timer>(strand_, server_.options.longest_fetch);
  limit->async_wait([self = shared_from_this(), limit](boost::system::error_code) {
    self->Answer(self->server_.routes.Answer(self->Request()));
  });
  server_.parts.backend.Fetch(path, [strand = strand_, late = std::weak_ptr(limit)] {
    asio::post(strand, [late] {
      if (const auto waiting = late.lock()) waiting->cancel();
    });
  });
}

void HttpSession::OpenView(const std::string& nick) {
  stream_.expires_never();  // the backend answers in its own time
  server_.parts.backend.LogIn(nick, [self = shared_from_this()](LoginOutcome outcome) {
    asio::post(self->strand_, [self, outcome = std::move(outcome)]() mutable {
      self->OnLogin(std::move(outcome));
    });
  });
}

void HttpSession::OnLogin(LoginOutcome outcome) {
  if (outcome.status == 200) return Welcome(std::move(outcome.user));
  Refuse(server_.routes.Refusal(static_cast<unsigned>(outcome.status), outcome.reason));
}

// A page that only asks why it is refused learns that it is not.
void HttpSession::Welcome(biz::IMUserID account) {
  if (!Request().upgrade) return Refuse(server_.routes.Refusal(426, "WebSocket only"));
  const auto memory = std::make_shared<MemoryShare>(server_.memory);
  if (!memory->Take(2 * View::kMemory)) {  // it also needs room to work in
    return Refuse(server_.routes.Refusal(503, "the host's memory is full: too many views"));
  }
  memory->Give(View::kMemory);
  const auto view =
      std::make_shared<View>(server_, std::move(stream_), strand_, std::move(account), memory);
  view->Start(parser_->release());
}

void HttpSession::Refuse(HttpAnswer answer) {
  const HttpRequest request = Request();
  if (request.upgrade) {
    WriteTrace(*server_.parts.log, ns_log::kWarning, {"HttpSession::Refuse", kSource},
               L"channel refused!!!", "_brief_,status,reason",
               {std::to_string(answer.status), answer.body});
  }
  server_.routes.LetRead(request, &answer);
  Write(answer, false);
}

void HttpSession::Write(const HttpAnswer& answer, bool keep_alive) {
  if (answer.file.empty()) {
    return WriteBody<http::string_body>(answer, answer.body, keep_alive);
  }
  http::file_body::value_type file;
  boost::system::error_code failure;
  file.open(answer.file.c_str(), beast::file_mode::scan, failure);
  if (failure) return Write(server_.routes.Refusal(404, "no such file"), keep_alive);
  WriteBody<http::file_body>(answer, std::move(file), keep_alive);
}

template <class Body>
void HttpSession::WriteBody(const HttpAnswer& answer, typename Body::value_type body,
                            bool keep_alive) {
  const bool head = parser_->get().method() == http::verb::head;
  const auto size = Body::size(body);
  const auto fill = [&](auto& message) {
    message.version(11);
    message.result(answer.status);
    message.keep_alive(keep_alive);
    message.content_length(size);
    for (const auto& [name, value] : answer.headers) message.set(name, value);
  };
  const auto send = [this, keep_alive](auto message) {
    auto held = std::make_shared<decltype(message)>(std::move(message));
    stream_.expires_after(kPatience);
    http::async_write(stream_, *held,
                      [self = shared_from_this(), held, keep_alive](
                          boost::system::error_code failure, std::size_t) {
                        self->OnWritten(failure, keep_alive);
                      });
  };
  if (head) {
    http::response<http::empty_body> message;
    fill(message);
    return send(std::move(message));
  }
  http::response<Body> message;
  fill(message);
  message.body() = std::move(body);
  send(std::move(message));
}

void HttpSession::OnWritten(boost::system::error_code failure, bool keep_alive) {
  if (failure) return;
  if (keep_alive) return Read();
  boost::system::error_code ignored;
  stream_.socket().shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
}

}  // namespace imsdk::host
