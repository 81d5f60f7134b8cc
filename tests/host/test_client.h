// A script's side of bridgehost, for tests.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace imsdk::host {

struct HttpResult {
  int status = 0;
  std::map<std::string, std::string> headers;  // names in lower case
  std::string body;
};

using HttpHeaders = std::map<std::string, std::string>;

// One request on a connection of its own. "Host" is the server's own name unless `headers` say
// otherwise. Status 0 when there was no answer.
HttpResult Request(std::uint16_t port, const std::string& target, HttpHeaders headers = {},
                   const std::string& method = "GET");

// One WebSocket.
class TestPage {
 public:
  // Connects; `status()` tells how the host took it.
  TestPage(std::uint16_t port, const std::string& target, HttpHeaders headers = {});
  TestPage(TestPage&&) noexcept;
  ~TestPage();

  // The status of the handshake: 101 when it went through.
  int status() const;
  // The body of a refused handshake.
  const std::string& refusal() const;

  void Send(std::string_view frame, bool text = true);
  // The next frame, or nothing when none came in time or the connection has ended.
  std::optional<std::string> Receive(std::chrono::milliseconds patience = std::chrono::seconds(5));
  // Reads on until the connection ends; the close code, 0 for none, -1 when it did not end in time.
  int WaitClosed(std::chrono::milliseconds patience = std::chrono::seconds(5));
  // Says goodbye and waits for the host to agree.
  void Close();
  // Goes without a word.
  void Vanish();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Waits until `condition` holds. False when it does not in time.
template <class Condition>
bool Eventually(Condition condition, std::chrono::milliseconds patience = std::chrono::seconds(5));

}  // namespace imsdk::host

#include <thread>

template <class Condition>
bool imsdk::host::Eventually(Condition condition, std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}
