#include "source/bridge/jsparams/jsontext.h"

#include <charconv>

namespace imsdk::bridge {
namespace {

constexpr bool kUtf16 = sizeof(wchar_t) == 2;

bool IsPlain(wchar_t c) {
  const auto u = static_cast<std::uint32_t>(c);
  return u >= 0x20 && u < 0xD800 && c != L'"' && c != L'\\';
}

// The letter behind the backslash of a short escape, or 0.
wchar_t ShortEscape(wchar_t c) {
  switch (c) {
    case L'"':
    case L'\\':
      return c;
    case L'\n':
      return L'n';
    case L'\r':
      return L'r';
    case L'\t':
      return L't';
    case L'\b':
      return L'b';
    case L'\f':
      return L'f';
    default:
      return 0;
  }
}

}  // namespace

void JsonText::Separate() {
  if (comma_) text_ += L',';
  comma_ = true;
}

void JsonText::Open(wchar_t bracket) {
  Separate();
  text_ += bracket;
  comma_ = false;
}

void JsonText::Close(wchar_t bracket) {
  text_ += bracket;
  comma_ = true;
}

void JsonText::Key(std::string_view key) {
  Separate();
  text_ += L'"';
  text_.append(key.begin(), key.end());
  text_.append(L"\":", 2);
  comma_ = false;
}

void JsonText::String(std::wstring_view text) {
  Separate();
  text_ += L'"';
  std::size_t index = 0;
  while (index < text.size()) {
    const std::size_t start = index;
    while (index < text.size() && IsPlain(text[index])) ++index;
    text_.append(text, start, index - start);
    if (index < text.size()) AppendSpecial(text, &index);
  }
  text_ += L'"';
}

void JsonText::AppendSpecial(std::wstring_view text, std::size_t* index) {
  const wchar_t c = text[(*index)++];
  const auto u = static_cast<std::uint32_t>(c);
  if (const wchar_t letter = ShortEscape(c)) {
    text_ += L'\\';
    text_ += letter;
  } else if (u < 0x20) {
    constexpr wchar_t kHex[] = L"0123456789abcdef";
    text_.append(L"\\u00", 4);
    text_ += kHex[u >> 4];
    text_ += kHex[u & 15];
  } else if (u >= 0xE000 && u <= 0x10FFFF) {
    text_ += c;
  } else if (kUtf16 && u < 0xDC00 && *index < text.size() && (text[*index] & 0xFC00) == 0xDC00) {
    text_ += c;
    text_ += text[(*index)++];
  } else {
    text_ += L'\xFFFD';
  }
}

void JsonText::AppendDigits(std::int64_t value) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  text_.append(digits, end);
}

void JsonText::Integer(std::int64_t value) {
  Separate();
  AppendDigits(value);
}

void JsonText::DecimalString(std::int64_t value) {
  Separate();
  text_ += L'"';
  AppendDigits(value);
  text_ += L'"';
}

}  // namespace imsdk::bridge
