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
// Threads: all but `AddRef` and `Release` run on the view's task runner.
//
// Where a bridge may end: anywhere, at any time. References are counted on any thread, and an
// engine that answers late may give back the last one. A bridge that was not unbound then unbinds
// itself by a task on its runner. When the runner takes no tasks any more, its modules and its
// reference to the page handler are given back by whoever held them last, on that thread, and the
// page hears nothing more.
//
// The life of a bridge
//
//   Create it through the factory, `BindPage` once, any number of `JsInvoke`, `UnbindPage`,
//   `Release`. Calls before `BindPage` and after `UnbindPage` are dropped: neither carried out nor
//   answered.
//   - The page reloads: `UnbindPage`, and a new bridge under a new `browserId` for the new page. An
//     answer that the old page waited for goes nowhere, whatever sequence identifiers the new page
//     uses.
//   - The page is gone, also without a word: `UnbindPage`, as long as the runner still runs tasks.
//   - The host stops: first every bridge is unbound, then the manager is uninitialised, then the
//     engine ends. What the engine answers after that finds no page.
//
// The life of a call
//
//   `JsInvoke` carries one call and tells the page nothing by itself. Every call that reaches a
//   module is answered exactly once, through `IPageHandler::DeliverAnswer` on the view's thread:
//   - Early: the answer was there at once. It is delivered before `JsInvoke` returns, so a handler
//     must expect an answer inside its own call.
//   - Late: the engine answers on a thread of its own; the answer posts itself to the runner. After
//     half a second it is traced as slow, and is delivered all the same.
//   - Twice: the first answer counts. A second one is traced and does nothing.
//   - Never: an engine that drops its callback answers with `E_UNEXPECTED` and no text.
//   - A method that the module does not have is answered with `E_NOTIMPL`.
//   - "im.event_register" and "im.event_notify" are answered by the bridge, at once.
//
//   These calls are not answered; a page guards itself by a timeout of its own:
//   - `method` does not begin with "workbench.im.", names a routing path that is not there, or ends
//     in something else than ".invoke" and is none of the two above.
//   - The sequence identifier is empty. The call is carried out.
//   - `browserId` is not the bridge's own. The call is not carried out; should an older call wait
//     under the same sequence identifier, that one is answered with `E_NOTIMPL`.
//   - A later call came under the same sequence identifier while this one was open: one record
//     stands for both, and the answer that comes first is delivered.
//
//   The bridge keeps at most 1,000,000 open calls and 64,000,000 characters of their texts. Over
//   that the oldest ones are answered with `E_UNEXPECTED`; the engine may still carry them out.
//
//   `UnbindPage` answers nothing. What the engine does for an open call goes on; its answer, traced
//   as an error, is dropped. It holds a reference to the bridge until then, and gives it back when
//   it has answered, however long the engine keeps its callback. A runner that takes no tasks any
//   more loses the answers that were posted to it.
//
// Who hears of a login ("im.login")
//
//   A view is logged in while it has a session of the engine: by its own login, or by being bound
//   to an account that is logged in, then or later. A view that is bound to an account and not
//   logged in may log in by itself, as whom it likes. One login of a view is under way at a time; a
//   second one is refused. After a few wrong passwords its next login by password waits, up to two
//   seconds. Notifications follow the answer, and come when all modules have the
//   account.
//
//     What happens        | the view that asked | bound, not logged in | logged in to it
//     --------------------+---------------------+----------------------+---------------------
//     a login succeeds    | onIMLoginOK         | onIMLoginOK          | -
//     a login fails       | onIMLoginFailed     | -                    | -
//     a session ends      | as the last column  | -                    | onIMLogouted
//     a link comes again  | as the last column  | -                    | onNetReConnectOK
//     a link is lost      | as the last column  | -                    | onNetReConnectFailed
//
//   Every other view hears nothing. After "onIMLogouted" a view is nobody's until it logs in, also
//   one that was bound. A session is told from the one before it: news of an old one, however late,
//   is nothing to a view of the next. What an account raises after its login reaches each view that
//   hears "onIMLoginOK", after that.
class IIMSDKBridge {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // Binds the bridge to its page, makes the business modules and subscribes them to the engine's
  // events. Returns 0, E_POINTER without a handler or runner, or E_UNEXPECTED when it was bound
  // before.
  virtual std::int32_t BindPage(const PageBinding& binding) = 0;
  // Carries one call, as told above. Never throws.
  virtual void JsInvoke(const SdkParam& sdkParam) = 0;
  // Drops the page handler, the modules and their subscriptions: nothing reaches the page from here
  // on. Safe to call twice, and from inside a call of the page handler.
  virtual void UnbindPage() = 0;
  // While the page handler is given a notification: the routing path of the module that sends it.
  // Several modules may send notifications of one name. Empty at any other time, and while the
  // handler is given an event that a page raised. View's thread; the text is the bridge's and lasts
  // as long as that delivery.
  virtual const wchar_t* NotifyingPath() const = 0;

 protected:
  ~IIMSDKBridge() = default;
};

}  // namespace imsdk::bridge
