#include "account/session/account_mgr.h"

#include "account/conversations/single_chat.h"
#include "account/conversations/virtual_chat.h"
#include "account/session/answer_within.h"

namespace imsdk::account {

namespace {

class Account final : public RefPtrCounted<biz::IIMAccount> {
 public:
  explicit Account(std::shared_ptr<AccountCore> core)
      : core_(std::move(core)),
        state_(core_->parts().state),
        chats_(new SingleChatMgr(core_->parts())),
        virtual_chats_(new VirtualChatMgr(core_->parts())) {}

  const biz::IMUserID& GetSelfID() const override { return state_->self; }
  biz::IMAccountType GetAccountType() const override {
    // A ":" at the very front parts no name from another.
    const bool sub = state_->self.nick.find(L':', 1) != std::wstring::npos;
    return sub ? biz::kSubAccount : biz::kMainAccount;
  }
  bool IsOnline() const override { return state_->online; }
  RefPtr<biz::IIMSingleChatMgr> GetIMSingleChatMgr() override { return chats_; }
  RefPtr<biz::IIMVirtualChatMgr> GetIMVirtualChatMgr() override { return virtual_chats_; }

 private:
  const std::shared_ptr<AccountCore> core_;
  const std::shared_ptr<AccountState> state_;
  const RefPtr<biz::IIMSingleChatMgr> chats_;
  const RefPtr<biz::IIMVirtualChatMgr> virtual_chats_;
};

}  // namespace

void AccountMgr::LoginByPassword(const biz::IMUserID& user, const std::wstring& password,
                                 biz::IMLoginCallback done) {
  const biz::IMUserID known = WellFormed(user);
  if (auto answer = BeginLogin(known, std::move(done))) {
    environment_->link->LoginByPassword(known, password, std::move(answer));
  }
}

void AccountMgr::LoginByToken(const biz::IMUserID& user, const std::wstring& token,
                              biz::IMLoginCallback done) {
  const biz::IMUserID known = WellFormed(user);
  if (auto answer = BeginLogin(known, std::move(done))) {
    environment_->link->LoginByToken(known, token, std::move(answer));
  }
}

link::GrantCallback AccountMgr::BeginLogin(const biz::IMUserID& user, biz::IMLoginCallback done) {
  Login login{{user, {}, 0}, std::move(done)};
  if (!CanNameUser(user)) {
    Tell(user, {biz::kEngineUnknownUser, 0, L"this cannot name a user"}, login);
    return nullptr;
  }
  link::GrantCallback answered = [this, user, login = std::move(login)](
                                     const biz::ResultCode& result, const link::Grant& grant) {
    Granted(user, result, {grant, login.done});
  };
  return AnswerWithin(pool_->For(user).runner, environment_->timeouts.login, std::move(answered),
                      biz::ResultCode{biz::kEngineTimeout, 0, L"the server did not answer in time"},
                      link::Grant{});
}

void AccountMgr::Granted(const biz::IMUserID& user, const biz::ResultCode& result, Login login) {
  if (!result.ok()) return Tell(user, result, login);
  std::shared_ptr<AccountCore> fresh;
  bool open = false;
  {
    base::AutoLock hold(lock_);
    if (stopped_) return;
    Slot& slot = slots_[user];
    open = static_cast<bool>(slot.account);
    if (!slot.core) {
      fresh = slot.core = std::make_shared<AccountCore>(environment_, user, pool_->For(user),
                                                        login.grant.token, HooksOf(user));
    } else {
      slot.core->RenewToken(login.grant.token);
    }
    if (!open) slot.waiting.push_back(login);
  }
  if (open) return Tell(user, result, login);
  if (!fresh) return;
  fresh->Open([this, user, weak = std::weak_ptr(fresh)](const biz::ResultCode& opened) {
    if (const auto core = weak.lock()) Opened(user, core, opened);
  });
}

void AccountMgr::Opened(const biz::IMUserID& user, const std::shared_ptr<AccountCore>& core,
                        const biz::ResultCode& result) {
  std::vector<Login> waiting;
  {
    base::AutoLock hold(lock_);
    const auto slot = slots_.find(user);
    if (slot == slots_.end() || slot->second.core != core) return;
    waiting.swap(slot->second.waiting);
    if (result.ok()) {
      slot->second.account = RefPtr<biz::IIMAccount>(new Account(core));
    } else {
      slots_.erase(slot);
    }
  }
  if (!result.ok()) core->Close([](const auto&) {});
  for (const Login& login : waiting) Tell(user, result, login);
}

void AccountMgr::Tell(const biz::IMUserID& user, const biz::ResultCode& result,
                      const Login& login) {
  if (result.ok()) {
    events_.on_login_ok(user);
  } else {
    events_.on_login_failed(user, result);
  }
  login.done({result, user, login.grant.token, login.grant.expires});
}

void AccountMgr::Logout(const biz::IMUserID& user, biz::IMResultCallback done) {
  const biz::IMUserID known = WellFormed(user);
  const auto core = Take(known);
  if (!core) return done(NotLoggedIn());
  core->Close([this, known, done = std::move(done)](const biz::ResultCode& result) {
    events_.on_logouted(known);
    done(result);
  });
}

void AccountMgr::NetReConnect(const biz::IMUserID& user, biz::IMResultCallback done) {
  const auto core = Find(WellFormed(user));
  if (!core) return done(NotLoggedIn());
  core->Reconnect(std::move(done));
}

RefPtr<biz::IIMAccount> AccountMgr::GetAccount(const biz::IMUserID& user) {
  base::AutoLock hold(lock_);
  auto slot = slots_.find(user);
  // Almost every name is well-formed; mending it costs more than looking it up.
  if (slot == slots_.end()) slot = slots_.find(WellFormed(user));
  return slot == slots_.end() ? RefPtr<biz::IIMAccount>() : slot->second.account;
}

AccountHooks AccountMgr::HooksOf(const biz::IMUserID& user) {
  return {[this, user] { events_.on_net_reconnect_ok(user); },
          [this, user](const biz::ResultCode& why) { events_.on_net_reconnect_failed(user, why); },
          [this, user] { Logout(user, [](const auto&) {}); }};
}

std::shared_ptr<AccountCore> AccountMgr::Find(const biz::IMUserID& user) {
  base::AutoLock hold(lock_);
  const auto slot = slots_.find(user);
  return slot != slots_.end() && slot->second.account ? slot->second.core : nullptr;
}

std::shared_ptr<AccountCore> AccountMgr::Take(const biz::IMUserID& user) {
  // The account is let go outside the lock.
  Slot taken;
  base::AutoLock hold(lock_);
  const auto slot = slots_.find(user);
  if (slot == slots_.end() || !slot->second.account) return nullptr;
  taken = std::move(slot->second);
  slots_.erase(slot);
  return taken.core;
}

void AccountMgr::Stop() {
  std::unordered_map<biz::IMUserID, Slot> slots;
  {
    base::AutoLock hold(lock_);
    stopped_ = true;
    slots.swap(slots_);
  }
  for (const auto& [user, slot] : slots) slot.core->Close([](const auto&) {});
}

}  // namespace imsdk::account
