// What connections and views of one server share.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/strand.hpp>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "memory/budget.h"
#include "memory/turn.h"
#include "server/server.h"
#include "server/web_routes.h"

namespace imsdk::host {

class View;

using Strand = boost::asio::strand<boost::asio::io_context::executor_type>;

// The views that are open. Any thread.
class ViewList {
 public:
  // False once `CloseList` was called: no view may start any more.
  bool Add(const std::shared_ptr<View>& view);
  void Remove(const View* view);
  void CloseList();
  std::vector<std::shared_ptr<View>> Snapshot() const;
  std::size_t size() const;
  // Waits until the list is empty. False when it still is not at `deadline`.
  bool WaitEmpty(std::chrono::steady_clock::time_point deadline) const;

 private:
  mutable std::mutex lock_;
  mutable std::condition_variable emptied_;
  std::unordered_map<const View*, std::weak_ptr<View>> views_;
  bool open_ = true;
};

struct ServerState {
  ServerState(ServerOptions server_options, ServerParts server_parts, std::uint16_t port)
      : options(std::move(server_options)),
        parts(std::move(server_parts)),
        routes({options.web, options.data, options.pages, options.origin}, port, parts.token) {}

  const ServerOptions options;
  const ServerParts parts;
  const WebRoutes routes;
  // A page may end later than the server.
  const std::shared_ptr<MemoryBudget> memory = std::make_shared<MemoryBudget>(options.memory);
  Turn turn;  // of large frames
  ViewList views;
};

}  // namespace imsdk::host
