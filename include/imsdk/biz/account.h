// Accounts: login, logout and the services of an account that is logged in.
#pragma once

#include <cstdint>
#include <string>

#include "imsdk/biz/callback.h"
#include "imsdk/biz/chat_mgr.h"
#include "imsdk/biz/contact.h"
#include "imsdk/biz/file_transfer.h"
#include "imsdk/biz/tribe_mgr.h"
#include "imsdk/biz/user_id.h"
#include "kexbase/event.h"
#include "kexcom/ref_counted.h"

namespace imsdk::biz {

struct IMPasswordLogin {
  IMUserID userid;
  std::wstring password;

  static constexpr auto Bounds() {
    return Bounded(Letters("password", &IMPasswordLogin::password, kMaxSecretLetters));
  }
};

struct IMTokenLogin {
  IMUserID userid;
  std::wstring token;

  static constexpr auto Bounds() {
    return Bounded(Letters("token", &IMTokenLogin::token, kMaxSecretLetters));
  }
};

// What a login gives.
struct IMLoginGrant {
  IMUserID userid;
  std::wstring token;        // logs the account in again without its password
  std::int64_t expires = 0;  // end of the token's life, milliseconds since the Unix epoch, UTC
};

// A request that names an account.
struct IMUserRequest {
  IMUserID userid;
};

// What kind of account is logged in.
enum IMAccountType : std::int32_t {
  kMainAccount = 1,
  kSubAccount =
      2,  // its nick is a main account's nick, ":" and a name: it tells others apart by it
};

// How an account stands with its server. The numbers are on pages.
enum IMAccountState : std::int32_t {
  kAccountOffline = 0,     // not logged in any more
  kAccountConnecting = 1,  // the link was lost and is being renewed
  kAccountOnline = 2,
};

// One account that is logged in. Any thread. It may be kept after logout; its operations then
// fail with `kEngineNotLoggedIn`.
class IIMAccount : public IKexCOMRefCounted {
 public:
  virtual const IMUserID& GetSelfID() const = 0;
  virtual IMAccountType GetAccountType() const = 0;
  virtual IMAccountState GetState() const = 0;
  // The account's conversations by kind. Never null; counted.
  virtual RefPtr<IIMSingleChatMgr> GetIMSingleChatMgr() = 0;
  virtual RefPtr<IIMTribeChatMgr> GetIMTribeChatMgr() = 0;
  virtual RefPtr<IIMVirtualChatMgr> GetIMVirtualChatMgr() = 0;
  // The account's tribes; null in an engine that has none. Counted.
  virtual RefPtr<IIMTribeMgr> GetIMTribeMgr() = 0;
  // The account's cloud files; null in an engine that has none. Counted.
  virtual RefPtr<IIMFileTransfer> GetIMFileTransfer() = 0;
  // The account's contacts; null in an engine that has none. Counted.
  virtual RefPtr<IIMContactMgr> GetIMContactMgr() = 0;

 protected:
  ~IIMAccount() = default;
};

// What happens to accounts; each event names its account. Raised on engine threads. When
// `on_logouted` is raised, `GetAccount` does not give that session any more.
struct IMAccountEvents {
  base::event<void(IMUserID)> on_login_ok;
  base::event<void(IMUserID, ResultCode)> on_login_failed;
  base::event<void(IMUserID)> on_logouted;
  base::event<void(IMUserID)> on_net_reconnect_ok;
  base::event<void(IMUserID, ResultCode)> on_net_reconnect_failed;
};

// The engine's accounts, found in the component registry. Many accounts are logged in at once;
// logging one in again while it is logged in succeeds. Any thread.
class IIMAccountMgr : public IKexCOMRefCounted {
 public:
  static constexpr char kServiceId[] = "imsdk.biz.IIMAccountMgr";

  // A login's callback comes first, its event after that. The login that opens the account is
  // answered before any event of the account is raised: who subscribes inside the callback misses
  // none.
  virtual void LoginByPassword(const IMPasswordLogin& request, IMCallback<IMLoginGrant> done) = 0;
  virtual void LoginByToken(const IMTokenLogin& request, IMCallback<IMLoginGrant> done) = 0;
  // Ends the account's session; its token stays good until it expires.
  virtual void Logout(const IMUserRequest& request, IMCallback<> done) = 0;
  // Drops and renews the account's link to its server.
  virtual void NetReConnect(const IMUserRequest& request, IMCallback<> done) = 0;
  // The account, or null when it is not logged in. Cheap.
  virtual RefPtr<IIMAccount> GetAccount(const IMUserID& user) = 0;
  // Lives as long as the manager.
  virtual IMAccountEvents& Events() = 0;

 protected:
  ~IIMAccountMgr() = default;
};

}  // namespace imsdk::biz
