#include "json_text.h"

#include <cstddef>
#include <cstdint>

#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// The code point at `*position`, which is moved behind it.
char32_t Next(std::wstring_view text, std::size_t* position) {
  const auto unit = static_cast<char32_t>(text[(*position)++]);
  if (unit > 0x10FFFF) return kReplacement;
  if (unit < 0xD800 || unit > 0xDFFF) return unit;
  if constexpr (sizeof(wchar_t) == 2) {
    if (unit < 0xDC00 && *position < text.size()) {
      const auto low = static_cast<char32_t>(text[*position]);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        ++*position;
        return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
      }
    }
  }
  return kReplacement;
}

void AppendEscaped(char32_t control, std::string* out) {
  switch (control) {
    case '\b':
      *out += "\\b";
      return;
    case '\t':
      *out += "\\t";
      return;
    case '\n':
      *out += "\\n";
      return;
    case '\f':
      *out += "\\f";
      return;
    case '\r':
      *out += "\\r";
      return;
    default:
      break;
  }
  constexpr char kHex[] = "0123456789abcdef";
  *out += "\\u00";
  *out += kHex[control >> 4];
  *out += kHex[control & 15];
}

void AppendMultibyte(char32_t point, std::string* out) {
  const auto tail = [&](int shift) { *out += static_cast<char>(0x80 | ((point >> shift) & 0x3F)); };
  if (point < 0x800) {
    *out += static_cast<char>(0xC0 | (point >> 6));
  } else if (point < 0x10000) {
    *out += static_cast<char>(0xE0 | (point >> 12));
    tail(6);
  } else {
    *out += static_cast<char>(0xF0 | (point >> 18));
    tail(12);
    tail(6);
  }
  tail(0);
}

bool IsPlain(wchar_t c) { return c >= 0x20 && c < 0x80 && c != L'"' && c != L'\\'; }

// Appends what stands as it is at the beginning of `text`; gives its length. Most of a payload.
std::size_t AppendPlainRun(std::wstring_view text, std::string* out) {
  const wchar_t* const begin = text.data();
  const wchar_t* const end = begin + text.size();
  const wchar_t* run = begin;
  while (run != end && IsPlain(*run)) ++run;
  const auto length = static_cast<std::size_t>(run - begin);
  const std::size_t before = out->size();
  out->resize(before + length);
  char* to = out->data() + before;
  for (const wchar_t* from = begin; from != run; ++from) *to++ = static_cast<char>(*from);
  return length;
}

}  // namespace

void AppendJsonText(std::wstring_view text, std::string* out) {
  out->reserve(out->size() + text.size() + 2);
  *out += '"';
  for (std::size_t position = 0; position < text.size();) {
    position += AppendPlainRun(text.substr(position), out);
    if (position == text.size()) break;
    const char32_t point = Next(text, &position);
    if (point >= 0x80) {
      AppendMultibyte(point, out);
    } else if (point < 0x20) {
      AppendEscaped(point, out);
    } else {
      *out += '\\';
      *out += static_cast<char>(point);
    }
  }
  *out += '"';
}

void AppendJsonText(std::string_view utf8, std::string* out) {
  AppendJsonText(base::UTF8ToWide(utf8), out);
}

}  // namespace imsdk::host
