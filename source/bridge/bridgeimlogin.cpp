#include "source/bridge/bridgeimlogin.h"

#include <utility>

#include "kexcore/kexcom.h"

namespace imsdk::bridge {
namespace {

constexpr char kSource[] = "source\\bridge\\bridgeimlogin";

constexpr std::wstring_view kOnLoginOK = L"onIMLoginOK";
constexpr std::wstring_view kOnLoginFailed = L"onIMLoginFailed";
constexpr std::wstring_view kOnLogouted = L"onIMLogouted";
constexpr std::wstring_view kOnNetReConnectOK = L"onNetReConnectOK";
constexpr std::wstring_view kOnNetReConnectFailed = L"onNetReConnectFailed";
constexpr std::wstring_view kNotifications[] = {kOnLoginOK, kOnLoginFailed, kOnLogouted,
                                                kOnNetReConnectOK, kOnNetReConnectFailed};

constexpr MethodRow kMethods[] = {
    IM_METHOD(CBridgeIMLogin, GetCurrentLoginID), IM_METHOD(CBridgeIMLogin, DoLoginByToken),
    IM_METHOD(CBridgeIMLogin, DoLoginByPassWord), IM_METHOD(CBridgeIMLogin, DoNetReConnect),
    IM_METHOD(CBridgeIMLogin, DoLogout),
};

void TraceFailure(const CallBase& call, std::wstring_view text, const biz::ResultCode& result) {
  ns_log::CTraceProxy(ns_log::kError, call.site(), text)
      .Brief("_brief_,code,subcode,result", result.code, result.subcode, result.text);
}

// The engine's callback of an operation that answers its envelope and traces a failure.
biz::IMResultCallback Answer(const Call<NoKeys>& call, std::wstring_view failure) {
  return [call, failure](const biz::ResultCode& result) {
    if (!result.ok()) TraceFailure(call, failure, result);
    call.Finish(result);
  };
}

}  // namespace

std::span<const MethodRow> CBridgeIMLogin::Methods() const { return kMethods; }
std::span<const std::wstring_view> CBridgeIMLogin::Notifications() const { return kNotifications; }

void CBridgeIMLogin::OwnerPreConstruct() {
  const auto mgr = kexcore::GetService<biz::IIMAccountMgr>();
  if (!mgr) {
    ns_log::CTraceProxy(ns_log::kError, {"CBridgeIMLogin::OwnerPreConstruct", kSource},
                        L"GetIMAccountMgr.");
    return;
  }
  biz::IMAccountEvents& engine = mgr->Events();
  Subscribe(engine.on_login_ok, &CBridgeIMLogin::OnLoginOK);
  Subscribe(engine.on_login_failed, &CBridgeIMLogin::OnLoginFailed);
  Subscribe(engine.on_logouted, &CBridgeIMLogin::OnLogouted);
  Subscribe(engine.on_net_reconnect_ok, &CBridgeIMLogin::OnNetReConnectOK);
  Subscribe(engine.on_net_reconnect_failed, &CBridgeIMLogin::OnNetReConnectFailed);
}

biz::ResultCode CBridgeIMLogin::FindAccountMgr(RefPtr<biz::IIMAccountMgr>* mgr) {
  *mgr = kexcore::GetService<biz::IIMAccountMgr>();
  if (*mgr) return {};
  return {E_UNEXPECTED, 0, L"failed"};
}

void CBridgeIMLogin::GetCurrentLoginID(const NoKeys&, Call<UserRecord> call) {
  const biz::IMUserID account = Account();
  if (!account.valid()) return call.Fail(E_UNEXPECTED, L"failed");
  call.Succeed({account});
}

template <class Login>
void CBridgeIMLogin::StartLogin(const biz::IMUserID& user, const Call<LoginAnswer>& call,
                                const Login& login) {
  if (const biz::IMUserID account = Account(); account.valid()) {
    const std::int32_t code = account == user ? 0 : E_UNEXPECTED;
    return call.Finish({code, 0, L"Alread Login"}, {account, {}, 0});
  }
  attempted_ = user;
  login([weak = weak_from_this(), call](const biz::IMLoginResult& result) {
    const auto self = std::static_pointer_cast<CBridgeIMLogin>(weak.lock());
    if (!self) return;
    self->RunOnView([module = self.get(), call, result] { module->OnLoginDone(result, call); });
  });
}

void CBridgeIMLogin::DoLoginByToken(const TokenLoginRequest& request,
                                    RefPtr<biz::IIMAccountMgr> mgr, Call<LoginAnswer> call) {
  StartLogin(request.userid, call, [&](biz::IMLoginCallback done) {
    mgr->LoginByToken(request.userid, request.token, std::move(done));
  });
}

void CBridgeIMLogin::DoLoginByPassWord(const PasswordLoginRequest& request,
                                       RefPtr<biz::IIMAccountMgr> mgr, Call<LoginAnswer> call) {
  StartLogin(request.userid, call, [&](biz::IMLoginCallback done) {
    mgr->LoginByPassword(request.userid, request.password, std::move(done));
  });
}

void CBridgeIMLogin::OnLoginDone(const biz::IMLoginResult& login, const Call<LoginAnswer>& call) {
  if (!login.result.ok()) {
    TraceFailure(call, L"DoLogin failed!!", login.result);
    return call.Finish(login.result);
  }
  // The modules work for the account before the page learns that it is logged in.
  context().set_account(login.user);
  call.Succeed({login.user, login.token, login.expires});
}

void CBridgeIMLogin::DoNetReConnect(const NoKeys&, RefPtr<biz::IIMAccountMgr> mgr,
                                    Call<NoKeys> call) {
  mgr->NetReConnect(Account(), Answer(call, L"DoNetReConnect failed!!"));
}

void CBridgeIMLogin::DoLogout(const NoKeys&, RefPtr<biz::IIMAccountMgr> mgr, Call<NoKeys> call) {
  mgr->Logout(Account(), Answer(call, L"DoLogout failed!!"));
}

bool CBridgeIMLogin::IsAccount(const biz::IMUserID& user) const {
  return user.valid() && user == Account();
}

bool CBridgeIMLogin::Concerns(const biz::IMUserID& user) const {
  return IsAccount(user) || (user.valid() && user == attempted_);
}

void CBridgeIMLogin::OnLoginOK(const biz::IMUserID& user) {
  RunOnView([this, user] {
    if (Concerns(user)) Notify(kOnLoginOK, UserRecord{user});
  });
}

void CBridgeIMLogin::OnLoginFailed(const biz::IMUserID& user, const biz::ResultCode& result) {
  RunOnView([this, user, result] {
    if (Concerns(user)) Notify(kOnLoginFailed, Envelope(result));
  });
}

void CBridgeIMLogin::OnLogouted(const biz::IMUserID& user) {
  RunOnView([this, user] {
    if (!IsAccount(user)) return;
    Notify(kOnLogouted, UserRecord{user});
    attempted_ = {};
    context().set_account({});
  });
}

void CBridgeIMLogin::OnNetReConnectOK(const biz::IMUserID& user) {
  RunOnView([this, user] {
    if (IsAccount(user)) Notify(kOnNetReConnectOK, UserRecord{user});
  });
}

void CBridgeIMLogin::OnNetReConnectFailed(const biz::IMUserID& user,
                                          const biz::ResultCode& result) {
  RunOnView([this, user, result] {
    if (IsAccount(user)) Notify(kOnNetReConnectFailed, Envelope(result));
  });
}

}  // namespace imsdk::bridge
