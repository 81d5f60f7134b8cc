#include "test_client.h"

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <cctype>

namespace imsdk::host {
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using asio::ip::tcp;
namespace {

tcp::endpoint At(std::uint16_t port) { return {asio::ip::address_v4::loopback(), port}; }

std::string OwnName(std::uint16_t port) { return "127.0.0.1:" + std::to_string(port); }

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

}  // namespace

HttpResult Request(std::uint16_t port, const std::string& target, HttpHeaders headers,
                   const std::string& method) {
  asio::io_context io;
  beast::tcp_stream stream(io);
  stream.connect(At(port));
  http::request<http::empty_body> request;
  request.method_string(method);
  request.target(target);
  request.version(11);
  headers.try_emplace("Host", OwnName(port));
  for (const auto& [name, value] : headers) request.set(name, value);
  boost::system::error_code failure;
  http::write(stream, request, failure);
  beast::flat_buffer buffer;
  http::response_parser<http::string_body> response;
  response.body_limit(64u << 20);
  response.skip(method == "HEAD");
  if (!failure) http::read(stream, buffer, response, failure);
  if (failure) return {};
  HttpResult result{static_cast<int>(response.get().result_int()), {}, response.get().body()};
  for (const auto& field : response.get()) {
    result.headers[Lower(std::string(field.name_string()))] = std::string(field.value());
  }
  return result;
}

struct TestPage::Impl {
  asio::io_context io;
  websocket::stream<beast::tcp_stream> ws{io};
  http::response<http::string_body> answer;
  beast::flat_buffer incoming;
  bool reading = false;
  bool arrived = false;
  bool ended = false;

  // True when a frame lies in `incoming`.
  bool Await(std::chrono::milliseconds patience) {
    if (!reading && !ended) {
      reading = true;
      incoming.clear();
      ws.async_read(incoming, [this](boost::system::error_code failure, std::size_t) {
        reading = false;
        arrived = !failure;
        ended = !!failure;
      });
    }
    const auto deadline = std::chrono::steady_clock::now() + patience;
    io.restart();
    while (reading && io.run_one_until(deadline) > 0) {
    }
    return std::exchange(arrived, false);
  }
};

TestPage::TestPage(std::uint16_t port, const std::string& target, HttpHeaders headers)
    : impl_(std::make_unique<Impl>()) {
  auto& ws = impl_->ws;
  beast::get_lowest_layer(ws).connect(At(port));
  beast::get_lowest_layer(ws).socket().set_option(tcp::no_delay(true));
  ws.read_message_max(256u << 20);
  const auto host = headers.try_emplace("Host", OwnName(port)).first->second;
  ws.set_option(websocket::stream_base::decorator([headers](websocket::request_type& request) {
    for (const auto& [name, value] : headers) request.set(name, value);
  }));
  // Only the asynchronous handshake hands over the answer of a host that refuses.
  ws.async_handshake(impl_->answer, host, target, [](boost::system::error_code) {});
  impl_->io.run();
}

TestPage::TestPage(TestPage&&) noexcept = default;
TestPage::~TestPage() = default;

int TestPage::status() const { return static_cast<int>(impl_->answer.result_int()); }
const std::string& TestPage::refusal() const { return impl_->answer.body(); }

void TestPage::Send(std::string_view frame, bool text) {
  impl_->ws.text(text);
  boost::system::error_code ended;  // a host that cut the page off shows in what is received
  impl_->ws.write(asio::buffer(frame.data(), frame.size()), ended);
}

std::optional<std::string> TestPage::Receive(std::chrono::milliseconds patience) {
  if (!impl_->Await(patience)) return std::nullopt;
  return beast::buffers_to_string(impl_->incoming.data());
}

int TestPage::WaitClosed(std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!impl_->ended) {
    const auto left = deadline - std::chrono::steady_clock::now();
    if (left.count() <= 0) return -1;
    impl_->Await(std::chrono::duration_cast<std::chrono::milliseconds>(left));
  }
  return impl_->ws.reason().code;
}

void TestPage::Close() {
  boost::system::error_code ignored;
  impl_->ws.close(websocket::close_code::normal, ignored);
}

void TestPage::Vanish() { beast::get_lowest_layer(impl_->ws).close(); }

}  // namespace imsdk::host
