// The bridge object: one per browser view. It carries the view's calls to the business modules.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "bridge/page_handler.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/task_runner.h"

namespace imsdk::bridge {

// One argument of a script call. Objects and arrays are passed as their JSON text. The bridge
// reads arguments as texts: nothing becomes the empty text, a truth value "true" or "false", a
// number its shortest decimal form.
using ScriptArg = std::variant<std::monostate, bool, std::int64_t, double, std::wstring>;

// One script call as the host received it.
struct SdkParam {
  std::wstring browserId;       // the page that made the call
  std::wstring method;          // for instance "workbench.im.singlemsg.invoke"
  std::vector<ScriptArg> args;  // sequence identifier, business method, JSON argument; missing
                                // arguments are empty, further ones ignored
};

// What a bridge is bound to.
struct PageBinding {
  std::wstring browserId;                    // the view's identity
  IPageHandler* handler = nullptr;           // the bridge takes a reference of its own
  std::shared_ptr<base::TaskRunner> runner;  // the view's thread
  biz::IMUserID account;  // the account the view works for; empty until the page logs in
};

// The bridge of one browser view. The order of the operations is part of the contract.
//
// Life: create it through the factory, `BindPage` once, any number of `JsInvoke`, `UnbindPage`
// when the view closes or reloads (a reloaded page gets a new bridge), `Release`. Answers that
// come after `UnbindPage` go nowhere.
//
// Threads: all but `AddRef` and `Release` run on the view's task runner. After `UnbindPage` the
// bridge may be released anywhere. Calls that come before `BindPage` are dropped.
class IIMSDKBridge {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // Binds the bridge to its page, makes the business modules and subscribes them to the engine's
  // events. Returns 0, E_POINTER without a handler or runner, or E_UNEXPECTED when it was bound
  // before.
  virtual std::int32_t BindPage(const PageBinding& binding) = 0;
  // Carries one call. Its answer comes through the page handler, possibly before this returns.
  // Never throws.
  virtual void JsInvoke(const SdkParam& sdkParam) = 0;
  // Drops the page handler, the modules and their subscriptions. Safe to call twice.
  virtual void UnbindPage() = 0;

 protected:
  ~IIMSDKBridge() = default;
};

}  // namespace imsdk::bridge
