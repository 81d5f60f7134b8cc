#include "kexbase/utf.h"

#include <algorithm>
#include <cstring>

#include "kexbase/strings.h"

namespace base {

namespace internal {

namespace {

// ASCII, the bulk of what crosses the bridge, is handled in blocks of this many characters; the
// compiler turns the loops over a block into vector instructions.
constexpr size_t kBlock = 16;

// Text is converted in pieces on the stack and appended: nothing is filled with zeros first.
constexpr size_t kPiece = 1024;

bool IsAsciiBlock(const unsigned char* p) {
  uint64_t words[kBlock / 8];
  std::memcpy(words, p, kBlock);
  return ((words[0] | words[1]) & 0x8080808080808080u) == 0;
}

const unsigned char* SkipAscii(const unsigned char* p, const unsigned char* end) {
  while (static_cast<size_t>(end - p) >= kBlock && IsAsciiBlock(p)) p += kBlock;
  while (p != end && *p < 0x80) ++p;
  return p;
}

// Copies ASCII from `p` to `out` until something else or `end` comes; returns how many.
size_t WidenAscii(const unsigned char* p, size_t size, wchar_t* out) {
  size_t done = 0;
  for (; size - done >= kBlock && IsAsciiBlock(p + done); done += kBlock) {
    for (size_t i = 0; i < kBlock; ++i) out[done + i] = static_cast<wchar_t>(p[done + i]);
  }
  for (; done < size && p[done] < 0x80; ++done) out[done] = static_cast<wchar_t>(p[done]);
  return done;
}

size_t NarrowAscii(const wchar_t* p, size_t size, char* out) {
  using Unit = std::make_unsigned_t<wchar_t>;
  size_t done = 0;
  for (; size - done >= kBlock; done += kBlock) {
    Unit all = 0;
    for (size_t i = 0; i < kBlock; ++i)
      all = static_cast<Unit>(all | static_cast<Unit>(p[done + i]));
    if (all >= 0x80) break;
    for (size_t i = 0; i < kBlock; ++i) out[done + i] = static_cast<char>(p[done + i]);
  }
  for (; done < size && static_cast<Unit>(p[done]) < 0x80; ++done) {
    out[done] = static_cast<char>(p[done]);
  }
  return done;
}

size_t PutWide(char32_t code, wchar_t* out) {
  if (sizeof(wchar_t) == 2 && code > 0xFFFF) {
    out[0] = static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
    out[1] = static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    return 2;
  }
  out[0] = static_cast<wchar_t>(code);
  return 1;
}

char32_t OrReplacement(char32_t code) { return code == kInvalid ? kReplacement : code; }

// A long text is given its room at once; a short one fits a piece and is allocated exactly.
template <class String>
void ReserveForLong(size_t size, String* out) {
  if (size > kPiece) out->reserve(out->size() + size);
}

}  // namespace

size_t ValidUTF8Prefix(std::string_view text) {
  const auto* const begin = reinterpret_cast<const unsigned char*>(text.data());
  const auto* const end = begin + text.size();
  for (const auto* p = SkipAscii(begin, end); p != end;) {
    const auto* const start = p;
    if (NextUTF8(&p, end) == kInvalid) return static_cast<size_t>(start - begin);
    if (p != end && *p < 0x80) p = SkipAscii(p, end);
  }
  return text.size();
}

std::string ReplaceInvalidUTF8(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  while (!text.empty()) {
    const size_t good = ValidUTF8Prefix(text);
    valid.append(text.substr(0, good));
    text.remove_prefix(good);
    if (text.empty()) break;
    valid += "\xEF\xBF\xBD";
    const auto* const begin = reinterpret_cast<const unsigned char*>(text.data());
    const auto* at = begin;
    NextUTF8(&at, begin + text.size());
    text.remove_prefix(static_cast<size_t>(at - begin));
  }
  return valid;
}

}  // namespace internal

bool IsValidUTF8(std::string_view text) { return internal::ValidUTF8Prefix(text) == text.size(); }

void AppendWide(std::string_view utf8, std::wstring* out) {
  using namespace internal;
  const auto* p = reinterpret_cast<const unsigned char*>(utf8.data());
  const auto* const end = p + utf8.size();
  // Every byte but the tails of a sequence begins a character.
  ReserveForLong(static_cast<size_t>(std::count_if(
                     p, end, [](unsigned char byte) { return (byte & 0xC0) != 0x80; })),
                 out);
  wchar_t piece[kPiece + 1];  // a pair of surrogates may cross the end
  while (p != end) {
    size_t used = 0;
    while (p != end && used < kPiece) {
      if (*p >= 0x80) {
        used += PutWide(OrReplacement(NextUTF8(&p, end)), piece + used);
        continue;
      }
      const size_t room = std::min(static_cast<size_t>(end - p), kPiece - used);
      const size_t ascii = WidenAscii(p, room, piece + used);
      p += ascii;
      used += ascii;
    }
    out->append(piece, used);
  }
}

void AppendUTF8(std::wstring_view wide, std::string* out) {
  using namespace internal;
  using Unit = std::make_unsigned_t<wchar_t>;
  const wchar_t* p = wide.data();
  const wchar_t* const end = p + wide.size();
  ReserveForLong(wide.size(), out);
  char piece[kPiece + 3];  // the last character may cross the end
  while (p != end) {
    size_t used = 0;
    while (p != end && used < kPiece) {
      if (static_cast<Unit>(*p) >= 0x80) {
        used += PutUTF8(OrReplacement(NextWide(&p, end)), piece + used);
        continue;
      }
      const size_t room = std::min(static_cast<size_t>(end - p), kPiece - used);
      const size_t ascii = NarrowAscii(p, room, piece + used);
      p += ascii;
      used += ascii;
    }
    out->append(piece, used);
  }
}

std::wstring UTF8ToWide(std::string_view utf8) {
  std::wstring wide;
  AppendWide(utf8, &wide);
  return wide;
}

std::string WideToUTF8(std::wstring_view wide) {
  std::string utf8;
  AppendUTF8(wide, &utf8);
  return utf8;
}

std::wstring SysUTF8ToWide(std::string_view utf8) { return UTF8ToWide(utf8); }

std::string SysWideToUTF8(std::wstring_view wide) { return WideToUTF8(wide); }

size_t Utf8Length(std::wstring_view wide) {
  using namespace internal;
  using Unit = std::make_unsigned_t<wchar_t>;
  size_t length = 0;
  char bytes[4];
  const wchar_t* p = wide.data();
  const wchar_t* const end = p + wide.size();
  while (p != end) {
    if (static_cast<Unit>(*p) < 0x80) {
      ++length;
      ++p;
    } else {
      length += PutUTF8(OrReplacement(NextWide(&p, end)), bytes);
    }
  }
  return length;
}

size_t Utf16Length(std::wstring_view wide) {
  if constexpr (sizeof(wchar_t) == 2) return wide.size();
  const auto needs_two = [](wchar_t unit) {
    const auto code = static_cast<char32_t>(unit);
    return code > 0xFFFF && code <= 0x10FFFF;
  };
  return wide.size() + static_cast<size_t>(std::count_if(wide.begin(), wide.end(), needs_two));
}

}  // namespace base
