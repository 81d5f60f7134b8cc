// Business module "im.login": login, logout and reconnection of the account of a view.
#pragma once

#include "source/bridge/jsparams/loginrecords.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {

class CBridgeIMLogin final : public CBridgeBase {
 public:
  using CBridgeBase::CBridgeBase;

  void OwnerPreConstruct() override;
  std::span<const std::wstring_view> Notifications() const override;

  void GetCurrentLoginID(const NoKeys& request, Call<UserRecord> call);
  void DoLoginByToken(const TokenLoginRequest& request, RefPtr<biz::IIMAccountMgr> mgr,
                      Call<LoginAnswer> call);
  void DoLoginByPassWord(const PasswordLoginRequest& request, RefPtr<biz::IIMAccountMgr> mgr,
                         Call<LoginAnswer> call);
  void DoNetReConnect(const NoKeys& request, RefPtr<biz::IIMAccountMgr> mgr, Call<NoKeys> call);
  void DoLogout(const NoKeys& request, RefPtr<biz::IIMAccountMgr> mgr, Call<NoKeys> call);

  // A handler's target is the engine's account manager.
  template <class Request>
  biz::ResultCode Find(const Request&, RefPtr<biz::IIMAccountMgr>* mgr, const CallBase&) {
    return FindAccountMgr(mgr);
  }

 private:
  std::span<const MethodRow> Methods() const override;
  static biz::ResultCode FindAccountMgr(RefPtr<biz::IIMAccountMgr>* mgr);

  // Starts a login of `user` by `login(callback)`, unless this view is logged in already.
  template <class Login>
  void StartLogin(const biz::IMUserID& user, const Call<LoginAnswer>& call, const Login& login);
  void OnLoginDone(const biz::IMLoginResult& login, const Call<LoginAnswer>& call);

  // Engine events, raised on engine threads. Each goes on on the view's thread.
  void OnLoginOK(const biz::IMUserID& user);
  void OnLoginFailed(const biz::IMUserID& user, const biz::ResultCode& result);
  void OnLogouted(const biz::IMUserID& user);
  void OnNetReConnectOK(const biz::IMUserID& user);
  void OnNetReConnectFailed(const biz::IMUserID& user, const biz::ResultCode& result);

  bool IsAccount(const biz::IMUserID& user) const;
  // Whether news of a login of `user` is for this view: it is its account or the one it last tried.
  bool Concerns(const biz::IMUserID& user) const;

  biz::IMUserID attempted_;  // whom this view last tried to log in. View's thread
};

}  // namespace imsdk::bridge
