#include "kexbase/file_path.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using base::FilePath;

constexpr bool kWindows = sizeof(wchar_t) == 2;

TEST(FilePath, Parts) {
  struct Case {
    const wchar_t* path;
    const wchar_t* name;
    const wchar_t* extension;
  };
  std::vector<Case> cases = {
      {L"", L"", L""},
      {L"c", L"c", L""},
      {L"/", L"/", L""},
      {L"//", L"/", L""},
      {L"/c.png", L"c.png", L".png"},
      {L"a/b/c.tar.gz", L"c.tar.gz", L".gz"},
      {L"a.d/b//", L"b", L""},
      {L"a//b", L"b", L""},
      {L"a/.profile", L".profile", L""},
      {L"..", L"..", L""},
  };
  const std::vector<Case> windows = {
      {L"C:", L"", L""},
      {L"C:\\", L"\\", L""},
      {L"C:\\a.b", L"a.b", L".b"},
      {L"C:a\\b", L"b", L""},
      {L"\\\\server\\share/x", L"x", L""},
  };
  if (kWindows) cases.insert(cases.end(), windows.begin(), windows.end());
  if (!kWindows) cases.push_back({L"a\\b.c", L"a\\b.c", L".c"});
  for (const Case& c : cases) {
    const FilePath path(c.path);
    EXPECT_TRUE(path.BaseName().value() == c.name) << path.AsUTF8();
    EXPECT_TRUE(path.Extension() == c.extension) << path.AsUTF8();
  }
}

TEST(FilePath, Append) {
  const std::wstring separator = kWindows ? L"\\" : L"/";
  const FilePath joined(L"a" + separator + L"b");
  EXPECT_TRUE(FilePath(L"a").Append(L"b") == joined);
  EXPECT_TRUE(FilePath(L"a").Append(L"//b") == joined);
  EXPECT_TRUE(FilePath(L"a/").Append(FilePath(L"b")) == FilePath(L"a/b"));
  EXPECT_TRUE(FilePath(L"/").Append(L"b") == FilePath(L"/b"));
  EXPECT_TRUE(FilePath(L"").Append(L"/b") == FilePath(L"/b"));
  EXPECT_TRUE(FilePath(L"a").Append(L"") == FilePath(L"a"));
  if (kWindows) {
    EXPECT_TRUE(FilePath(L"C:").Append(L"b") == FilePath(L"C:b"));
  }
  EXPECT_EQ(FilePath::FromUTF8("\u4e2d\U0001F600").AsUTF8(), "\u4e2d\U0001F600");
  EXPECT_LT(FilePath(L"a"), FilePath(L"b"));
}

}  // namespace
