#include "server/view.h"

#include <boost/asio/post.hpp>
#include <boost/beast/websocket.hpp>
#include <exception>
#include <utility>

#include "log/host_trace.h"

namespace imsdk::host {
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = beast::websocket;
namespace {

constexpr char kSource[] = "host\\server\\view";

// A buffer that one long frame made large is given back after it.
constexpr std::size_t kKeptBuffer = 1u << 20;

}  // namespace

struct View::Socket {
  explicit Socket(beast::tcp_stream stream) : ws(std::move(stream)) {}
  websocket::stream<beast::tcp_stream> ws;
  UpgradeRequest request;
};

View::View(ServerState& server, beast::tcp_stream stream, Strand strand, biz::IMUserID account)
    : server_(server),
      strand_(strand),
      socket_(std::make_unique<Socket>(std::move(stream))),
      account_(std::move(account)),
      runner_(std::make_shared<StrandRunner>(std::move(strand))) {}

View::~View() { End("dropped"); }

void View::Start(UpgradeRequest request) {
  auto& ws = socket_->ws;
  socket_->request = std::move(request);
  beast::get_lowest_layer(ws).expires_never();  // the WebSocket has timeouts of its own
  boost::system::error_code ignored;
  beast::get_lowest_layer(ws).socket().set_option(asio::ip::tcp::no_delay(true), ignored);
  ws.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
  ws.read_message_max(server_.options.longest_frame);
  ws.auto_fragment(false);
  ws.text(true);
  if (!server_.views.Add(shared_from_this())) return End("the host goes away");
  ws.async_accept(socket_->request,
                  beast::bind_front_handler(&View::OnAccepted, shared_from_this()));
}

void View::OnAccepted(boost::system::error_code failure) {
  if (ended_) return;
  if (failure) return End(failure.message());
  page_ = RefPtr<Page>(new Page(server_.parts.log, server_.parts.windows, server_.parts.translation,
                                [this](std::string frame) { Send(std::move(frame)); }));
  try {
    if (!page_->Open(server_.parts.backend, runner_, account_)) return Cut("no bridge");
  } catch (const std::exception& error) {
    return Cut(error.what());
  }
  Read();
}

void View::Read() {
  socket_->ws.async_read(
      incoming_, [self = shared_from_this()](boost::system::error_code failure, std::size_t) {
        self->OnRead(failure);
      });
}

void View::OnRead(boost::system::error_code failure) {
  if (ended_) return;
  if (failure == websocket::error::message_too_big) {
    return End("a frame over " + std::to_string(server_.options.longest_frame) + " bytes",
               ns_log::kWarning);
  }
  if (failure == websocket::error::closed) return End("closed by the page");
  if (failure) return End(failure.message());
  try {
    if (socket_->ws.got_text()) {
      const auto frame = incoming_.data();
      page_->OnFrame({static_cast<const char*>(frame.data()), frame.size()});
    } else {
      page_->Refuse("binary frame");
    }
    Shrink();
    Read();
  } catch (const std::exception& error) {  // memory has run out, for this view at least
    End(error.what());
  }
}

void View::Shrink() {
  incoming_.consume(incoming_.size());
  if (incoming_.capacity() > kKeptBuffer) incoming_.shrink_to_fit();
}

void View::Send(std::string frame) {
  if (ended_ || overflown_) return;
  if (queued_ + frame.size() > server_.options.longest_queue) {
    overflown_ = true;
    return Cut("the page reads too slowly: over " + std::to_string(server_.options.longest_queue) +
               " bytes wait for it");
  }
  queued_ += frame.size();
  outgoing_.push_back(std::move(frame));
  if (outgoing_.size() == 1) Write();
}

void View::Write() {
  socket_->ws.async_write(asio::buffer(outgoing_.front()),
                          [self = shared_from_this()](boost::system::error_code failure,
                                                      std::size_t) { self->OnWritten(failure); });
}

void View::OnWritten(boost::system::error_code failure) {
  if (ended_) return;
  if (failure) return End(failure.message());
  queued_ -= outgoing_.front().size();
  outgoing_.pop_front();
  if (!outgoing_.empty()) Write();
}

void View::GoAway() {
  asio::post(strand_, [self = shared_from_this()] {
    if (self->ended_) return;
    // Nothing may be said in the middle of the handshake.
    if (!self->page_) return self->End("the host goes away");
    self->page_->Close();
    self->socket_->ws.async_close(
        websocket::close_code::going_away,
        [self](boost::system::error_code) { self->End("the host goes away"); });
  });
}

void View::Cut(std::string reason) {
  asio::post(strand_, [self = shared_from_this(), reason = std::move(reason)] {
    self->End(reason, ns_log::kWarning);
  });
}

// The one end of every view, on its strand and outside any call of the bridge.
void View::End(std::string_view reason, int level) {
  if (std::exchange(ended_, true)) return;
  server_.views.Remove(this);
  if (page_) {
    page_->Close();
    WriteTrace(*server_.parts.log, level, {"View::End", kSource}, L"view closed",
               "_brief_,browserId,reason", {page_->browser_id(), std::string(reason)});
  }
  runner_->Close();
  beast::get_lowest_layer(socket_->ws).close();
}

}  // namespace imsdk::host
