// What the host answers over HTTP.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "server/run_token.h"

namespace imsdk::host {

// What counts of a request. The texts live as long as the request.
struct HttpRequest {
  std::string_view method;
  std::string_view target;  // path and query as they were sent
  std::string_view host;
  std::string_view origin;  // empty when there is none
  std::string_view range;
  bool upgrade = false;  // asks for a WebSocket
};

struct HttpAnswer {
  unsigned status = 200;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  std::filesystem::path file;  // when not empty, its content is the body
  // When not empty, the answer may become a better one once this file (UTF-8, relative to the data
  // folder) was fetched.
  std::string fetch;
};

// A page's wish to open the script channel, or why it is refused.
struct ChannelRequest {
  std::optional<HttpAnswer> refusal;
  std::string nick;  // empty: the page logs in by itself
};

// The rules of the host's addresses. Immutable; any thread.
class WebRoutes {
 public:
  // `port` is the one the host listens on. `token` must live longer.
  WebRoutes(std::filesystem::path web, std::filesystem::path data, std::uint16_t port,
            const RunToken& token);

  HttpAnswer Answer(const HttpRequest& request) const;

  // Whether `request` wants the script channel.
  static bool IsChannel(const HttpRequest& request);
  ChannelRequest CheckChannel(const HttpRequest& request) const;

  // An answer that says why something is refused: {"error":"…"}.
  HttpAnswer Refusal(unsigned status, std::string_view reason) const;

 private:
  bool IsOwnName(std::string_view host) const;
  bool HasToken(std::string_view query) const;
  HttpAnswer Health(std::string_view query) const;
  HttpAnswer DataFile(const HttpRequest& request, std::string_view query) const;
  HttpAnswer WebFile(std::string_view path) const;
  HttpAnswer Headers(unsigned status, std::string_view type, std::string_view cache) const;

  std::filesystem::path web_;
  std::filesystem::path data_;
  std::string port_;
  std::string policy_;
  const RunToken& token_;
};

}  // namespace imsdk::host
