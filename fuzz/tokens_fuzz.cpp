// The tokens of message bodies: only files of the account's folder are named, and a body that
// crosses the link names the same files on the other side.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "account/files/file_tokens.h"
#include "check.h"
#include "kexbase/strings.h"

using namespace imsdk::account;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring body =
      base::UTF8ToWide(std::string_view(reinterpret_cast<const char*>(data), size));
  constexpr std::wstring_view kFolder = L"files/u/";
  for (const std::wstring_view path : PicturePaths(body)) {
    FUZZ_CHECK(path.data() >= body.data() &&
               path.data() + path.size() <= body.data() + body.size());
  }
  const auto names = FileNamesIn(body, kFolder);
  for (const std::string& name : names) {
    FUZZ_CHECK(IsFileName(base::UTF8ToWide(name)));
    FUZZ_CHECK(std::count(names.begin(), names.end(), name) == 1);
  }
  const std::wstring crossing = WithoutFolder(body, kFolder, names);
  const auto arrived = FileNamesIn(WithFolder(crossing, kFolder, names), kFolder);
  for (const std::string& name : names) {
    FUZZ_CHECK(std::count(arrived.begin(), arrived.end(), name) == 1);
  }
  return 0;
}
