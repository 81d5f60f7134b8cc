#include "client/chat_windows.h"

#include <algorithm>

#include "kexbase/json_reader.h"
#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

// More windows than a view can show, fewer than would hurt.
constexpr std::size_t kWindowsPerView = 64;
constexpr std::size_t kLongestReport = 2048;  // bytes, more than two accounts' names take

biz::IMUserID ReadUser(const base::Value* value) {
  const base::DictionaryValue* dict = value ? value->GetIfDict() : nullptr;
  if (!dict) return {};
  const auto text = [dict](std::string_view key) {
    const base::Value* part = dict->Find(key);
    const std::string* utf8 = part ? part->GetIfString() : nullptr;
    return utf8 ? base::UTF8ToWide(*utf8) : std::wstring();
  };
  return {text("appkey"), text("nick")};
}

bool ReadFlag(const base::DictionaryValue& dict, std::string_view key) {
  const base::Value* flag = dict.Find(key);
  return flag && (flag->GetIfInt64().value_or(0) != 0 || flag->GetIfBool().value_or(false));
}

}  // namespace

void ChatWindows::SetViewAccount(const std::wstring& browserId, const biz::IMUserID& account) {
  std::lock_guard hold(lock_);
  if (account.empty() && !views_.contains(browserId)) return;
  views_[browserId].account = account;
}

bool ChatWindows::IsVisible(const biz::IMUserID& account, const biz::IMConversationID& cid) {
  return Any(account, cid, &Window::visible);
}

bool ChatWindows::IsActivated(const biz::IMUserID& account, const biz::IMConversationID& cid) {
  return Any(account, cid, &Window::activated);
}

bool ChatWindows::Any(const biz::IMUserID& account, const biz::IMConversationID& cid,
                      bool Window::*flag) {
  std::lock_guard hold(lock_);
  const auto matches = [&](const Window& window) {
    return window.*flag && !cid.is_tribe() && window.cid == cid.user &&
           (window.account.empty() || window.account == account);
  };
  return std::any_of(views_.begin(), views_.end(), [&](const auto& view) {
    const auto& [owner, windows] = view.second;
    return !owner.empty() && owner == account &&
           std::any_of(windows.begin(), windows.end(), matches);
  });
}

biz::IMUserID ChatWindows::AccountOf(const std::wstring& browserId) {
  std::lock_guard hold(lock_);
  const auto view = views_.find(browserId);
  return view == views_.end() ? biz::IMUserID() : view->second.account;
}

bool ChatWindows::Report(const std::wstring& browserId, std::string_view json) {
  if (json.size() > kLongestReport) return false;
  const std::optional<base::Value> value = base::JSONReader::Read(json);
  const base::DictionaryValue* dict = value ? value->GetIfDict() : nullptr;
  if (!dict) return false;
  Window window{ReadUser(dict->Find("account")), ReadUser(dict->Find("cid")),
                ReadFlag(*dict, "visible"), ReadFlag(*dict, "activated")};
  if (!window.cid.valid()) return false;

  std::lock_guard hold(lock_);
  std::vector<Window>& windows = views_[browserId].windows;
  std::erase_if(windows, [&](const Window& old) {
    return old.cid == window.cid && old.account == window.account;
  });
  if (windows.size() == kWindowsPerView) windows.erase(windows.begin());
  if (window.visible || window.activated) windows.push_back(std::move(window));
  return true;
}

void ChatWindows::Drop(const std::wstring& browserId) {
  std::lock_guard hold(lock_);
  views_.erase(browserId);
}

}  // namespace imsdk::host
