#include "source/bridge/pagechannel.h"

#include <utility>

#include "kexbase/location.h"

namespace imsdk::bridge {

void PageChannel::Run(std::function<void()> task) const {
  if (runner_->RunsTasksOnCurrentThread()) return task();
  runner_->PostTask(FROM_HERE, std::move(task));
}

void PageChannel::Raise(const std::wstring& event, const std::wstring& json,
                        const wchar_t* path) noexcept {
  const RefPtr<IPageHandler> handler = handler_;
  if (!handler) return;
  // The handler may call back into the bridge, which may raise another one.
  const wchar_t* const outer = std::exchange(path_, path);
  try {
    handler->Notify(event, json);
  } catch (...) {  // the page side's trouble ends here
  }
  path_ = outer;
}

}  // namespace imsdk::bridge
