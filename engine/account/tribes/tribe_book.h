// What an account knows of its tribes: its list of them and the members of those that are open.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "account/session/account_state.h"
#include "account/session/mailbox.h"
#include "account/tribes/roster.h"
#include "imsdk/biz/tribe_mgr.h"
#include "link/operations.h"

namespace imsdk::account {

// The store has the list, so that it is there without a link; with each login it is fetched anew.
// Kept up by what the server tells in the account's feed, which has no gaps: what is known stays
// right over a lost link, but for who is online. Raises the account's events of tribes after it has
// taken note itself. Used on the account's worker.
class TribeBook : public std::enable_shared_from_this<TribeBook> {
 public:
  // The mailbox lives as long as the account.
  TribeBook(std::shared_ptr<AccountState> state, std::shared_ptr<Mailbox> mailbox)
      : state_(std::move(state)), mailbox_(std::move(mailbox)) {}

  // Takes up what the store has of the account's tribes. May throw `sqlite::Error`.
  void Load();
  // Whether a page has asked for the account's tribes, and they are known. Any thread.
  bool IsOpen() const { return open_; }
  // See `IIMTribeMgr`.
  void ShallowLogin(biz::IMCallback<> done);
  void DeepLogin(biz::IMTribeID tribe, biz::IMCallback<> done);

  // One of the account's tribes, with its unread count. Null for any other.
  const biz::IMTribeInfo* Find(biz::IMTribeID tribe);
  std::vector<biz::IMTribeInfo> All();
  // The members of a tribe with a deep login. Null without.
  Roster* RosterOf(biz::IMTribeID tribe);
  // The account has set it here.
  void SetRemindType(biz::IMTribeID tribe, biz::TribeMsgRemindType type, biz::IMCallback<> done);
  // The store has a type that another device set.
  void TakeRemind(biz::IMTribeID tribe, biz::TribeMsgRemindType type);

  // The account is a member now. Mostly a happening says so too, but not of a tribe that begins
  // with the account in it.
  void Joined(biz::IMTribeID tribe);
  // What the server told. `offline`: it happened before the account came; nobody is told.
  void Happened(const link::TribeHappening& happening, bool offline);
  void Present(const link::TribePresence& presence);
  // Calls `then` when every tribe that the account was told to have joined is known: now, mostly.
  void WhenLearned(std::function<void()> then);
  // The link is there again. After `Lost` what is known may have gaps.
  void Connected();
  void Lost() { lost_ = true; }

 private:
  using Tribes = std::map<biz::IMTribeID, biz::IMTribeInfo>;
  struct OpenRoster {
    Roster roster;
    bool complete = false;
    Roster coming;  // while it is fetched anew
    std::vector<biz::IMCallback<>> waiting;
    std::uint64_t fetch = 0;  // numbers the fetches
  };
  struct Told {
    link::TribeHappening happening;
    bool offline = false;
  };

  void FetchAll();
  void FetchTribes(std::uint64_t fetch, const std::shared_ptr<Tribes>& found, std::string place);
  void FetchedTribes(const biz::ResultCode& result, Tribes found);
  void AnswerWaiting(const biz::ResultCode& result);
  void KeepAll();
  void Keep(const biz::IMTribeInfo& tribe);
  void FetchMembers(biz::IMTribeID tribe, std::uint64_t fetch, std::string place);
  void FetchedMembers(biz::IMTribeID tribe, const biz::ResultCode& result);
  void Renew(biz::IMTribeID tribe);
  void CloseRoster(biz::IMTribeID tribe);
  void CloseOldRosters();

  void TakeNote(const link::TribeHappening& happening);
  // The account has joined: its tribe is asked for, and what happens there meanwhile waits.
  void Learn(biz::IMTribeID tribe);
  void Learned(biz::IMTribeID tribe, const biz::ResultCode& result, const biz::IMTribeInfo& info);
  void Carry(const Told& told);
  void CountSoon(biz::IMTribeID tribe);
  void TellCounts();

  const std::shared_ptr<AccountState> state_;
  const std::shared_ptr<Mailbox> mailbox_;
  std::atomic<bool> open_{false};
  bool known_ = false;  // from the store or the server
  bool fresh_ = false;  // from the server, since the account is logged in
  bool fetching_ = false;
  bool lost_ = false;
  std::uint64_t last_fetch_ = 0;  // of the tribes
  std::uint64_t last_member_fetch_ = 0;
  std::vector<biz::IMCallback<>> waiting_;  // for the tribes
  std::vector<Told> held_;                  // what happened while they were fetched
  std::set<biz::IMTribeID> joined_;         // meanwhile
  std::map<biz::IMTribeID, std::vector<Told>> learning_;
  std::vector<std::function<void()>> when_learned_;
  Tribes tribes_;
  std::map<biz::IMTribeID, OpenRoster> rosters_;
  std::list<biz::IMTribeID> used_;  // tribes with a roster, the latest used one first
  std::set<biz::IMTribeID> recount_;
};

}  // namespace imsdk::account
