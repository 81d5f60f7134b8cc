#include "account/files/file_tokens.h"

#include <algorithm>

#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

constexpr std::wstring_view kPicture = L"pic:impicture|";
constexpr std::wstring_view kPicturePath = L"?filepath=";
constexpr std::wstring_view kFile = L"file:";
constexpr std::wstring_view kFilePath = L"|filepath=";
constexpr std::wstring_view kPathEnds = L"& \t\n\v\f\r";
constexpr std::size_t kLongestFileName = 1024;  // no file system takes so many letters
constexpr std::size_t kDigestLetters = 32;
constexpr std::size_t kLongestType = 8;

// The path of a token that begins at `at`; nothing when there is none.
struct Path {
  std::size_t at = 0;
  std::size_t length = 0;
};

std::optional<Path> PathOf(std::wstring_view body, std::size_t at) {
  const bool picture = body.substr(at).starts_with(kPicture);
  const std::size_t name = at + (picture ? kPicture.size() : kFile.size());
  const std::wstring_view rest = body.substr(name);
  const std::size_t ends =
      picture ? rest.find_first_of(L"?| \t\n\v\f\r") : rest.substr(0, kLongestFileName).find(L'|');
  const std::wstring_view mark = picture ? kPicturePath : kFilePath;
  if (ends == rest.npos || !rest.substr(ends).starts_with(mark)) return std::nullopt;
  const std::size_t path = name + ends + mark.size();
  return Path{path, std::min(body.find_first_of(kPathEnds, path), body.size()) - path};
}

// Calls `take(path, picture)` for every token with a file, in order. Each letter is looked at a few
// times, however many tokens only begin.
template <class Take>
void Walk(std::wstring_view body, Take take) {
  std::size_t picture = 0;
  std::size_t file = 0;
  for (std::size_t at = 0;;) {
    if (picture != body.npos && picture <= at) picture = body.find(kPicture, at);
    if (file != body.npos && file <= at) file = body.find(kFile, at);
    const std::size_t next = std::min(picture, file);
    if (next == body.npos) return;
    const auto path = PathOf(body, next);
    if (path) take(*path, next == picture);
    at = path ? path->at + path->length : next + (next == picture ? kPicture : kFile).size();
  }
}

// The body with other paths where `other` has one.
template <class Other>
std::wstring Rewritten(std::wstring_view body, Other other) {
  std::wstring result;
  std::size_t copied = 0;
  Walk(body, [&](const Path& path, bool) {
    const std::optional<std::wstring> instead = other(body.substr(path.at, path.length));
    if (!instead) return;
    result.append(body.substr(copied, path.at - copied)).append(*instead);
    copied = path.at + path.length;
  });
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
  Walk(body, [&](const Path& path, bool picture) {
    if (picture) paths.push_back(body.substr(path.at, path.length));
  });
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
  Walk(body, [&](const Path& where, bool) {
    std::wstring_view path = body.substr(where.at, where.length);
    if (!path.starts_with(folder)) return;
    path.remove_prefix(folder.size());
    if (IsFileName(path) && !Contains(names, path)) names.push_back(base::WideToUTF8(path));
  });
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
