#include "account/files/file_names.h"

#include <algorithm>
#include <cwctype>

#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

constexpr std::size_t kLongestName = 255;   // bytes
constexpr std::size_t kLongestEnding = 32;  // letters, the dot among them
constexpr wchar_t kUnnamed[] = L"file";

bool IsInvisible(wchar_t letter) {
  const auto code = static_cast<std::uint32_t>(letter);
  return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == 0x061c || code == 0xfeff ||
         (code >= 0x200b && code <= 0x200f) || (code >= 0x2028 && code <= 0x202e) ||
         (code >= 0x2060 && code <= 0x206f);
}

// What Windows takes for a device, whatever the ending.
bool IsDevice(std::wstring_view name) {
  std::wstring stem(name.substr(0, name.find(L'.')));
  while (!stem.empty() && stem.back() == L' ') stem.pop_back();
  for (wchar_t& letter : stem) {
    if (letter >= L'a' && letter <= L'z') letter = static_cast<wchar_t>(letter - L'a' + L'A');
  }
  if (stem == L"CON" || stem == L"PRN" || stem == L"AUX" || stem == L"NUL") return true;
  if (stem == L"CONIN$" || stem == L"CONOUT$") return true;
  if (stem.size() != 4 || (!stem.starts_with(L"COM") && !stem.starts_with(L"LPT"))) return false;
  return std::wstring_view(L"0123456789\x00b9\x00b2\x00b3").find(stem[3]) !=
         std::wstring_view::npos;
}

void CutToBytes(std::wstring* name) {
  if (base::Utf8Length(*name) <= kLongestName) return;
  const auto dot = name->rfind(L'.');
  std::wstring ending;
  if (dot != std::wstring::npos && dot > 0 && name->size() - dot <= kLongestEnding) {
    ending = name->substr(dot);
  }
  std::wstring stem = name->substr(0, name->size() - ending.size());
  const std::size_t room = kLongestName - std::min(kLongestName - 1, base::Utf8Length(ending));
  while (base::Utf8Length(stem) > room) {
    const bool low = sizeof(wchar_t) == 2 && (stem.back() & 0xfc00) == 0xdc00;
    stem.resize(stem.size() - (low && stem.size() > 1 ? 2 : 1));
  }
  *name = stem + ending;
}

}  // namespace

std::wstring CleanFileName(std::wstring_view name) {
  // Ill-formed text becomes text first, so that no bytes change on their way to the disk.
  const std::wstring whole = base::UTF8ToWide(base::WideToUTF8(name));
  const auto parting = whole.find_last_of(L"/\\");
  std::wstring clean;
  for (const wchar_t letter : parting == whole.npos ? whole : whole.substr(parting + 1)) {
    if (IsInvisible(letter)) continue;
    clean += std::wstring_view(L"<>:\"|?*").find(letter) == std::wstring_view::npos ? letter : L'_';
  }
  const auto trim = [&clean] {
    while (!clean.empty() && (clean.back() == L'.' || clean.back() == L' ')) clean.pop_back();
    clean.erase(0, clean.find_first_not_of(L' '));
  };
  trim();
  if (IsDevice(clean)) clean.insert(0, 1, L'_');
  CutToBytes(&clean);
  trim();
  return clean.empty() ? kUnnamed : clean;
}

}  // namespace imsdk::account
