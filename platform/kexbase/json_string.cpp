#include "kexbase/json_string.h"

#include <algorithm>

#include "kexbase/strings.h"
#include "kexbase/utf.h"

namespace base {

namespace {

using internal::kInvalid;
using internal::kReplacement;

// Text is written in pieces on the stack and appended: nothing is filled with zeros first.
constexpr size_t kPiece = 1024;

bool IsPlain(wchar_t c) {
  return static_cast<std::make_unsigned_t<wchar_t>>(c) < 0x80 && IsPlainInJSON(c);
}

char* PutSpecial(const wchar_t** at, const wchar_t* end, char* out) {
  if (!IsPlainInJSON(**at)) return PutJSONEscape(static_cast<char>(*(*at)++), out);
  const char32_t code = internal::NextWide(at, end);
  return out + internal::PutUTF8(code == kInvalid ? kReplacement : code, out);
}

}  // namespace

void AppendJSONString(std::wstring_view text, std::string* out) {
  out->reserve(out->size() + text.size() + 2);
  *out += '"';
  const wchar_t* at = text.data();
  const wchar_t* const end = at + text.size();
  char piece[kPiece + kLongestJSONEscape];  // the last character may cross the end
  while (at != end) {
    char* used = piece;
    while (at != end && used < piece + kPiece) {
      if (!IsPlain(*at)) {
        used = PutSpecial(&at, end, used);
        continue;
      }
      const auto room = std::min(end - at, piece + kPiece - used);
      const wchar_t* const stop = at + room;
      while (at != stop && IsPlain(*at)) *used++ = static_cast<char>(*at++);
    }
    out->append(piece, static_cast<size_t>(used - piece));
  }
  *out += '"';
}

void AppendJSONString(std::string_view utf8, std::string* out) {
  if (!IsValidUTF8(utf8)) {
    return AppendJSONString(std::string_view(internal::ReplaceInvalidUTF8(utf8)), out);
  }
  out->reserve(out->size() + utf8.size() + 2);
  *out += '"';
  while (!utf8.empty()) {
    const auto special = std::find_if_not(utf8.begin(), utf8.end(), IsPlainInJSON<char>);
    const auto plain = static_cast<size_t>(special - utf8.begin());
    out->append(utf8.substr(0, plain));
    utf8.remove_prefix(plain);
    if (utf8.empty()) break;
    char escape[kLongestJSONEscape];
    out->append(escape, PutJSONEscape(utf8.front(), escape));
    utf8.remove_prefix(1);
  }
  *out += '"';
}

}  // namespace base
