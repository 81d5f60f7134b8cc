#include "server/origin.h"

#include <algorithm>

#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsHost(std::string_view host) {
  if (host.starts_with('[')) {
    return host.size() > 2 && host.ends_with(']') &&
           host.find_first_not_of("0123456789abcdef:.", 1) == host.size() - 1;
  }
  constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789-._";
  return !host.empty() && host.find_first_not_of(kLetters) == std::string_view::npos;
}

}  // namespace

std::optional<std::string> OriginOf(std::string_view url) {
  std::string text(url);
  std::transform(text.begin(), text.end(), text.begin(), Lower);
  if (text.ends_with('/')) text.pop_back();
  const bool secure = text.starts_with("https://");
  const std::string_view scheme = secure ? "https://" : "http://";
  if (!text.starts_with(scheme)) return std::nullopt;
  const std::string_view rest = std::string_view(text).substr(scheme.size());
  const std::size_t colon = rest.find(':', rest.starts_with('[') ? rest.find(']') : 0);
  const std::string_view host = rest.substr(0, colon);
  if (!IsHost(host)) return std::nullopt;
  std::string origin = std::string(scheme) + std::string(host);
  if (colon == std::string_view::npos) return origin;
  unsigned port = 0;
  if (!base::StringToUint(rest.substr(colon + 1), &port)) return std::nullopt;
  if (port == 0 || port > 65535) return std::nullopt;
  if (port != (secure ? 443u : 80u)) origin += ':' + base::NumberToString(port);
  return origin;
}

}  // namespace imsdk::host
