// The way from the modules to the page for notifications.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "bridge/page_handler.h"
#include "kexbase/task_runner.h"
#include "kexcom/ref_counted.h"

namespace imsdk::bridge {

// Shared by a bridge, its modules and what they posted. Everything that touches the page handler
// runs on the view's thread.
class PageChannel {
 public:
  PageChannel(IPageHandler* handler, std::shared_ptr<base::TaskRunner> runner)
      : handler_(handler), runner_(std::move(runner)) {}

  const std::shared_ptr<base::TaskRunner>& runner() const { return runner_; }
  // The page handler, or null once the page is gone. View's thread.
  const RefPtr<IPageHandler>& handler() const { return handler_; }

  // Runs `task` on the view's thread: at once when called there. Any thread.
  void Run(std::function<void()> task) const;
  // Raises an event on the page; `path` is the routing path that it comes from, or empty. View's
  // thread.
  void Raise(const std::wstring& event, const std::wstring& json, const wchar_t* path) noexcept;
  // The path of the event that is being raised, or empty. View's thread.
  const wchar_t* path() const { return path_; }
  // Lets go of the page handler. View's thread.
  void Close() { handler_ = nullptr; }

 private:
  RefPtr<IPageHandler> handler_;
  const wchar_t* path_ = L"";
  const std::shared_ptr<base::TaskRunner> runner_;
};

}  // namespace imsdk::bridge
