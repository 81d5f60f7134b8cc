// The common shape of the business modules.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "imsdk/biz/account.h"
#include "kexbase/values.h"
#include "source/bridge/accountfeed.h"
#include "source/bridge/answercallback.h"
#include "trace/traceproxy.h"

namespace imsdk {

// Ties a module to one account of the engine. View's thread.
class CAccountIsolator {
 public:
  virtual ~CAccountIsolator() = default;
  // Called once, before the module serves calls: looks up services that no account owns.
  virtual void OwnerPreConstruct() {}

  // Sets the account the module works for, or none. `engine` is null while it is not logged in.
  void SetAccount(const biz::IMUserID& account, biz::IIMAccount* engine) {
    appkey_ = account.appkey;
    nick_ = account.nick;
    OnAccountChanged(engine);
  }
  biz::IMUserID Account() const { return {appkey_, nick_}; }

 protected:
  // The account is another one now: get its services.
  virtual void OnAccountChanged(biz::IIMAccount* /*engine*/) {}

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

// One row of a module's method table: a method and what serves it. Static.
struct MethodRow {
  std::string_view name;   // ASCII
  std::wstring_view text;  // the name as the text of the input trace
  const char* sentence;    // for the page's developer
  const TypeInfo* request;
  const TypeInfo* answer;  // the keys behind the envelope's, or what stands under "result"
  ns_log::TraceSite site;
  const wchar_t* invalid;  // the answer to a request that cannot be used
  void (*run)(CBridgeBase& module, const MethodRow& row, const std::wstring& jsonStr,
              AnswerCallback answer);
};

// What a bridge gives its modules.
struct ModuleContext {
  std::shared_ptr<PageChannel> channel;
  // Puts the view into the feeds of `account`. Any thread; a login calls it before any event of
  // the account is raised.
  std::function<std::shared_ptr<const Attachment>(const biz::IMUserID& account)> attach;
  // Makes `account` (or none) the account of the bridge and of all its modules. View's thread;
  // does nothing once the bridge is gone.
  std::function<void(const biz::IMUserID& account, std::shared_ptr<const Attachment> attached)>
      set_account;
};

// A module is made, used and released on the view's thread. Engine callbacks into it hold a weak
// reference.
class CBridgeBase : public IJSInvokeHandler,
                    public CAccountIsolator,
                    public std::enable_shared_from_this<CBridgeBase> {
 public:
  // `notifications` are those that the module sends, and `feed` makes what it hears of its account.
  explicit CBridgeBase(ModuleContext context, NotifyList notifications = {},
                       CAccountFeed::Make feed = nullptr)
      : context_(std::move(context)),
        source_{std::make_shared<Listener>(context_.channel, notifications), feed} {}

  bool JsInvoke(const std::wstring& bizmethod, const std::wstring& jsonparam,
                AnswerCallback answer) final;

  virtual std::span<const MethodRow> Methods() const { return {}; }
  Listener& listener() const { return *source_.listener; }
  const FeedSource& source() const { return source_; }

  // Writes the line with which every handler begins.
  static void TraceInput(const MethodRow& row, const std::wstring& jsonStr);
  // The request's JSON, or nothing when it cannot be used; that is traced and answered.
  static std::optional<base::Value> ReadRequest(const MethodRow& row, const std::wstring& jsonStr,
                                                const AnswerCallback& answer);

 protected:
  // The module's own subscriptions, which end with it.
  CSdkEventMgr& events() { return events_; }
  const ModuleContext& context() const { return context_; }

 private:
  const ModuleContext context_;
  const FeedSource source_;
  CSdkEventMgr events_;
};

}  // namespace bridge
}  // namespace imsdk
