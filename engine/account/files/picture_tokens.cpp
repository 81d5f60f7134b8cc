#include "account/files/picture_tokens.h"

namespace imsdk::account {

std::vector<std::wstring_view> PicturePaths(std::wstring_view body) {
  constexpr std::wstring_view kPicture = L"pic:impicture|";
  constexpr std::wstring_view kPath = L"?filepath=";
  std::vector<std::wstring_view> paths;
  for (;;) {
    const auto start = body.find(kPicture);
    if (start == body.npos) return paths;
    body.remove_prefix(start + kPicture.size());
    // Each letter is looked at once or twice, however many tokens only begin.
    const auto digest = body.find_first_of(L"?| \t\n\v\f\r");
    if (digest == body.npos) return paths;
    if (!body.substr(digest).starts_with(kPath)) continue;
    body.remove_prefix(digest + kPath.size());
    paths.push_back(body.substr(0, body.find_first_of(L"& \t\n\v\f\r")));
    body.remove_prefix(paths.back().size());
  }
}

}  // namespace imsdk::account
