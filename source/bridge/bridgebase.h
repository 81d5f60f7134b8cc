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
#include "kexcom/result.h"
#include "source/bridge/accountfeed.h"
#include "source/bridge/answercallback.h"
#include "source/bridge/jsparams/secretfree.h"
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

// The fixed texts of a method. What a row leaves null its module says (`Module::kTexts`), and what
// that leaves null stands in `CBridgeBase::kTexts`.
struct RowTexts {
  const wchar_t* input = nullptr;       // of the line with which a call begins; else its name
  const wchar_t* invalid = nullptr;     // answers a request that cannot be used
  const wchar_t* unreadable = nullptr;  // traces one that is no JSON; else `invalid`
  const wchar_t* failed = nullptr;      // traces a failure that has no fixed text of its own

  // These, and from `further` what is null here.
  constexpr RowTexts Or(const RowTexts& further) const {
    return {input ? input : further.input, invalid ? invalid : further.invalid,
            unreadable ? unreadable : further.unreadable, failed ? failed : further.failed};
  }
};

// One row of a module's method table: a method and what serves it. Static.
struct MethodRow {
  std::string_view name;  // ASCII
  const char* sentence;   // for the page's developer
  const TypeInfo* request;
  const TypeInfo* answer;  // the keys behind the envelope's, or what stands under "result"
  ns_log::TraceSite site;
  RowTexts texts;      // all but `unreadable` are there
  bool takes_secrets;  // its module does, or it alone
  void (*run)(CBridgeBase& module, const MethodRow& row, const std::wstring& jsonStr,
              AnswerCallback answer);
  const char* secret_key = nullptr;  // of its requests, beside those that are secret everywhere
};

// What a request to one of these methods may hold.
Secrets SecretsOf(std::span<const MethodRow> rows);

// A service or an account is not there.
inline biz::ResultCode NotReady() { return {E_UNEXPECTED, 0, L"failed"}; }

// How a module traces that its account is not logged in: by whom and as what. Static.
struct LookUp {
  const char* function = nullptr;  // null: not at all
  const wchar_t* text = nullptr;
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
  // Whether requests to the module hold secrets; it says so itself.
  static constexpr bool kTakesSecrets = false;
  static constexpr RowTexts kTexts{.invalid = L"invalid!", .failed = L"failed!!"};

  // `notifications` are those that the module sends, `feed` makes what it hears of its account, and
  // `look_up` is traced when that is not logged in.
  explicit CBridgeBase(ModuleContext context, NotifyList notifications = {},
                       CAccountFeed::Make feed = nullptr, const LookUp& look_up = {})
      : context_(std::move(context)),
        look_up_(look_up),
        source_{std::make_shared<Listener>(context_.channel, notifications), feed} {}

  bool JsInvoke(const std::wstring& bizmethod, const std::wstring& jsonparam,
                AnswerCallback answer) final;

  virtual std::span<const MethodRow> Methods() const { return {}; }
  Listener& listener() const { return *source_.listener; }
  const FeedSource& source() const { return source_; }

  // Writes the line with which every handler begins.
  static void TraceInput(const MethodRow& row, const std::wstring& jsonStr);
  // The request's JSON, or nothing when it cannot be used.
  static std::optional<base::Value> ReadRequest(const MethodRow& row, const std::wstring& jsonStr);

 protected:
  void OnAccountChanged(biz::IIMAccount* engine) override;

  // The module's own subscriptions, which end with it.
  CSdkEventMgr& events() { return events_; }
  const ModuleContext& context() const { return context_; }

 private:
  const ModuleContext context_;
  const LookUp look_up_;
  const FeedSource source_;
  CSdkEventMgr events_;
};

}  // namespace bridge
}  // namespace imsdk
