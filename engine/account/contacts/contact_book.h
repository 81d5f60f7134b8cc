// What an account knows of its contacts.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "account/session/account_state.h"
#include "imsdk/biz/contact.h"
#include "kexbase/lock.h"
#include "link/operations.h"

namespace imsdk::account {

// The list as the server has it: fetched with each connect, kept up by what the server tells. It is
// not in the account's store; without a link what was known stays, but for who is online. Raises
// the account's events of contacts after it has taken note itself. Used on the account's worker.
class ContactBook : public std::enable_shared_from_this<ContactBook> {
 public:
  explicit ContactBook(std::shared_ptr<AccountState> state) : state_(std::move(state)) {}

  // Calls `then` when the list is known: now, mostly. With a failure when it cannot be fetched.
  void WhenKnown(biz::IMCallback<> then);
  // One of the contacts. Null for anybody else.
  const biz::IMListedContact* Find(const biz::IMUserID& user) const;
  const std::vector<biz::IMContactGroup>& groups() const { return groups_; }
  const std::map<biz::IMUserID, biz::IMListedContact>& contacts() const { return contacts_; }
  // The contacts that bear the account's mark. Any thread.
  std::vector<biz::IMContact> Marked() const;

  // What the server told. `offline`: it happened before the account came; nobody is told.
  using Told =
      std::variant<link::ContactChanged, link::ContactGroupsChanged, link::ContactVerifyTold>;
  void Happened(const Told& told, bool offline);
  void Present(const link::ContactPresence& presence);
  void Connected();
  void Disconnected();

 private:
  struct Fetched {
    std::vector<biz::IMContactGroup> groups;
    std::map<biz::IMUserID, biz::IMListedContact> contacts;
  };

  void Fetch(std::uint64_t fetch, const std::shared_ptr<Fetched>& found, std::string place);
  void FetchEnded(const biz::ResultCode& result, Fetched found);
  void Take(const link::ContactChanged& changed, bool offline);
  void Take(const link::ContactGroupsChanged& changed, bool offline);
  void Take(const link::ContactVerifyTold& told, bool offline);
  void ShowMarked();

  const std::shared_ptr<AccountState> state_;
  bool known_ = false;
  bool fresh_ = false;  // since the account was last connected
  bool fetching_ = false;
  std::uint64_t last_fetch_ = 0;
  std::vector<biz::IMCallback<>> waiting_;
  std::vector<std::pair<Told, bool>> held_;  // what happened while the list was fetched
  std::vector<link::ContactPresence> held_presence_;
  std::vector<biz::IMContactGroup> groups_;
  std::map<biz::IMUserID, biz::IMListedContact> contacts_;

  mutable base::Lock lock_;
  std::vector<biz::IMContact> marked_;
};

}  // namespace imsdk::account
