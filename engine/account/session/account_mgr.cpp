#include "account/session/account_mgr.h"

#include "account/contacts/contact_mgr.h"
#include "account/conversations/chat_mgr.h"
#include "account/files/file_transfer.h"
#include "account/session/answer_within.h"
#include "account/tribes/tribe_mgr.h"

namespace imsdk::account {

namespace {

class Account final : public RefPtrCounted<biz::IIMAccount> {
 public:
  explicit Account(std::shared_ptr<AccountCore> core)
      : core_(std::move(core)),
        state_(core_->parts().state),
        chats_(new ChatMgr<biz::IIMSingleChatMgr>(core_->parts(), {biz::kCIDUser}, state_->events)),
        tribe_chats_(new ChatMgr<biz::IIMTribeChatMgr>(core_->parts(), {biz::kCIDTribe},
                                                       state_->tribe_events)),
        virtual_chats_(new ChatMgr<biz::IIMVirtualChatMgr>(
            core_->parts(), {biz::kCIDSystem, biz::kCIDSubscribe}, state_->virtual_events)),
        tribes_(new TribeMgr(state_, core_->parts().tribes)),
        files_(new FileTransfer(state_, core_->parts().transfers)),
        contacts_(new ContactMgr(state_, core_->parts().contacts)) {}

  const biz::IMUserID& GetSelfID() const override { return state_->self; }
  biz::IMAccountType GetAccountType() const override {
    // A ":" at the very front parts no name from another.
    const bool sub = state_->self.nick.find(L':', 1) != std::wstring::npos;
    return sub ? biz::kSubAccount : biz::kMainAccount;
  }
  biz::IMAccountState GetState() const override {
    if (state_->online) return biz::kAccountOnline;
    return state_->closed ? biz::kAccountOffline : biz::kAccountConnecting;
  }
  RefPtr<biz::IIMSingleChatMgr> GetIMSingleChatMgr() override { return chats_; }
  RefPtr<biz::IIMTribeChatMgr> GetIMTribeChatMgr() override { return tribe_chats_; }
  RefPtr<biz::IIMVirtualChatMgr> GetIMVirtualChatMgr() override { return virtual_chats_; }
  RefPtr<biz::IIMTribeMgr> GetIMTribeMgr() override { return tribes_; }
  RefPtr<biz::IIMFileTransfer> GetIMFileTransfer() override { return files_; }
  RefPtr<biz::IIMContactMgr> GetIMContactMgr() override { return contacts_; }

 private:
  const std::shared_ptr<AccountCore> core_;
  const std::shared_ptr<AccountState> state_;
  const RefPtr<biz::IIMSingleChatMgr> chats_;
  const RefPtr<biz::IIMTribeChatMgr> tribe_chats_;
  const RefPtr<biz::IIMVirtualChatMgr> virtual_chats_;
  const RefPtr<biz::IIMTribeMgr> tribes_;
  const RefPtr<biz::IIMFileTransfer> files_;
  const RefPtr<biz::IIMContactMgr> contacts_;
};

}  // namespace

void AccountMgr::LoginByPassword(const biz::IMPasswordLogin& request,
                                 biz::IMCallback<biz::IMLoginGrant> done) {
  if (const auto why = link::CheckBounds(request); !why.ok()) return done(why, {});
  Login({request.userid, link::Password{request.password}}, std::move(done));
}

void AccountMgr::LoginByToken(const biz::IMTokenLogin& request,
                              biz::IMCallback<biz::IMLoginGrant> done) {
  if (const auto why = link::CheckBounds(request); !why.ok()) return done(why, {});
  Login({request.userid, link::Token{request.token}}, std::move(done));
}

void AccountMgr::Login(link::LoginRequest request, biz::IMCallback<biz::IMLoginGrant> done) {
  const biz::IMUserID user = request.user = WellFormed(request.user);
  Pending login{{user, {}, 0}, std::move(done)};
  if (!CanNameUser(user)) {
    return Tell(user, {biz::kEngineUnknownUser, 0, L"this cannot name a user"}, login);
  }
  link::LoginCallback answered = [this, user, login = std::move(login)](
                                     const biz::ResultCode& result, const link::Grant& grant) {
    Granted(user, result, {grant, login.done});
  };
  environment_->link->Login(
      request,
      AnswerWithin(pool_->For(user).runner, environment_->timeouts.login, std::move(answered),
                   biz::ResultCode{biz::kEngineTimeout, 0, L"the server did not answer in time"},
                   link::Grant{}));
}

void AccountMgr::Granted(const biz::IMUserID& user, const biz::ResultCode& result, Pending login) {
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
      slot.folder = AccountFolderName(user);
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
  std::vector<Pending> waiting;
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
  for (const Pending& login : waiting) Tell(user, result, login);
}

void AccountMgr::Tell(const biz::IMUserID& user, const biz::ResultCode& result,
                      const Pending& login) {
  const bool good = result.ok();
  login.done(result, good ? biz::IMLoginGrant{user, login.grant.token, login.grant.expires}
                          : biz::IMLoginGrant{});
  if (good) {
    events_.on_login_ok(user);
  } else {
    events_.on_login_failed(user, result);
  }
}

void AccountMgr::Logout(const biz::IMUserRequest& request, biz::IMCallback<> done) {
  const biz::IMUserID known = WellFormed(request.userid);
  const auto core = Take(known);
  if (!core) return done(NotLoggedIn());
  core->Close([this, known, done = std::move(done)](const biz::ResultCode& result) {
    events_.on_logouted(known);
    done(result);
  });
}

void AccountMgr::NetReConnect(const biz::IMUserRequest& request, biz::IMCallback<> done) {
  const auto core = Find(WellFormed(request.userid));
  if (!core) return done(NotLoggedIn());
  core->Reconnect(std::move(done));
}

std::shared_ptr<AccountCore> AccountMgr::FindByFolder(const std::string& folder) {
  base::AutoLock hold(lock_);
  for (const auto& [user, slot] : slots_) {
    if (slot.folder == folder && slot.account) return slot.core;
  }
  return nullptr;
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
          [this, user] { Logout({user}, [](const auto&) {}); }};
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
  pool_->Hurry();
  std::unordered_map<biz::IMUserID, Slot> slots;
  {
    base::AutoLock hold(lock_);
    stopped_ = true;
    slots.swap(slots_);
  }
  for (const auto& [user, slot] : slots) slot.core->Close([](const auto&) {});
}

}  // namespace imsdk::account
