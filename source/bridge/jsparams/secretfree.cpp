#include "source/bridge/jsparams/secretfree.h"

namespace imsdk::bridge {
namespace {

constexpr std::wstring_view kSecretKeys[] = {L"\"password\"", L"\"token\""};
constexpr std::wstring_view kSpaces = L" \t\r\n";

// The end of the string that begins behind its opening quote at `start`: its closing quote, or the
// end of a text that has none.
std::size_t StringEnd(std::wstring_view json, std::size_t start) {
  while (start < json.size() && json[start] != L'"') start += json[start] == L'\\' ? 2 : 1;
  return start < json.size() ? start : json.size();
}

void MaskValuesOf(std::wstring_view key, std::wstring* json) {
  std::size_t at = 0;
  while ((at = json->find(key, at)) != std::wstring::npos) {
    at = json->find_first_not_of(kSpaces, at + key.size());
    if (at == std::wstring::npos || (*json)[at] != L':') continue;
    at = json->find_first_not_of(kSpaces, at + 1);
    if (at == std::wstring::npos || (*json)[at] != L'"') continue;
    ++at;
    json->replace(at, StringEnd(*json, at) - at, L"***");
  }
}

}  // namespace

SecretFree::SecretFree(const std::wstring& json) : text_(json) {
  for (const std::wstring_view key : kSecretKeys) {
    if (text_.find(key) == std::wstring_view::npos) continue;
    if (masked_.empty()) masked_ = json;
    MaskValuesOf(key, &masked_);
    text_ = masked_;
  }
}

}  // namespace imsdk::bridge
