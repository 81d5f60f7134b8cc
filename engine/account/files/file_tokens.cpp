#include "account/files/file_tokens.h"

#include <algorithm>
#include <optional>

#include "kexbase/message_body.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

using base::BodyPart;

constexpr std::size_t kDigestLetters = 32;
constexpr std::size_t kLongestType = 8;

// The paths of the body's tokens that have a file of an account.
std::vector<std::wstring_view> Paths(std::wstring_view body) {
  std::vector<std::wstring_view> paths;
  for (const BodyPart& part : base::ReadBody(body)) {
    if (part.kind == BodyPart::kPicture || part.kind == BodyPart::kFile) paths.push_back(part.path);
  }
  return paths;
}

// The body with other paths where `other` has one.
template <class Other>
std::wstring Rewritten(std::wstring_view body, Other other) {
  std::wstring result;
  std::size_t copied = 0;
  for (const std::wstring_view path : Paths(body)) {
    const std::optional<std::wstring> instead = other(path);
    if (!instead) continue;
    const auto at = static_cast<std::size_t>(path.data() - body.data());
    result.append(body.substr(copied, at - copied)).append(*instead);
    copied = at + path.size();
  }
  return result.append(body.substr(copied));
}

bool IsPlain(wchar_t letter, wchar_t last) {
  return (letter >= L'0' && letter <= L'9') || (letter >= L'a' && letter <= last);
}

bool Contains(const std::vector<std::string>& names, std::wstring_view name) {
  return std::find(names.begin(), names.end(), base::WideToUTF8(name)) != names.end();
}

}  // namespace

std::vector<std::wstring_view> PicturePaths(std::wstring_view body) {
  std::vector<std::wstring_view> paths;
  for (const BodyPart& part : base::ReadBody(body)) {
    if (part.kind == BodyPart::kPicture) paths.push_back(part.path);
  }
  return paths;
}

bool IsFileName(std::wstring_view name) {
  if (name.size() < kDigestLetters) return false;
  const std::wstring_view digest = name.substr(0, kDigestLetters);
  if (!std::all_of(digest.begin(), digest.end(), [](wchar_t l) { return IsPlain(l, L'f'); })) {
    return false;
  }
  name.remove_prefix(kDigestLetters);
  if (name.empty()) return true;
  return name.size() >= 2 && name.size() <= 1 + kLongestType && name.front() == L'.' &&
         std::all_of(name.begin() + 1, name.end(), [](wchar_t l) { return IsPlain(l, L'z'); });
}

std::vector<std::string> FileNamesIn(std::wstring_view body, std::wstring_view folder) {
  std::vector<std::string> names;
  for (std::wstring_view path : Paths(body)) {
    if (!path.starts_with(folder)) continue;
    path.remove_prefix(folder.size());
    if (IsFileName(path) && !Contains(names, path)) names.push_back(base::WideToUTF8(path));
  }
  return names;
}

std::wstring WithoutFolder(std::wstring_view body, std::wstring_view folder,
                           const std::vector<std::string>& names) {
  return Rewritten(body, [&](std::wstring_view path) -> std::optional<std::wstring> {
    if (!path.starts_with(folder)) return std::nullopt;
    path.remove_prefix(folder.size());
    return Contains(names, path) ? std::optional(std::wstring(path)) : std::nullopt;
  });
}

std::wstring WithFolder(std::wstring_view body, std::wstring_view folder,
                        const std::vector<std::string>& names) {
  return Rewritten(body, [&](std::wstring_view path) -> std::optional<std::wstring> {
    if (!Contains(names, path)) return std::nullopt;
    return std::wstring(folder).append(path);
  });
}

}  // namespace imsdk::account
