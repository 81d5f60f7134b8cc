// The way from the modules to the page for notifications, and what the page registered for.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

#include "bridge/page_handler.h"
#include "kexbase/lock.h"
#include "kexbase/task_runner.h"
#include "kexcom/ref_counted.h"

namespace imsdk::bridge {

// Shared by a bridge and its modules. Registration may be asked on any thread; everything that
// touches the page handler runs on the view's thread.
class PageChannel : public std::enable_shared_from_this<PageChannel> {
 public:
  PageChannel(IPageHandler* handler, std::shared_ptr<base::TaskRunner> runner);

  const std::shared_ptr<base::TaskRunner>& runner() const { return runner_; }
  // The page handler, or null once the page is gone. View's thread.
  const RefPtr<IPageHandler>& handler() const { return handler_; }

  void Register(std::wstring_view event);
  void Unregister(std::wstring_view event);
  void UnregisterAll();
  bool IsRegistered(std::wstring_view event) const;

  // Raises a notification on the page if the page is registered for it when its turn comes on the
  // view's thread. Any thread.
  void Notify(std::wstring_view event, std::wstring json);
  // Raises an event whatever the page registered for. View's thread.
  void Raise(const std::wstring& event, const std::wstring& json) noexcept;
  // Lets go of the page handler. View's thread.
  void Close();

 private:
  RefPtr<IPageHandler> handler_;
  const std::shared_ptr<base::TaskRunner> runner_;
  mutable base::Lock lock_;
  std::unordered_set<std::wstring> registered_;  // under lock_
};

}  // namespace imsdk::bridge
