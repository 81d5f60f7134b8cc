// The common shape of the business modules.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "imsdk/biz/account.h"
#include "kexbase/callback.h"
#include "kexbase/values.h"
#include "source/bridge/answercallback.h"
#include "source/bridge/jsparams/record.h"
#include "source/bridge/pagechannel.h"
#include "source/bridge/sdkeventmgr.h"
#include "trace/traceproxy.h"

namespace imsdk {

// Ties a module to one account of the engine. View's thread.
class CAccountIsolator {
 public:
  virtual ~CAccountIsolator() = default;
  // Called once, before the module serves calls: looks up services that no account owns.
  virtual void OwnerPreConstruct() {}

  // Sets the account the module works for, or none.
  void SetAccount(const biz::IMUserID& account) {
    appkey_ = account.appkey;
    nick_ = account.nick;
    OnAccountChanged();
  }
  biz::IMUserID Account() const { return {appkey_, nick_}; }

 protected:
  // The account is another one now: subscribe to its events.
  virtual void OnAccountChanged() {}

 private:
  std::wstring appkey_;
  std::wstring nick_;
};

namespace bridge {

class IJSInvokeHandler {
 public:
  virtual ~IJSInvokeHandler() = default;
  // Runs `bizmethod` with its JSON text; `answer` is called once, now or later. False when there
  // is no such method; it is answered all the same.
  virtual bool JsInvoke(const std::wstring& bizmethod, const std::wstring& jsonparam,
                        AnswerCallback answer) = 0;
};

class CBridgeBase;

// One row of a module's method table.
struct MethodRow {
  std::string_view name;   // ASCII
  std::wstring_view text;  // the name as the text of the input trace
  ns_log::TraceSite site;
  void (*run)(CBridgeBase& module, const MethodRow& row, const std::wstring& jsonStr,
              AnswerCallback answer);
};

// What a bridge gives its modules.
struct ModuleContext {
  std::shared_ptr<PageChannel> channel;
  // Makes `account` (or none) the account of the bridge and of all its modules. View's thread;
  // does nothing once the bridge is gone.
  std::function<void(const biz::IMUserID& account)> set_account;
};

// A module is made, used and released on the view's thread. Engine callbacks into it hold a weak
// reference.
class CBridgeBase : public IJSInvokeHandler,
                    public CAccountIsolator,
                    public std::enable_shared_from_this<CBridgeBase> {
 public:
  explicit CBridgeBase(ModuleContext context) : context_(std::move(context)) {}

  bool JsInvoke(const std::wstring& bizmethod, const std::wstring& jsonparam,
                AnswerCallback answer) final;

  // The names of the notifications that the module sends.
  virtual std::span<const std::wstring_view> Notifications() const { return {}; }

  // Writes the line with which every handler begins.
  static void TraceInput(const MethodRow& row, const std::wstring& jsonStr);
  // The request's JSON, or nothing after an "invalid!" was traced and answered.
  static std::optional<base::Value> ReadRequest(const MethodRow& row, const std::wstring& jsonStr,
                                                const AnswerCallback& answer);

 protected:
  virtual std::span<const MethodRow> Methods() const = 0;

  // Sends a notification if the page registered for it; its JSON is not made otherwise. Any thread.
  template <IsRecord R>
  void Notify(std::wstring_view event, const R& record) const {
    if (context_.channel->IsRegistered(event)) context_.channel->Notify(event, RecordText(record));
  }

  // Runs `task` on the view's thread if the module is still there: at once when called there.
  void RunOnView(std::function<void()> task) const;

  // Connects `handler(M&, …)` of module `M` to an event, until the module is released or `events()`
  // is cleared.
  template <class M, class Sig, class Handler>
  void Subscribe(base::event<Sig>& event, Handler handler) {
    const std::weak_ptr<M> self = std::static_pointer_cast<M>(shared_from_this());
    events_.Holder(event)->Connect(base::BindWeak(self, std::move(handler)));
  }
  // The same for a member function.
  template <class M, class Sig, class Handler>
  void Subscribe(base::event<Sig>& event, Handler M::*handler) {
    Subscribe<M, Sig, Handler M::*>(event, handler);
  }
  CSdkEventMgr& events() { return events_; }
  const ModuleContext& context() const { return context_; }

 private:
  const ModuleContext context_;
  CSdkEventMgr events_;
};

}  // namespace bridge
}  // namespace imsdk
