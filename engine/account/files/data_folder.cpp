#include "account/files/data_folder.h"

#include "kexbase/md5.h"
#include "kexbase/strings.h"

namespace imsdk::account {

std::filesystem::path ToPath(const base::FilePath& path) {
  const std::string utf8 = path.AsUTF8();
  return std::u8string(utf8.begin(), utf8.end());
}

base::FilePath FromPath(const std::filesystem::path& path) {
  const std::u8string utf8 = path.u8string();
  return base::FilePath::FromUTF8({reinterpret_cast<const char*>(utf8.data()), utf8.size()});
}

biz::IMUserID WellFormed(const biz::IMUserID& user) {
  const auto mend = [](const std::wstring& text) {
    return base::UTF8ToWide(base::WideToUTF8(text));
  };
  return {mend(user.appkey), mend(user.nick)};
}

std::string AccountFolderName(const biz::IMUserID& user) {
  constexpr std::size_t kReadable = 24;
  std::string name;
  for (const wchar_t letter : user.nick) {
    if (name.size() == kReadable) break;
    const bool upper = letter >= L'A' && letter <= L'Z';
    const bool plain = (letter >= L'a' && letter <= L'z') || (letter >= L'0' && letter <= L'9');
    name += upper   ? static_cast<char>(letter - L'A' + 'a')
            : plain ? static_cast<char>(letter)
                    : '_';
  }
  const std::string appkey = base::WideToUTF8(user.appkey);
  // The length keeps ("ab", "c") and ("a", "bc") apart.
  return name + '-' +
         base::MD5String(std::to_string(appkey.size()) + ':' + appkey +
                         base::WideToUTF8(user.nick));
}

}  // namespace imsdk::account
