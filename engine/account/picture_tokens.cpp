#include "account/picture_tokens.h"

namespace imsdk::account {

std::vector<std::wstring_view> PicturePaths(std::wstring_view body) {
  constexpr std::wstring_view kPicture = L"pic:impicture|";
  constexpr std::wstring_view kPath = L"?filepath=";
  std::vector<std::wstring_view> paths;
  for (;;) {
    const auto start = body.find(kPicture);
    if (start == body.npos) return paths;
    body.remove_prefix(start + kPicture.size());
    const std::wstring_view token = body.substr(0, body.find_first_of(L" \t\n\v\f\r"));
    const auto path = token.find(kPath);
    if (path == token.npos) continue;
    const std::wstring_view value = token.substr(path + kPath.size());
    paths.push_back(value.substr(0, value.find(L'&')));
  }
}

}  // namespace imsdk::account
