// One HTTP connection, until it ends or becomes a view.
#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <memory>
#include <optional>

#include "page/backend.h"
#include "server/server_state.h"
#include "server/web_routes.h"

namespace imsdk::host {

// Held by its own pending operations; lives on its strand.
class HttpSession : public std::enable_shared_from_this<HttpSession> {
 public:
  // `strand` is the executor of `socket`.
  HttpSession(ServerState& server, boost::asio::ip::tcp::socket socket, Strand strand);

  // Reads requests until the connection ends. On the strand or before anything else runs.
  void Start();

 private:
  void Read();
  void OnRead(boost::system::error_code failure);
  HttpRequest Request() const;
  void Answer(const HttpAnswer& answer);
  void FetchFirst(const std::string& path);
  void OpenView(const std::string& nick);
  void OnLogin(LoginOutcome outcome);
  void Welcome(biz::IMUserID account);
  void Refuse(HttpAnswer answer);
  void Write(const HttpAnswer& answer, bool keep_alive);
  template <class Body>
  void WriteBody(const HttpAnswer& answer, typename Body::value_type body, bool keep_alive);
  void OnWritten(boost::system::error_code failure, bool keep_alive);

  using Parser = boost::beast::http::request_parser<boost::beast::http::empty_body>;

  ServerState& server_;
  boost::beast::tcp_stream stream_;
  Strand strand_;
  boost::beast::flat_buffer buffer_;
  std::optional<Parser> parser_;  // one for each request
};

}  // namespace imsdk::host
