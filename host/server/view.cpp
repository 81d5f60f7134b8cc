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

// From this size on frames are carried out one after another, whosesoever they are.
constexpr std::size_t kLargeFrame = 256u << 10;

}  // namespace

struct View::Socket {
  explicit Socket(beast::tcp_stream stream) : ws(std::move(stream)) {}
  websocket::stream<beast::tcp_stream> ws;
  UpgradeRequest request;
};

View::View(ServerState& server, beast::tcp_stream stream, Strand strand, biz::IMUserID account,
           std::shared_ptr<MemoryShare> memory)
    : server_(server),
      strand_(strand),
      socket_(std::make_unique<Socket>(std::move(stream))),
      account_(std::move(account)),
      runner_(std::make_shared<StrandRunner>(std::move(strand))),
      memory_(std::move(memory)),
      incoming_(memory_),
      outgoing_(memory_, server.options.longest_queue) {}

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
  page_ =
      RefPtr<Page>(new Page({server_.parts.log, server_.parts.windows, server_.parts.translation,
                             server_.parts.calls, server_.options.costliest_frame},
                            memory_, [this](std::string frame) { Send(std::move(frame)); }));
  try {
    if (!page_->Open(server_.parts.backend, runner_, account_)) return Cut("no bridge");
  } catch (const std::exception& error) {
    return Cut(error.what());
  }
  Read();
}

void View::Read() {
  socket_->ws.async_read_some(asio::buffer(piece_),
                              beast::bind_front_handler(&View::OnRead, shared_from_this()));
}

void View::OnRead(boost::system::error_code failure, std::size_t size) {
  if (ended_) return;
  if (failure == websocket::error::message_too_big) {
    return End("a frame over " + std::to_string(server_.options.longest_frame) + " bytes",
               ns_log::kWarning);
  }
  if (failure == websocket::error::closed) return End("closed by the page");
  if (failure) return End(failure.message());
  try {
    incoming_.Add({piece_.data(), size});
    if (socket_->ws.is_message_done()) return OnFrame();
    Read();
  } catch (const std::exception& error) {  // memory has run out, for this view at least
    End(error.what());
  }
}

void View::OnFrame() {
  if (incoming_.size() < kLargeFrame) return Carry();
  server_.turn.Enter([self = shared_from_this()](Turn::Pass pass) {
    asio::post(self->strand_, [self, pass = std::move(pass)] {
      if (!self->ended_) self->Carry();
    });
  });
}

void View::Carry() try {
  if (incoming_.skipped()) {
    page_->Refuse("the host's memory is full: a frame of this size has no room");
  } else if (!socket_->ws.got_text()) {
    page_->Refuse("binary frame");
  } else {
    page_->OnFrame(incoming_.Take());
  }
  incoming_.Done();
  Read();
} catch (const std::exception& error) {  // memory has run out, for this view at least
  End(error.what());
}

void View::Send(std::string frame) {
  if (ended_ || overflown_) return;
  const std::string problem = outgoing_.Add(std::move(frame));
  if (!problem.empty()) {
    overflown_ = true;
    return Cut(problem);
  }
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
  outgoing_.DropFront();
  if (outgoing_.size() > 0) Write();
}

void View::GoAway() {
  runner_->Drop();  // the goodbye would wait behind the tasks
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
