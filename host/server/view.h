// One WebSocket and the page behind it.
#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <deque>
#include <memory>
#include <string>

#include "imsdk/biz/user_id.h"
#include "page/page.h"
#include "server/server_state.h"
#include "server/strand_runner.h"

namespace imsdk::host {

using UpgradeRequest = boost::beast::http::request<boost::beast::http::empty_body>;

// One browser view. Held by its own pending operations; lives on its strand, the executor of its
// stream.
class View : public std::enable_shared_from_this<View> {
 public:
  // `strand` is the strand of `stream`.
  View(ServerState& server, boost::beast::tcp_stream stream, Strand strand, biz::IMUserID account);
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
  void OnRead(boost::system::error_code failure);
  void Send(std::string frame);
  void Write();
  void OnWritten(boost::system::error_code failure);
  void Shrink();
  void End(std::string_view reason, int level = ns_log::kRoutine);

  ServerState& server_;
  Strand strand_;
  std::unique_ptr<Socket> socket_;
  biz::IMUserID account_;
  std::shared_ptr<StrandRunner> runner_;
  RefPtr<Page> page_;
  boost::beast::flat_buffer incoming_;
  std::deque<std::string> outgoing_;  // the front one is being written
  std::size_t queued_ = 0;            // bytes in outgoing_
  bool overflown_ = false;            // the page reads too slowly; the end is on its way
  bool ended_ = false;
};

}  // namespace imsdk::host
