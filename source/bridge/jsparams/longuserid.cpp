#include "source/bridge/jsparams/longuserid.h"

#include <cstddef>
#include <string_view>

namespace imsdk::bridge {

biz::IMLongUserID SplitLongUserId(const std::wstring& text) {
  constexpr std::size_t kPrefix = 8;
  constexpr std::wstring_view kUnknown = L"[UNKNOW]";
  constexpr std::wstring_view kFirstSite = L"cnbazaro";
  constexpr std::wstring_view kSecondSite = L"cnmirolo";
  if (text.size() <= kPrefix) return {0, std::wstring(kUnknown) + text};
  const std::wstring_view prefix = std::wstring_view(text).substr(0, kPrefix);
  if (prefix == kUnknown) return {0, text};
  // Accounts of the second site are addressed through the first one's prefix, on purpose.
  if (prefix == kSecondSite) return {1, std::wstring(kFirstSite) + text.substr(kPrefix)};
  return {1, text};
}

}  // namespace imsdk::bridge
