// Business module "im.login": login, logout and reconnection of the account of a view.
#include <utility>

#include "kexcore/kexcom.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/jsparams/loginrecords.h"
#include "source/bridge/methodtable.h"

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

void TraceFailure(const CallBase& call, std::wstring_view text, const biz::ResultCode& result) {
  ns_log::CTraceProxy(ns_log::kError, call.site(), text)
      .Brief("_brief_,code,subcode,result", result.code, result.subcode, result.text);
}

// The engine's callback of an operation that answers its envelope and traces a failure.
biz::IMCallback<> Answer(const Call<>& call, std::wstring_view failure) {
  return [call, failure](const biz::ResultCode& result) {
    if (!result.ok()) TraceFailure(call, failure, result);
    call.Finish(result);
  };
}

class CBridgeIMLogin final : public CBridgeBase {
 public:
  using Form = PlainForm;
  static constexpr Name kName = "CBridgeIMLogin";
  static constexpr char kSource[] = "source\\bridge\\bridgeimlogin";

  explicit CBridgeIMLogin(ModuleContext context)
      : CBridgeBase(std::move(context), kNotifications) {}

  std::span<const MethodRow> Methods() const override;
  void OwnerPreConstruct() override;

  biz::ResultCode Find(AccountMgr* mgr) const {
    *mgr = kexcore::GetService<biz::IIMAccountMgr>();
    if (*mgr) return {};
    return {E_UNEXPECTED, 0, L"failed"};
  }

  void GetCurrentLoginID(const biz::IMNothing&, Call<biz::IMUserRequest> call) {
    const biz::IMUserID account = Account();
    if (!account.valid()) return call.Fail(E_UNEXPECTED, L"failed");
    call.Succeed({account});
  }
  // Logs in by `kLogin` of the engine, unless this view is logged in already.
  template <auto kLogin, class Request>
  void DoLogin(const Request& request, AccountMgr mgr, Call<biz::IMLoginGrant> call);
  void DoNetReConnect(const biz::IMNothing&, AccountMgr mgr, Call<> call) {
    mgr->NetReConnect({Account()}, Answer(call, L"DoNetReConnect failed!!"));
  }
  void DoLogout(const biz::IMNothing&, AccountMgr mgr, Call<> call) {
    mgr->Logout({Account()}, Answer(call, L"DoLogout failed!!"));
  }

 private:
  void OnLoginDone(const biz::ResultCode& result, const biz::IMLoginGrant& grant,
                   std::shared_ptr<const Attachment> attached, const Call<biz::IMLoginGrant>& call);

  // Subscribes to an event of the engine's, and goes on with `handler(module, user, …)` on the
  // view's thread if the module is still there.
  template <class... Args, class Handler>
  void Hear(base::event<void(biz::IMUserID, Args...)>& event, Handler handler) {
    const std::weak_ptr self = std::static_pointer_cast<CBridgeIMLogin>(shared_from_this());
    events().Holder(event)->Connect([self, channel = context().channel, handler](
                                        const biz::IMUserID& user, const Args&... args) {
      channel->Run(
          base::BindWeak(self, [=](CBridgeIMLogin& module) { handler(module, user, args...); }));
    });
  }
  bool IsAccount(const biz::IMUserID& user) const { return user.valid() && user == Account(); }
  // Whether news of a login of `user` is for this view: it is its account or the one it last tried.
  bool Concerns(const biz::IMUserID& user) const {
    return IsAccount(user) || (user.valid() && user == attempted_);
  }

  biz::IMUserID attempted_;  // whom this view last tried to log in. View's thread
};

using M = CBridgeIMLogin;
using Mgr = biz::IIMAccountMgr;
constexpr MethodRow kMethods[] = {
    Row<M, "GetCurrentLoginID", &M::GetCurrentLoginID>("The account that this page works for."),
    Row<M, "DoLoginByToken", &M::DoLogin<&Mgr::LoginByToken, biz::IMTokenLogin>>(
        "Logs the page in by the token of an earlier login."),
    Row<M, "DoLoginByPassWord", &M::DoLogin<&Mgr::LoginByPassword, biz::IMPasswordLogin>>(
        "Logs the page in by its user's password."),
    Row<M, "DoNetReConnect", &M::DoNetReConnect>("Drops and renews the link to the server."),
    Row<M, "DoLogout", &M::DoLogout>("Logs the account out; its token stays good."),
};

std::span<const MethodRow> CBridgeIMLogin::Methods() const { return kMethods; }

void CBridgeIMLogin::OwnerPreConstruct() {
  AccountMgr mgr;
  if (!Find(&mgr).ok()) {
    ns_log::CTraceProxy(ns_log::kError, {"CBridgeIMLogin::OwnerPreConstruct", kSource},
                        L"GetIMAccountMgr.");
    return;
  }
  using Self = CBridgeIMLogin;
  using User = biz::IMUserID;
  using Result = biz::ResultCode;
  biz::IMAccountEvents& engine = mgr->Events();
  Hear(engine.on_login_ok, [](Self& self, const User& user) {
    if (self.Concerns(user)) self.listener().Notify(kOnLoginOK, {user});
  });
  Hear(engine.on_login_failed, [](Self& self, const User& user, const Result& result) {
    if (self.Concerns(user)) self.listener().Notify(kOnLoginFailed, Envelope(result));
  });
  Hear(engine.on_logouted, [](Self& self, const User& user) {
    if (!self.IsAccount(user)) return;
    self.listener().Notify(kOnLogouted, {user});
    self.attempted_ = {};
    self.context().set_account({}, nullptr);
  });
  Hear(engine.on_net_reconnect_ok, [](Self& self, const User& user) {
    if (self.IsAccount(user)) self.listener().Notify(kOnNetReConnectOK, {user});
  });
  Hear(engine.on_net_reconnect_failed, [](Self& self, const User& user, const Result& result) {
    if (self.IsAccount(user)) self.listener().Notify(kOnNetReConnectFailed, Envelope(result));
  });
}

template <auto kLogin, class Request>
void CBridgeIMLogin::DoLogin(const Request& request, AccountMgr mgr, Call<biz::IMLoginGrant> call) {
  if (const biz::IMUserID account = Account(); account.valid()) {
    const std::int32_t code = account == request.userid ? 0 : E_UNEXPECTED;
    return call.Finish({code, 0, L"Alread Login"}, {account, {}, 0});
  }
  attempted_ = request.userid;
  const std::weak_ptr self = std::static_pointer_cast<CBridgeIMLogin>(shared_from_this());
  (mgr.get()->*kLogin)(request, [self, context = context(), call](const biz::ResultCode& result,
                                                                  const biz::IMLoginGrant& grant) {
    // Here and not on the view's thread: once this returns, the account's events begin.
    auto attached = result.ok() ? context.attach(grant.userid) : nullptr;
    context.channel->Run(base::BindWeak(
        self, [=](CBridgeIMLogin& module) { module.OnLoginDone(result, grant, attached, call); }));
  });
}

void CBridgeIMLogin::OnLoginDone(const biz::ResultCode& result, const biz::IMLoginGrant& grant,
                                 std::shared_ptr<const Attachment> attached,
                                 const Call<biz::IMLoginGrant>& call) {
  if (!result.ok()) {
    TraceFailure(call, L"DoLogin failed!!", result);
    return call.Finish(result);
  }
  // The modules work for the account before the page learns that it is logged in.
  context().set_account(grant.userid, std::move(attached));
  call.Succeed(grant);
}

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeIMLogin(const ModuleContext& context) {
  return std::make_shared<CBridgeIMLogin>(context);
}

}  // namespace imsdk::bridge
