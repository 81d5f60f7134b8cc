// The accounts that are logged in.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "account/session/account_core.h"
#include "account/session/worker_pool.h"
#include "imsdk/biz/account.h"
#include "kexbase/lock.h"

namespace imsdk::account {

// Used until the pool has stopped; what is asked later fails with `kEngineNotLoggedIn`.
class AccountMgr final : public RefPtrCounted<biz::IIMAccountMgr> {
 public:
  AccountMgr(std::shared_ptr<const Environment> environment, std::shared_ptr<WorkerPool> pool)
      : environment_(std::move(environment)), pool_(std::move(pool)) {}

  // Ends every account and takes no more. The pool's `Stop` then finishes what is open. Whoever
  // made the manager keeps it until after that.
  void Stop();

  void LoginByPassword(const biz::IMPasswordLogin& request,
                       biz::IMCallback<biz::IMLoginGrant> done) override;
  void LoginByToken(const biz::IMTokenLogin& request,
                    biz::IMCallback<biz::IMLoginGrant> done) override;
  void Logout(const biz::IMUserRequest& request, biz::IMCallback<> done) override;
  void NetReConnect(const biz::IMUserRequest& request, biz::IMCallback<> done) override;
  RefPtr<biz::IIMAccount> GetAccount(const biz::IMUserID& user) override;
  biz::IMAccountEvents& Events() override { return events_; }
  // The account that is logged in and keeps its files in the folder of this name, or null.
  std::shared_ptr<AccountCore> FindByFolder(const std::string& folder);

 private:
  struct Pending {
    link::Grant grant;
    biz::IMCallback<biz::IMLoginGrant> done;
  };
  struct Slot {
    std::shared_ptr<AccountCore> core;
    std::string folder;               // the name of its files' folder
    RefPtr<biz::IIMAccount> account;  // null until the first login has succeeded
    std::vector<Pending> waiting;     // for that
  };

  void Login(link::LoginRequest request, biz::IMCallback<biz::IMLoginGrant> done);
  void Granted(const biz::IMUserID& user, const biz::ResultCode& result, Pending login);
  void Opened(const biz::IMUserID& user, const std::shared_ptr<AccountCore>& core,
              const biz::ResultCode& result);
  void Tell(const biz::IMUserID& user, const biz::ResultCode& result, const Pending& login);
  AccountHooks HooksOf(const biz::IMUserID& user);
  // The account's core; null unless it is logged in.
  std::shared_ptr<AccountCore> Find(const biz::IMUserID& user);
  // The same, and forgets it.
  std::shared_ptr<AccountCore> Take(const biz::IMUserID& user);

  const std::shared_ptr<const Environment> environment_;
  const std::shared_ptr<WorkerPool> pool_;
  biz::IMAccountEvents events_;
  base::Lock lock_;
  std::unordered_map<biz::IMUserID, Slot> slots_;
  bool stopped_ = false;
};

}  // namespace imsdk::account
