// Business module "im.login": login, logout and reconnection of the account of a view.
#include <type_traits>
#include <utility>

#include "kexbase/location.h"
#include "kexbase/lock.h"
#include "kexcore/kexcom.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/jsparams/loginrecords.h"
#include "source/bridge/methodtable.h"
#include "source/bridge/wrongpasswords.h"

namespace imsdk::bridge {
namespace {

constexpr Notification<biz::IMUserRequest> kOnLoginOK{L"onIMLoginOK", "The account is logged in."};
constexpr Notification<biz::ResultCode> kOnLoginFailed{L"onIMLoginFailed", "A login failed."};
constexpr Notification<biz::IMUserRequest> kOnLogouted{
    L"onIMLogouted", "The account was logged out, by the page or by the server."};
constexpr Notification<biz::IMUserRequest> kOnNetReConnectOK{
    L"onNetReConnectOK", "The account has a link to its server again."};
constexpr Notification<biz::ResultCode> kOnNetReConnectFailed{
    L"onNetReConnectFailed", "The account lost its link, and the first try to renew it failed."};
constexpr const NotifyInfo* kNotifications[] = {&kOnLoginOK, &kOnLoginFailed, &kOnLogouted,
                                                &kOnNetReConnectOK, &kOnNetReConnectFailed};

using AccountMgr = RefPtr<biz::IIMAccountMgr>;

// Whose login a view waits for: it is bound to an account that is not logged in. Any thread.
class Awaited {
 public:
  void Set(const biz::IMUserID& user) {
    base::AutoLock hold(lock_);
    user_ = user;
  }
  bool Is(const biz::IMUserID& user) const {
    base::AutoLock hold(lock_);
    return user_.valid() && user_ == user;
  }

 private:
  mutable base::Lock lock_;
  biz::IMUserID user_;  // under lock_
};

// Who hears what stands in include/bridge/imsdkbridge.h.
class CBridgeIMLogin final : public CBridgeBase {
 public:
  using Form = PlainForm;
  static constexpr Name kName = "CBridgeIMLogin";
  static constexpr bool kTakesSecrets = true;

  explicit CBridgeIMLogin(ModuleContext context)
      : CBridgeBase(std::move(context), kNotifications) {}

  std::span<const MethodRow> Methods() const override;
  void OwnerPreConstruct() override;

  biz::ResultCode Find(AccountMgr* mgr) const {
    *mgr = kexcore::GetService<biz::IIMAccountMgr>();
    return *mgr ? biz::ResultCode() : NotReady();
  }

  void GetCurrentLoginID(const biz::IMNothing&, Call<biz::IMUserRequest> call) {
    if (!engine_) return call.Refuse(NotReady());
    call.Succeed({Account()});
  }
  // Logs in by `kLogin` of the engine, unless this view is logged in already.
  template <auto kLogin, class Request>
  void DoLogin(const Request& request, AccountMgr mgr, Call<biz::IMLoginGrant> call);
  void DoNetReConnect(const biz::IMNothing&, AccountMgr mgr, Call<> call) {
    mgr->NetReConnect({Account()}, call);
  }
  void DoLogout(const biz::IMNothing&, AccountMgr mgr, Call<> call) {
    mgr->Logout({Account()}, call);
  }

 private:
  // A login of this view that the engine has not answered. Owned by the engine's callback, so that
  // one that is dropped is over too.
  struct Attempt {};
  using Attached = std::shared_ptr<const Attachment>;

  void OnAccountChanged(biz::IIMAccount* engine) override;
  template <auto kLogin, class Request>
  void Ask(const Request& request, const Call<biz::IMLoginGrant>& call,
           const std::shared_ptr<Attempt>& attempt);
  void OnLoginDone(const biz::ResultCode& result, const biz::IMLoginGrant& grant, Attached attached,
                   const Call<biz::IMLoginGrant>& call);
  void OnAttemptOver();
  void OnAwaited(const biz::IMUserID& user, Attached attached);
  void OnLogouted(const biz::IMUserID& user);
  bool IsAccount(const biz::IMUserID& user) const { return engine_ && user == Account(); }

  // Subscribes to the engine's events, once.
  void Listen(biz::IIMAccountMgr& mgr);
  // Subscribes to one, and goes on with `handler(module, user, …)` on the view's thread if the
  // module is still there.
  template <class... Args, class Handler>
  void Hear(base::event<void(biz::IMUserID, Args...)>& event, Handler handler) {
    events().Holder(event)->Connect([self = Self(), channel = context().channel, handler](
                                        const biz::IMUserID& user, const Args&... args) {
      channel->Run(
          base::BindWeak(self, [=](CBridgeIMLogin& module) { handler(module, user, args...); }));
    });
  }
  std::weak_ptr<CBridgeIMLogin> Self() {
    return std::static_pointer_cast<CBridgeIMLogin>(shared_from_this());
  }

  bool listening_ = false;
  RefPtr<biz::IIMAccount> engine_;  // the session of this view; null while it is not logged in
  std::weak_ptr<Attempt> attempt_;
  WrongPasswords wrong_;
  Attached came_;  // what was awaited, while an attempt of this view is open
  const std::shared_ptr<Awaited> awaited_ = std::make_shared<Awaited>();
};

using M = CBridgeIMLogin;
using Mgr = biz::IIMAccountMgr;
constexpr MethodRow kMethods[] = {
    Row<M, "GetCurrentLoginID", &M::GetCurrentLoginID>("The account that this page works for."),
    Row<M, "DoLoginByToken", &M::DoLogin<&Mgr::LoginByToken, biz::IMTokenLogin>>(
        "Logs the page in by the token of an earlier login.", {.failed = L"DoLogin failed!!"}),
    Row<M, "DoLoginByPassWord", &M::DoLogin<&Mgr::LoginByPassword, biz::IMPasswordLogin>>(
        "Logs the page in by its user's password.", {.failed = L"DoLogin failed!!"}),
    Row<M, "DoNetReConnect", &M::DoNetReConnect>("Drops and renews the link to the server.",
                                                 {.failed = L"DoNetReConnect failed!!"}),
    Row<M, "DoLogout", &M::DoLogout>("Logs the account out; its token stays good.",
                                     {.failed = L"DoLogout failed!!"}),
};

std::span<const MethodRow> CBridgeIMLogin::Methods() const { return kMethods; }

void CBridgeIMLogin::OwnerPreConstruct() {
  AccountMgr mgr;
  if (Find(&mgr).ok()) return Listen(*mgr);
  ns_log::CTraceProxy(ns_log::kError, {"CBridgeIMLogin::OwnerPreConstruct"}, L"GetIMAccountMgr.");
}

void CBridgeIMLogin::Listen(biz::IIMAccountMgr& mgr) {
  if (std::exchange(listening_, true)) return;
  using Self = CBridgeIMLogin;
  using User = biz::IMUserID;
  using Result = biz::ResultCode;
  biz::IMAccountEvents& engine = mgr.Events();
  events()
      .Holder(engine.on_login_ok)
      ->Connect([self = this->Self(), context = context(), awaited = awaited_](const User& user) {
        if (!awaited->Is(user)) return;
        // Here and not on the view's thread: once this returns, the account's events begin.
        context.channel->Run(
            base::BindWeak(self, [user, attached = context.attach(user)](Self& module) {
              module.OnAwaited(user, attached);
            }));
      });
  Hear(engine.on_logouted, [](Self& self, const User& user) { self.OnLogouted(user); });
  Hear(engine.on_net_reconnect_ok, [](Self& self, const User& user) {
    if (self.IsAccount(user)) self.listener().Notify(kOnNetReConnectOK, {user});
  });
  Hear(engine.on_net_reconnect_failed, [](Self& self, const User& user, const Result& result) {
    if (self.IsAccount(user)) self.listener().Notify(kOnNetReConnectFailed, Envelope(result));
  });
}

void CBridgeIMLogin::OnAccountChanged(biz::IIMAccount* engine) {
  engine_ = RefPtr(engine);
  came_ = nullptr;
  awaited_->Set(engine ? biz::IMUserID() : Account());
}

template <auto kLogin, class Request>
void CBridgeIMLogin::DoLogin(const Request& request, AccountMgr mgr, Call<biz::IMLoginGrant> call) {
  if (engine_) {
    const std::int32_t code = request.userid == Account() ? 0 : E_UNEXPECTED;
    return call.Finish({code, 0, L"Alread Login"}, {Account(), {}, 0});
  }
  // Only one of two could become the account of the view; the other would stay logged in for
  // nobody.
  if (!attempt_.expired()) return call.Fail(E_UNEXPECTED, L"another login is under way");
  Listen(*mgr);
  const std::shared_ptr<Attempt> attempt(
      new Attempt, [self = Self(), channel = context().channel](const Attempt* over) {
        delete over;
        channel->Run(base::BindWeak(self, &CBridgeIMLogin::OnAttemptOver));
      });
  attempt_ = attempt;
  if constexpr (std::is_same_v<Request, biz::IMPasswordLogin>) {
    const auto pause = wrong_.Pause(WrongPasswords::Clock::now());
    if (pause > pause.zero()) {
      const auto ask = &CBridgeIMLogin::Ask<kLogin, Request>;
      context().channel->runner()->PostDelayedTask(
          FROM_HERE,
          base::BindWeak(Self(),
                         [=](CBridgeIMLogin& module) { (module.*ask)(request, call, attempt); }),
          pause);
      return;
    }
  }
  Ask<kLogin>(request, call, attempt);
}

template <auto kLogin, class Request>
void CBridgeIMLogin::Ask(const Request& request, const Call<biz::IMLoginGrant>& call,
                         const std::shared_ptr<Attempt>& attempt) {
  AccountMgr mgr;
  if (const biz::ResultCode found = Find(&mgr); !found.ok()) return call.Refuse(found);
  (mgr.get()->*kLogin)(request, [self = Self(), context = context(), call, attempt](
                                    const biz::ResultCode& result, const biz::IMLoginGrant& grant) {
    // Here and not on the view's thread: once this returns, the account's events begin.
    auto attached = result.ok() ? context.attach(grant.userid) : nullptr;
    context.channel->Run(base::BindWeak(
        self, [=](CBridgeIMLogin& module) { module.OnLoginDone(result, grant, attached, call); }));
  });
}

void CBridgeIMLogin::OnLoginDone(const biz::ResultCode& result, const biz::IMLoginGrant& grant,
                                 Attached attached, const Call<biz::IMLoginGrant>& call) {
  attempt_.reset();
  if (result.ok() && attached->engine()) {
    // The modules work for the account before the page learns that it is logged in.
    context().set_account(grant.userid, std::move(attached));
    // A login may succeed and have something to tell: its subcode and text say so.
    call.Finish(result, grant);
    return listener().Notify(kOnLoginOK, {grant.userid});
  }
  const biz::ResultCode why =
      result.ok() ? biz::ResultCode{biz::kEngineNotLoggedIn, 0, L"logged out again"} : result;
  wrong_.Note(why.code, WrongPasswords::Clock::now());
  call.Finish(why);
  listener().Notify(kOnLoginFailed, Envelope(why));
  OnAttemptOver();
}

void CBridgeIMLogin::OnAttemptOver() {
  if (came_ && attempt_.expired()) OnAwaited(Account(), std::exchange(came_, nullptr));
}

void CBridgeIMLogin::OnAwaited(const biz::IMUserID& user, Attached attached) {
  if (!awaited_->Is(user) || !attached->engine()) return;
  if (!attempt_.expired()) {
    came_ = std::move(attached);
    return;
  }
  context().set_account(user, std::move(attached));
  listener().Notify(kOnLoginOK, {user});
}

void CBridgeIMLogin::OnLogouted(const biz::IMUserID& user) {
  if (user == Account()) came_ = nullptr;
  if (!IsAccount(user)) return;
  // Told late, of a session before this one?
  AccountMgr mgr;
  if (Find(&mgr).ok() && mgr->GetAccount(user).get() == engine_.get()) return;
  context().set_account({}, nullptr);
  listener().Notify(kOnLogouted, {user});
}

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeIMLogin(const ModuleContext& context) {
  return std::make_shared<CBridgeIMLogin>(context);
}

}  // namespace imsdk::bridge
