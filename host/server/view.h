// One WebSocket and the page behind it.
#pragma once

#include <array>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <memory>
#include <string>

#include "imsdk/biz/user_id.h"
#include "memory/budget.h"
#include "memory/turn.h"
#include "page/page.h"
#include "server/incoming_frame.h"
#include "server/outgoing_frames.h"
#include "server/server_state.h"
#include "server/strand_runner.h"

namespace imsdk::host {

using UpgradeRequest = boost::beast::http::request<boost::beast::http::empty_body>;

// One browser view. Held by its own pending operations; lives on its strand, the executor of its
// stream.
class View : public std::enable_shared_from_this<View> {
 public:
  // Bytes that a view holds while nothing happens in it: its bridge, its window states, its
  // buffers.
  static constexpr std::size_t kMemory = 1u << 20;

  // `strand` is the strand of `stream`; `memory` holds `kMemory` already.
  View(ServerState& server, boost::beast::tcp_stream stream, Strand strand, biz::IMUserID account,
       std::shared_ptr<MemoryShare> memory);
  ~View();

  // Answers the page's upgrade request and reads frames from then on. On the strand.
  void Start(UpgradeRequest request);
  // Unbinds the page and says that the host goes away. Any thread.
  void GoAway();
  // Drops the connection. Any thread, also from inside a call of the bridge.
  void Cut(std::string reason);

 private:
  struct Socket;  // keeps the WebSocket's headers out of here

  void OnAccepted(boost::system::error_code failure);
  void Read();
  void OnRead(boost::system::error_code failure, std::size_t size);
  void OnFrame();
  void Carry();
  void Send(std::string frame);
  void Write();
  void OnWritten(boost::system::error_code failure);
  void End(std::string_view reason, int level = ns_log::kRoutine);

  ServerState& server_;
  Strand strand_;
  std::unique_ptr<Socket> socket_;
  biz::IMUserID account_;
  std::shared_ptr<StrandRunner> runner_;
  const std::shared_ptr<MemoryShare> memory_;
  RefPtr<Page> page_;
  std::array<char, 64u << 10> piece_;  // where the socket's bytes go first
  IncomingFrame incoming_;
  OutgoingFrames outgoing_;  // the front one is being written
  bool overflown_ = false;   // the page leaves too much unread; the end is on its way
  bool ended_ = false;
};

}  // namespace imsdk::host
