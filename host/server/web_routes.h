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

// What is served, and to whom.
struct WebPlaces {
  std::filesystem::path web;   // the built pages
  std::filesystem::path data;  // pages may have what lies in its folder "files"
  // When not empty, these pages are served in the place of the built ones; of those only the page
  // client ("client/") and the emotions remain, behind what lies here under the same name.
  std::filesystem::path pages{};
  // When not empty, pages of this origin (see `OriginOf`) may come in like the host's own.
  std::string origin{};
};

// The rules of the host's addresses. Immutable; any thread.
class WebRoutes {
 public:
  // `port` is the one the host listens on. `token` must live longer.
  WebRoutes(WebPlaces places, std::uint16_t port, const RunToken& token);

  // What `request` gets when it is not for the script channel.
  HttpAnswer Answer(const HttpRequest& request) const;

  // Whether `request` is for the script channel: wants it, or asks why it is refused.
  static bool IsChannel(const HttpRequest& request);
  ChannelRequest CheckChannel(const HttpRequest& request) const;
  // Adds what lets the page that asked read `answer`. What the channel answers can be read by every
  // page: a browser does not show a page why its WebSocket was refused, so it asks without one.
  void LetRead(const HttpRequest& request, HttpAnswer* answer) const;

  // An answer that says why something is refused: {"error":"…"}.
  HttpAnswer Refusal(unsigned status, std::string_view reason) const;

 private:
  bool IsOwnName(std::string_view host) const;
  bool IsWelcome(std::string_view origin) const;
  HttpAnswer Route(const HttpRequest& request) const;
  bool HasToken(std::string_view query) const;
  HttpAnswer Health(std::string_view query) const;
  HttpAnswer DataFile(const HttpRequest& request, std::string_view query) const;
  HttpAnswer WebFile(std::string_view path) const;
  HttpAnswer Headers(unsigned status, std::string_view type, std::string_view cache) const;

  const WebPlaces places_;
  std::string port_;
  std::string policy_;
  const RunToken& token_;
};

}  // namespace imsdk::host
