#include "server/web_routes.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "kexbase/json_string.h"
#include "kexbase/time.h"
#include "kexnet/escape.h"
#include "served_files.h"

namespace imsdk::host {
namespace fs = std::filesystem;
namespace {

// A range is answered with at most this many bytes; the page asks on from there.
constexpr std::uintmax_t kLongestPart = 8u << 20;

constexpr std::string_view kNoPages =
    "<!doctype html><meta charset=utf-8><title>bridgehost</title>"
    "<p>bridgehost is running, but its pages are not built. "
    "<code>./dev run</code> builds them and starts it again.</p>";

constexpr std::string_view kChannel = "/channel";

// What pages of one's own find at the host beside themselves.
bool IsForAllPages(std::string_view name) {
  return name.starts_with("client/") || name.starts_with("emotions/");
}

constexpr std::string_view kNoOwnPage =
    "<!doctype html><meta charset=utf-8><title>bridgehost</title>"
    "<p>bridgehost is running. The folder given with <code>--pages</code> has no "
    "<code>index.html</code>.</p>";

struct Target {
  std::string_view path;
  std::string_view query;
};

Target Split(std::string_view target) {
  target = target.substr(0, target.find('#'));
  const std::size_t mark = target.find('?');
  if (mark == std::string_view::npos) return {target, {}};
  return {target.substr(0, mark), target.substr(mark + 1)};
}

std::string ReadPart(const fs::path& file, const ByteRange& range) {
  std::ifstream in(file, std::ios::binary);
  in.seekg(static_cast<std::streamoff>(range.first));
  std::string part(static_cast<std::size_t>(range.last - range.first + 1), '\0');
  in.read(part.data(), static_cast<std::streamsize>(part.size()));
  part.resize(static_cast<std::size_t>(std::max<std::streamsize>(in.gcount(), 0)));
  return part;
}

}  // namespace

WebRoutes::WebRoutes(WebPlaces places, std::uint16_t port, const RunToken& token)
    : places_(std::move(places)), port_(std::to_string(port)), token_(token) {
  policy_ = "default-src 'self'; connect-src 'self' ws://127.0.0.1:" + port_ +
            " ws://localhost:" + port_ +
            "; img-src 'self' data: blob:; media-src 'self' blob:; object-src 'none'; "
            "base-uri 'none'; form-action 'self'; frame-ancestors 'none'";
}

HttpAnswer WebRoutes::Answer(const HttpRequest& request) const {
  HttpAnswer answer = Route(request);
  LetRead(request, &answer);
  return answer;
}

HttpAnswer WebRoutes::Route(const HttpRequest& request) const {
  if (!IsOwnName(request.host)) return Refusal(403, "host not allowed");
  if (request.method != "GET" && request.method != "HEAD") {
    HttpAnswer answer = Refusal(405, "method not allowed");
    answer.headers.emplace_back("Allow", "GET, HEAD");
    return answer;
  }
  const Target target = Split(request.target);
  if (target.path == "/health") return Health(target.query);
  if (target.path == "/file") return DataFile(request, target.query);
  return WebFile(target.path);
}

bool WebRoutes::IsChannel(const HttpRequest& request) {
  return (request.method == "GET" || request.method == "HEAD") &&
         Split(request.target).path == kChannel;
}

ChannelRequest WebRoutes::CheckChannel(const HttpRequest& request) const {
  if (!IsOwnName(request.host)) return {Refusal(403, "host not allowed"), {}};
  if (!request.origin.empty() && !IsWelcome(request.origin)) {
    return {Refusal(403, "origin not allowed: " + std::string(request.origin) +
                             " is neither bridgehost's own nor the one named by --origin"),
            {}};
  }
  const std::string_view query = Split(request.target).query;
  if (!HasToken(query)) return {Refusal(401, "bad token"), {}};
  return {std::nullopt, QueryValue(query, "account").value_or(std::string())};
}

void WebRoutes::LetRead(const HttpRequest& request, HttpAnswer* answer) const {
  const bool reason = Split(request.target).path == kChannel;
  if (reason || !places_.origin.empty()) answer->headers.emplace_back("Vary", "Origin");
  if (request.origin.empty()) return;
  if (!reason && request.origin != places_.origin) return;
  answer->headers.emplace_back("Access-Control-Allow-Origin", request.origin);
}

bool WebRoutes::IsWelcome(std::string_view origin) const {
  constexpr std::string_view kScheme = "http://";
  if (!places_.origin.empty() && origin == places_.origin) return true;
  return origin.starts_with(kScheme) && IsOwnName(origin.substr(kScheme.size()));
}

// Only a request that names this very address is the user's own: a foreign name that resolves here
// belongs to somebody else's page.
bool WebRoutes::IsOwnName(std::string_view host) const {
  return host == "127.0.0.1:" + port_ || host == "localhost:" + port_;
}

bool WebRoutes::HasToken(std::string_view query) const {
  const std::optional<std::string> token = QueryValue(query, "token");
  return token && token_.Accepts(*token, base::Time::Now().ToMilliseconds());
}

HttpAnswer WebRoutes::Refusal(unsigned status, std::string_view reason) const {
  HttpAnswer answer = Headers(status, "application/json", "no-store");
  answer.body = "{\"error\":";
  base::AppendJSONString(reason, &answer.body);
  answer.body += '}';
  return answer;
}

HttpAnswer WebRoutes::Health(std::string_view query) const {
  if (!HasToken(query)) return Refusal(401, "bad token");
  HttpAnswer answer = Headers(200, "application/json", "no-store");
  answer.body = R"({"ok":true})";
  return answer;
}

HttpAnswer WebRoutes::DataFile(const HttpRequest& request, std::string_view query) const {
  if (!HasToken(query)) return Refusal(401, "bad token");
  const std::optional<std::string> path = QueryValue(query, "path");
  if (!path || path->empty()) return Refusal(400, "no path, or broken escapes in it");
  const FoundFile found = FindInside(places_.data / "files", places_.data, *path);
  std::error_code failure;
  if (found.status != 200) {
    HttpAnswer answer = Refusal(static_cast<unsigned>(found.status), found.reason);
    if (!found.path.empty()) {
      const fs::path root = fs::weakly_canonical(places_.data / "files", failure);
      answer.fetch = ("files" / found.path.lexically_relative(root)).generic_string();
    }
    return answer;
  }
  const std::uintmax_t size = fs::file_size(found.path, failure);
  if (failure) return Refusal(404, "no such file");

  // What could run is handed over as a download of no particular type.
  const MediaType type = MediaTypeOf(found.path);
  HttpAnswer answer =
      Headers(200, type.inline_safe ? type.name : "application/octet-stream", "private, no-cache");
  const std::string name = net::EscapeQueryParamValue(found.path.filename().string(), false);
  answer.headers.emplace_back("Content-Disposition", (type.inline_safe ? "inline" : "attachment") +
                                                         ("; filename*=UTF-8''" + name));
  answer.headers.emplace_back("Accept-Ranges", "bytes");
  ByteRange range;
  switch (ReadRange(request.range, size, &range)) {
    case RangeKind::kNone:
      answer.file = found.path;
      return answer;
    case RangeKind::kBeyond:
      answer = Refusal(416, "no such range");
      answer.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
      return answer;
    case RangeKind::kPart:
      break;
  }
  range.last = std::min(range.last, range.first + kLongestPart - 1);
  answer.status = 206;
  answer.body = ReadPart(found.path, range);
  answer.headers.emplace_back("Content-Range", "bytes " + std::to_string(range.first) + '-' +
                                                   std::to_string(range.last) + '/' +
                                                   std::to_string(size));
  return answer;
}

HttpAnswer WebRoutes::WebFile(std::string_view path) const {
  std::optional<std::string> name = PercentDecode(path, false);
  if (!name || !name->starts_with('/')) return Refusal(400, "broken address");
  name->erase(0, 1);
  if (name->empty() || name->ends_with('/')) *name += "index.html";
  const bool own = !places_.pages.empty();
  const fs::path& pages = own ? places_.pages : places_.web;
  FoundFile found = FindInside(pages, pages, *name);
  if (own && found.status == 404 && IsForAllPages(*name)) {
    found = FindInside(places_.web, places_.web, *name);
  }
  if (found.status == 200) {
    HttpAnswer answer = Headers(200, MediaTypeOf(found.path).name, "no-cache");
    answer.file = found.path;
    return answer;
  }
  if (*name != "index.html") {
    return Refusal(static_cast<unsigned>(found.status), found.reason);
  }
  HttpAnswer answer = Headers(404, "text/html; charset=utf-8", "no-store");
  answer.body = own ? kNoOwnPage : kNoPages;
  return answer;
}

HttpAnswer WebRoutes::Headers(unsigned status, std::string_view type,
                              std::string_view cache) const {
  // Pictures of a page from elsewhere are asked for without a word on whose they are; the token
  // guards those of messages.
  const char* sharing = places_.origin.empty() ? "same-origin" : "cross-origin";
  HttpAnswer answer;
  answer.status = status;
  answer.headers = {
      {"Content-Type", std::string(type)},          {"Cache-Control", std::string(cache)},
      {"Content-Security-Policy", policy_},         {"X-Content-Type-Options", "nosniff"},
      {"Referrer-Policy", "no-referrer"},           {"Cross-Origin-Resource-Policy", sharing},
      {"Cross-Origin-Opener-Policy", "same-origin"}};
  return answer;
}

}  // namespace imsdk::host
