#include "source/bridge/pagechannel.h"

#include <utility>

#include "kexbase/location.h"

namespace imsdk::bridge {

void PageChannel::Run(std::function<void()> task) const {
  if (runner_->RunsTasksOnCurrentThread()) return task();
  runner_->PostTask(FROM_HERE, std::move(task));
}

void PageChannel::Raise(const std::wstring& event, const std::wstring& json) noexcept {
  const RefPtr<IPageHandler> handler = handler_;
  if (!handler) return;
  try {
    handler->Notify(event, json);
  } catch (...) {  // the page side's trouble ends here
  }
}

}  // namespace imsdk::bridge
