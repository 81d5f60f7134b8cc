// Which files a page may have.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace imsdk::host {

// A file that was asked for, or why it is not given.
struct FoundFile {
  std::filesystem::path path;  // resolved. With 404: where it would lie, empty when that is taken
  int status = 200;            // 403 or 404 when refused
  std::string reason;          // for the page's developer
};

// Finds the regular file `asked` (UTF-8): an absolute path, or one relative to `base`. Whatever
// does not lie under `root` once every link is followed is refused with 403, whether it exists or
// not.
FoundFile FindInside(const std::filesystem::path& root, const std::filesystem::path& base,
                     std::string_view asked);

// How a file is served.
struct MediaType {
  std::string_view name;
  bool inline_safe = false;  // a page may show it in place: nothing in it runs
};

// By the ending of the name; "application/octet-stream" for others.
MediaType MediaTypeOf(const std::filesystem::path& path);

// Decodes "%41" and, as forms write them, "+" for a blank. Nothing for a broken escape.
std::optional<std::string> PercentDecode(std::string_view text, bool plus_is_blank);

// The decoded value of `name` in "a=1&b=2". Nothing when it is missing or its escapes are broken.
std::optional<std::string> QueryValue(std::string_view query, std::string_view name);

// The part of a file that a Range header asks for.
struct ByteRange {
  std::uintmax_t first = 0;
  std::uintmax_t last = 0;  // inclusive
};
enum class RangeKind { kNone, kPart, kBeyond };

// Reads "bytes=1-5", "bytes=7-" and "bytes=-3" for a file of `size` bytes. Anything else is as if
// there was no range; kBeyond when no byte of it exists.
RangeKind ReadRange(std::string_view header, std::uintmax_t size, ByteRange* range);

}  // namespace imsdk::host
