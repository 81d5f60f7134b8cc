#include "client/chat_windows.h"

#include <algorithm>

#include "kexbase/json_reader.h"
#include "kexbase/strings.h"

namespace imsdk::host {
namespace {

// More windows than a view can show, fewer than would hurt.
constexpr std::size_t kWindowsPerView = 64;

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
    return std::any_of(view.second.begin(), view.second.end(), matches);
  });
}

bool ChatWindows::Report(const void* view, const biz::IMUserID& account, std::string_view json) {
  const std::optional<base::Value> value = base::JSONReader::Read(json);
  const base::DictionaryValue* dict = value ? value->GetIfDict() : nullptr;
  if (!dict) return false;
  Window window{ReadUser(dict->Find("account")), ReadUser(dict->Find("cid")),
                ReadFlag(*dict, "visible"), ReadFlag(*dict, "activated")};
  if (!window.cid.valid()) return false;
  if (!window.account.valid()) window.account = account;

  std::lock_guard hold(lock_);
  std::vector<Window>& windows = views_[view];
  std::erase_if(windows, [&](const Window& old) {
    return old.cid == window.cid && old.account == window.account;
  });
  if (windows.size() == kWindowsPerView) windows.erase(windows.begin());
  if (window.visible || window.activated) windows.push_back(std::move(window));
  return true;
}

void ChatWindows::Drop(const void* view) {
  std::lock_guard hold(lock_);
  views_.erase(view);
}

}  // namespace imsdk::host
