// The host's HTTP and WebSocket server.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "client/chat_windows.h"
#include "client/host_calls.h"
#include "client/translation.h"
#include "kexcore/logger.h"
#include "page/backend.h"
#include "server/run_token.h"

namespace imsdk::host {

struct ServerOptions {
  std::uint16_t port = 0;                  // 0: a free one
  std::filesystem::path web;               // the built pages
  std::filesystem::path pages;             // see WebPlaces
  std::string origin;                      // see WebPlaces
  std::filesystem::path data;              // pages may have what lies in its folder "files"
  std::size_t longest_frame = 64u << 20;   // bytes of one frame of a page
  std::size_t longest_queue = 64u << 20;   // bytes that wait for a slow page before it is cut off
  std::size_t memory = 768u << 20;         // bytes that all views together may make the host hold
  std::size_t costliest_frame = 1u << 30;  // bytes that carrying out one frame may take
  std::chrono::milliseconds longest_fetch{20'000};  // before a file counts as missing
};

// What the server works with. Everything lives longer than the server.
struct ServerParts {
  Backend& backend;
  const RunToken& token;
  RefPtr<ChatWindows> windows;
  RefPtr<ns_log::ILogger> log;
  RefPtr<Translation> translation{};  // may be null
  const HostCalls* calls = nullptr;   // may be null
};

// Listens on the loopback address. Each WebSocket is one view: it has a bridge of its own and a
// task runner on which everything of that view runs, on one of the server's threads at a time.
class Server {
 public:
  // Listens from now on. Null when the port cannot be had; `*error` then says why.
  static std::unique_ptr<Server> Start(const ServerOptions& options, ServerParts parts,
                                       std::string* error);
  // Stops, if that was not done. What holds an open login of a page must be gone by then.
  ~Server();

  std::uint16_t port() const;
  // Views that are open now. Any thread.
  std::size_t ViewCount() const;
  // Bytes that pages make the host hold. Any thread.
  std::size_t MemoryUsed() const;

  // Unbinds every view, tells the pages that the host goes away, ends all connections and the
  // server's threads. Takes a second at most when no call hangs. Not on a server thread.
  void Stop();

 private:
  class Impl;
  explicit Server(std::unique_ptr<Impl> impl);

  std::unique_ptr<Impl> impl_;
};

}  // namespace imsdk::host
