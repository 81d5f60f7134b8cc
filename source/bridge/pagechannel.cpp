#include "source/bridge/pagechannel.h"

#include <utility>

#include "kexbase/location.h"

namespace imsdk::bridge {

PageChannel::PageChannel(IPageHandler* handler, std::shared_ptr<base::TaskRunner> runner)
    : handler_(handler), runner_(std::move(runner)) {}

void PageChannel::Register(std::wstring_view event) {
  base::AutoLock hold(lock_);
  registered_.emplace(event);
}

void PageChannel::Unregister(std::wstring_view event) {
  base::AutoLock hold(lock_);
  registered_.erase(std::wstring(event));
}

void PageChannel::UnregisterAll() {
  base::AutoLock hold(lock_);
  registered_.clear();
}

bool PageChannel::IsRegistered(std::wstring_view event) const {
  base::AutoLock hold(lock_);
  return registered_.contains(std::wstring(event));
}

void PageChannel::Notify(std::wstring_view event, std::wstring json) {
  auto raise = [self = shared_from_this(), name = std::wstring(event), text = std::move(json)] {
    if (self->IsRegistered(name)) self->Raise(name, text);
  };
  if (runner_->RunsTasksOnCurrentThread()) return raise();
  runner_->PostTask(FROM_HERE, std::move(raise));
}

void PageChannel::Raise(const std::wstring& event, const std::wstring& json) noexcept {
  const RefPtr<IPageHandler> handler = handler_;
  if (!handler) return;
  try {
    handler->Notify(event, json);
  } catch (...) {  // the page side's trouble ends here
  }
}

void PageChannel::Close() { handler_ = nullptr; }

}  // namespace imsdk::bridge
