#include "source/bridge/boundview.h"

#include <utility>
#include <vector>

#include "imsdk/client/chat_window.h"
#include "kexcore/kexcom.h"

namespace imsdk::bridge {

void BoundView::Open(const MakeModules& make, const biz::IMUserID& account) {
  open_ = true;
  // Filled once the modules are there; a login that uses it comes later.
  const auto sources = std::make_shared<std::vector<FeedSource>>();
  const auto attach = [sources](const biz::IMUserID& user) {
    const auto accounts = kexcore::GetService<biz::IIMAccountMgr>();
    return std::make_shared<const Attachment>(accounts ? accounts->GetAccount(user) : nullptr,
                                              *sources);
  };
  const auto set_account = [weak = weak_from_this()](const biz::IMUserID& user,
                                                     std::shared_ptr<const Attachment> attached) {
    const auto self = weak.lock();
    if (self && self->open_) self->SetAccount(user, std::move(attached));
  };
  modules_ = make({channel_, attach, set_account});
  for (const auto& [path, module] : modules_) {
    if (!module) continue;
    module->listener().SetPath(path);
    sources->push_back(module->source());
  }
  if (account.valid()) SetAccount(account, attach(account));
  for (const auto& [path, module] : modules_) {
    if (module) module->OwnerPreConstruct();
  }
  // Who logged in before the modules listened was not heard.
  if (!account.valid() || attached_->engine()) return;
  if (auto later = attach(account); later->engine()) SetAccount(account, std::move(later));
}

void BoundView::Close() {
  if (!std::exchange(open_, false)) return;
  channel_->Close();
  // Out of here first: a module's end may come back through the host.
  const auto attached = std::exchange(attached_, nullptr);
  const auto modules = std::exchange(modules_, {});
  if (const auto windows = kexcore::GetService<client::IChatWindowService>()) {
    windows->SetViewAccount(browser_id_, {});
  }
}

void BoundView::SetAccount(const biz::IMUserID& account,
                           std::shared_ptr<const Attachment> attached) {
  if (const auto windows = kexcore::GetService<client::IChatWindowService>()) {
    windows->SetViewAccount(browser_id_, account);
  }
  for (const auto& [path, module] : modules_) {
    if (module) module->SetAccount(account, attached ? attached->engine() : nullptr);
  }
  attached_ = std::move(attached);
}

}  // namespace imsdk::bridge
