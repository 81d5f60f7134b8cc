#include "served_files.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <system_error>

namespace imsdk::host {
namespace fs = std::filesystem;
namespace {

struct Ending {
  std::string_view ending;
  MediaType type;
};

constexpr std::array kEndings{
    Ending{".html", {"text/html; charset=utf-8"}},
    Ending{".js", {"text/javascript; charset=utf-8"}},
    Ending{".mjs", {"text/javascript; charset=utf-8"}},
    Ending{".css", {"text/css; charset=utf-8"}},
    Ending{".json", {"application/json"}},
    Ending{".map", {"application/json"}},
    Ending{".webmanifest", {"application/manifest+json"}},
    Ending{".wasm", {"application/wasm"}},
    Ending{".svg", {"image/svg+xml"}},
    Ending{".woff2", {"font/woff2"}},
    Ending{".txt", {"text/plain; charset=utf-8"}},
    Ending{".ico", {"image/x-icon", true}},
    Ending{".png", {"image/png", true}},
    Ending{".jpg", {"image/jpeg", true}},
    Ending{".jpeg", {"image/jpeg", true}},
    Ending{".gif", {"image/gif", true}},
    Ending{".webp", {"image/webp", true}},
    Ending{".bmp", {"image/bmp", true}},
    Ending{".amr", {"audio/amr", true}},
    Ending{".mp3", {"audio/mpeg", true}},
    Ending{".wav", {"audio/wav", true}},
    Ending{".ogg", {"audio/ogg", true}},
    Ending{".m4a", {"audio/mp4", true}},
    Ending{".mp4", {"video/mp4", true}},
    Ending{".webm", {"video/webm", true}},
};

bool IsUnder(const fs::path& root, const fs::path& path) {
  return std::mismatch(root.begin(), root.end(), path.begin(), path.end()).first == root.end();
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool ReadNumber(std::string_view text, std::uintmax_t* number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

FoundFile FindInside(const fs::path& root, const fs::path& base, std::string_view asked) {
  if (asked.find('\0') != std::string_view::npos) return {{}, 403, "the path holds a NUL byte"};
  const fs::path relative{std::string(asked)};
  if (std::find(relative.begin(), relative.end(), "..") != relative.end()) {
    return {{}, 403, "the path holds \"..\""};
  }
  std::error_code failure;
  const fs::path real_root = fs::weakly_canonical(root, failure);
  const fs::path file = failure ? fs::path() : fs::weakly_canonical(base / relative, failure);
  if (failure || !IsUnder(real_root, file)) return {{}, 403, "the path leads outside"};
  if (fs::is_regular_file(file, failure)) return {file, 200, {}};
  // A link that leads nowhere is there too.
  const bool taken = fs::exists(fs::symlink_status(file, failure));
  return {taken ? fs::path() : file, 404, "no such file"};
}

MediaType MediaTypeOf(const fs::path& path) {
  std::string ending = path.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  for (const Ending& known : kEndings) {
    if (known.ending == ending) return known.type;
  }
  return {"application/octet-stream", false};
}

std::optional<std::string> PercentDecode(std::string_view text, bool plus_is_blank) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
      const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
      if (low < 0) return std::nullopt;
      out += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      out += plus_is_blank && text[i] == '+' ? ' ' : text[i];
    }
  }
  return out;
}

std::optional<std::string> QueryValue(std::string_view query, std::string_view name) {
  while (!query.empty()) {
    const std::size_t end = std::min(query.find('&'), query.size());
    const std::string_view pair = query.substr(0, end);
    query.remove_prefix(std::min(end + 1, query.size()));
    const std::size_t equals = std::min(pair.find('='), pair.size());
    if (pair.substr(0, equals) != name) continue;
    return PercentDecode(pair.substr(std::min(equals + 1, pair.size())), true);
  }
  return std::nullopt;
}

RangeKind ReadRange(std::string_view header, std::uintmax_t size, ByteRange* range) {
  constexpr std::string_view kUnit = "bytes=";
  if (!header.starts_with(kUnit)) return RangeKind::kNone;
  header.remove_prefix(kUnit.size());
  const std::size_t dash = header.find('-');
  if (dash == std::string_view::npos) return RangeKind::kNone;
  const std::string_view from = header.substr(0, dash);
  const std::string_view to = header.substr(dash + 1);
  std::uintmax_t first = 0;
  std::uintmax_t last = size - 1;
  if (from.empty()) {
    std::uintmax_t tail = 0;
    if (!ReadNumber(to, &tail)) return RangeKind::kNone;
    if (tail == 0 || size == 0) return RangeKind::kBeyond;
    first = size - std::min(tail, size);
  } else {
    if (!ReadNumber(from, &first)) return RangeKind::kNone;
    if (!to.empty() && (!ReadNumber(to, &last) || last < first)) return RangeKind::kNone;
    if (first >= size) return RangeKind::kBeyond;
  }
  *range = {first, std::min(last, size - 1)};
  return RangeKind::kPart;
}

}  // namespace imsdk::host
