#include "server/server.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <exception>
#include <thread>
#include <utility>

#include "log/host_trace.h"
#include "server/http_session.h"
#include "server/server_state.h"
#include "server/view.h"

namespace imsdk::host {
namespace asio = boost::asio;
using asio::ip::tcp;
namespace {

constexpr char kSource[] = "host\\server\\server";
constexpr int kThreads = 2;
constexpr std::chrono::milliseconds kFarewell{500};     // for pages to answer the close
constexpr std::chrono::milliseconds kCutting{500};      // for views to end after that
constexpr std::chrono::milliseconds kAcceptPause{100};  // when no connection can be taken

}  // namespace

class Server::Impl {
 public:
  Impl(const ServerOptions& options, ServerParts parts) {
    const tcp::endpoint at(asio::ip::address_v4::loopback(), options.port);
    acceptor_.open(at.protocol());
    acceptor_.set_option(tcp::acceptor::reuse_address(true));
    acceptor_.bind(at);
    acceptor_.listen();
    port_ = acceptor_.local_endpoint().port();
    state_.emplace(options, std::move(parts), port_);
    Accept();
    for (int i = 0; i < kThreads; ++i)
      threads_.emplace_back([this] { Run(&asio::io_context::run); });
  }

  ~Impl() { Stop(); }

  std::uint16_t port() const { return port_; }
  std::size_t ViewCount() const { return state_->views.size(); }
  std::size_t MemoryUsed() const { return state_->memory->used(); }

  void Stop() {
    if (threads_.empty()) return;
    asio::post(acceptor_.get_executor(), [this] {
      boost::system::error_code ignored;
      acceptor_.close(ignored);
    });
    state_->views.CloseList();
    state_->turn.Close();
    for (const auto& view : state_->views.Snapshot()) view->GoAway();
    state_->views.WaitEmpty(std::chrono::steady_clock::now() + kFarewell);
    for (const auto& view : state_->views.Snapshot()) view->Cut("the host goes away");
    state_->views.WaitEmpty(std::chrono::steady_clock::now() + kCutting);
    io_.stop();
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
    // A view whose call took too long has its end still to come; what is queued runs here.
    io_.restart();
    Run(&asio::io_context::poll);
  }

 private:
  void Run(std::size_t (asio::io_context::*work)()) {
    for (;;) {
      try {
        (io_.*work)();
        return;
      } catch (const std::exception& error) {  // one connection's trouble is not the host's
        WriteTrace(*state_->parts.log, ns_log::kError, {"Server::Run", kSource},
                   L"a connection failed!!!", "_brief_,reason", {error.what()});
      }
    }
  }

  void Accept() {
    const Strand strand = asio::make_strand(io_);
    acceptor_.async_accept(
        strand, [this, strand](boost::system::error_code failure, tcp::socket socket) {
          if (failure == asio::error::operation_aborted || !acceptor_.is_open()) return;
          if (failure) return AcceptLater();
          std::make_shared<HttpSession>(*state_, std::move(socket), strand)->Start();
          Accept();
        });
  }

  // Out of file handles, most likely: connections that end give some back.
  void AcceptLater() {
    pause_.expires_after(kAcceptPause);
    pause_.async_wait([this](boost::system::error_code failure) {
      if (!failure && acceptor_.is_open()) Accept();
    });
  }

  std::optional<ServerState> state_;  // connections use it until the io_context ends them
  asio::io_context io_{kThreads};
  asio::executor_work_guard<asio::io_context::executor_type> work_{io_.get_executor()};
  tcp::acceptor acceptor_{asio::make_strand(io_)};
  asio::steady_timer pause_{acceptor_.get_executor()};
  std::uint16_t port_ = 0;
  std::vector<std::thread> threads_;
};

std::unique_ptr<Server> Server::Start(const ServerOptions& options, ServerParts parts,
                                      std::string* error) {
  try {
    return std::unique_ptr<Server>(new Server(std::make_unique<Impl>(options, std::move(parts))));
  } catch (const std::exception& failure) {
    *error = "port " + std::to_string(options.port) + " cannot be had: " + failure.what();
    return nullptr;
  }
}

Server::Server(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Server::~Server() = default;

std::uint16_t Server::port() const { return impl_->port(); }
std::size_t Server::ViewCount() const { return impl_->ViewCount(); }
std::size_t Server::MemoryUsed() const { return impl_->MemoryUsed(); }
void Server::Stop() { impl_->Stop(); }

}  // namespace imsdk::host
